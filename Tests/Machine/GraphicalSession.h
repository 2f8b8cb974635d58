#pragma once

#include "Tests/Machine/Session.h"
#include "Tests/Support/ChildProcess.h"
#include "Tests/Support/StoredSettings.h"
#include "Tests/Support/TemporaryFolder.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace quillmere::machine {

/// What a desktop has under it, whatever its display server: a session on the
/// first terminal, folders and a message bus of the person whose it is.
class GraphicalSession {
public:
    explicit GraphicalSession(Session& session);

    Session& session() { return session_; }
    const std::filesystem::path& folder() const { return folder_.path(); }
    support::StoredSettings settings() const;

    support::Environment& environment() { return environment_; }
    /// Starts a program in the session. Its output goes to the artefacts, as
    /// `name`.txt.
    support::ChildProcess::Options program(const std::string& name, const std::vector<std::string>& arguments) const;

    /// The application that is tested, with the tap service running. Its
    /// settings must have been stored.
    void startQuillmere();
    support::ChildProcess& quillmere() { return *quillmere_; }

private:
    Session& session_;
    support::TemporaryFolder folder_;
    support::Environment environment_;
    std::optional<support::ChildProcess> bus_;
    std::optional<support::ChildProcess> quillmere_;
};

}  // namespace quillmere::machine
