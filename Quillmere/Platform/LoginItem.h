#pragma once

#include <QString>

namespace quillmere {

/// Whether the program starts at login. Main thread only.
class LoginItem {
public:
    LoginItem() = default;
    LoginItem(const LoginItem&) = delete;
    LoginItem& operator=(const LoginItem&) = delete;
    virtual ~LoginItem() = default;

    /// Whether this system can start programs at login at all.
    virtual bool isAvailable() const = 0;

    /// What it would take for that, in English: a few words.
    virtual QString requirement() const = 0;

    /// The real state, read afresh.
    virtual bool isEnabled() const = 0;

    /// Registers or unregisters the program; false when the system refuses.
    virtual bool setEnabled(bool enabled) = 0;
};

}  // namespace quillmere
