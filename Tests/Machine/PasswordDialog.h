#pragma once

#include "Tests/Machine/Session.h"
#include "Tests/Support/ChildProcess.h"

#include <optional>
#include <string>
#include <string_view>

namespace quillmere::machine {

/// The administrator's question as polkit's own text dialog asks it, on a
/// terminal of its own. Throws SupportError when it cannot be started.
class PasswordDialog {
public:
    /// For what the process `subject` of the session asks for.
    PasswordDialog(const Session& session, pid_t subject);
    ~PasswordDialog();
    PasswordDialog(const PasswordDialog&) = delete;
    PasswordDialog& operator=(const PasswordDialog&) = delete;

    /// Waits until it asks for the password and types one.
    void enter(std::string_view password);
    /// Everything it has shown.
    const std::string& shown();

private:
    bool echoes() const;

    int terminal_ = -1;
    std::string shown_;
    std::optional<support::ChildProcess> agent_;
};

}  // namespace quillmere::machine
