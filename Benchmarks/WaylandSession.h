#pragma once

#include "Tests/Support/ChildProcess.h"
#include "Tests/Support/ConfigurationText.h"
#include "Tests/Support/SessionBus.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/TrayPanel.h"

#include <filesystem>
#include <optional>

namespace quillmere::bench {

/// What is beside the compositor in a person's session: a message bus, a panel
/// with a tray and folders; and the program.
class WaylandSession {
public:
    WaylandSession();

    const std::filesystem::path& folder() const { return folder_.path(); }
    /// Without a desktop.
    const support::Environment& environment() const { return environment_; }
    support::SessionBus& bus() { return bus_; }

    /// Starts the program with one group. `desktop` are the variables that the
    /// desktop sets.
    void start(const std::filesystem::path& program, const support::Environment& desktop,
               const support::StoredGroup& group);

private:
    support::TemporaryFolder folder_;
    support::Environment environment_;
    support::SessionBus bus_;
    support::TrayPanel tray_;
    std::optional<support::ChildProcess> program_;
};

}  // namespace quillmere::bench
