#pragma once

#include "Tests/Desktop/DesktopTest.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace quillmere::support {

/// The built program beside a desktop that the derived test brings: a bus and a
/// tray for both, and settings of its own.
class ProgramTest : public testing::Test {
protected:
    /// From the settings' opening to the recorder of the first group.
    static constexpr int tabsToTheRecorder = 4;

    ProgramTest();

    /// Tells what the program wrote before a failure, and ends it while its
    /// desktop is still there.
    void TearDown() override;

    /// Where the program is to run: the desktop's name, its WAYLAND_DISPLAY and,
    /// where it has an Xwayland, that one's DISPLAY. Before it is started.
    void enterDesktop(const char* name, const std::string& waylandDisplay, const std::string& xDisplay);

    void store(const std::vector<StoredGroup>& groups) { settings.set("config", configurationText(groups)); }

    /// The key of the first group's stored shortcut; -1 when it has none.
    int storedKeyCode() const;

    /// Starts the program and waits for nothing.
    void launch();
    /// Starts it and waits for its icon in the tray.
    void startProgram();

    TemporaryFolder folder;
    Environment environment;
    SessionBus bus;
    TrayPanel tray;
    StoredSettings settings;
    std::optional<ChildProcess> program;
};

}  // namespace quillmere::support
