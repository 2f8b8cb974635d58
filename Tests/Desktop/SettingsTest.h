#pragma once

#include "Tests/Desktop/DesktopTest.h"
#include "Tests/Support/AccessibilityBus.h"

#include <memory>
#include <string>

namespace quillmere::support {

/// The settings of the real program, found as a screen reader finds them and
/// used with the real mouse and keys.
class SettingsTest : public DesktopTest {
protected:
    /// Starts a desktop with an accessibility service.
    void startAccessibleDesktop(const Desktop::Options& options = {});
    /// All of it: desktop, witness, program with this configuration, settings.
    void openSettingsOver(const std::string& configuration);
    /// Starts the program a second time, as its user would, and waits for the
    /// first one's settings; that start must end with status 0.
    void openSettings();
    /// How many pixels the program's next start takes a point for.
    void setScale(double scale) { scale_ = scale; }
    /// To start the program with.
    Program::Options options() const;
    /// Kills the program and starts it again.
    void restartProgram();
    /// Asks the window to close, as its title bar's button does, and waits.
    void closeSettings();
    std::optional<WindowInfo> settingsWindow();

    AccessibilityBus& accessibility() { return *accessibility_; }

    /// Waits until something with this name is showing.
    bool waitFor(const std::string& name);
    bool waitForNone(const std::string& name);
    /// Clicks in the middle of what has this name, once it is there.
    void click(const std::string& name);
    /// Points there without clicking.
    void pointAt(const std::string& name);

    /// Clicks what has this name and waits for the menu or list that opens.
    void openMenu(const std::string& name);
    /// Presses "Add source" of the group and chooses the menu's entry.
    void addSource(int group, int entry);
    /// Clicks the recorder of the group and waits until it is recording.
    void startRecording(int group, const std::string& titleBefore);

    std::string storedConfiguration();
    /// Waits until what is stored contains this text.
    bool waitForStored(const std::string& text);

    /// Keeps a picture of the settings window.
    void keepPicture(const std::string& name);

private:
    std::unique_ptr<AccessibilityBus> accessibility_;
    double scale_ = 1;
};

}  // namespace quillmere::support
