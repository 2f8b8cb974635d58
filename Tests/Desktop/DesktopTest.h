#pragma once

#include "Tests/Support/ConfigurationText.h"
#include "Tests/Support/Desktop.h"
#include "Tests/Support/Program.h"
#include "Tests/Support/WaitUntil.h"
#include "Tests/Support/Witness.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <memory>
#include <string>

namespace quillmere::support {

/// Core modifier bits of the layouts that the tests use (XKB's usual places).
namespace modifierBits {
inline constexpr unsigned int shift = 1U << 0;
inline constexpr unsigned int lock = 1U << 1;
inline constexpr unsigned int control = 1U << 2;
inline constexpr unsigned int alt = 1U << 3;
inline constexpr unsigned int numLock = 1U << 4;
inline constexpr unsigned int super = 1U << 6;
}  // namespace modifierBits

/// A test on a whole desktop with the built program on it and nothing faked.
/// The usual configuration has one group on ⌃⌥Space: us, ua, de.
class DesktopTest : public testing::Test {
public:
    /// Where pictures are kept.
    static std::filesystem::path artefacts();
    /// The built program.
    static std::filesystem::path programPath();

protected:
    static constexpr std::array<Key, 2> controlAlt{keys::leftControl, keys::leftAlt};
    static constexpr unsigned int controlAltBits = modifierBits::control | modifierBits::alt;
    inline static const std::vector<std::string> threeSources{"xkb:us", "xkb:ua", "xkb:de"};

    /// Keeps the picture of the screen and the program's output of a failed
    /// test.
    void TearDown() override;

    /// A new desktop, in place of an earlier one.
    Desktop& startDesktop(const Desktop::Options& options = {});
    /// Stores a configuration for the next start of the program.
    void storeConfiguration(const std::string& text);
    /// Starts the program and waits until it holds the grab of ⌃⌥Space, and has
    /// its icon in the tray if there is one.
    void startProgram(const Program::Options& options = {});
    /// Starts the program without waiting for more than its tray icon.
    void startProgramWithoutShortcut(const Program::Options& options = {});
    /// Puts an application on the screen, in place of an earlier one.
    Witness& startWitness(Witness::Size size = Witness::Size::normal, QColor background = Qt::white);

    /// The keyboard goes to the witness from now on.
    void focusWitness();

    /// All of the above with the usual configuration.
    void startEverything(const Desktop::Options& options = {});

    /// Presses ⌃⌥Space once.
    void pressShortcut();
    /// Presses it and waits for the layout that must follow.
    void pressShortcutAndWaitFor(int group);
    /// Types a letter and waits until the witness has it: all that was typed
    /// before has then arrived as well.
    void waitForEverythingTyped();
    /// Whether the layout comes into use.
    bool waitForGroup(int group);

    Desktop& desktop() { return *desktop_; }
    Program& program() { return *program_; }
    Witness& witness() { return *witness_; }
    Typist& typist() { return desktop_->typist(); }
    TrayPanel& tray() { return *desktop_->tray(); }

    /// What is stored as the configuration at this moment; empty for nothing.
    std::string storedConfiguration();
    /// Whether the stored configuration comes to be switched on or off.
    bool waitUntilStored(bool isActive);

    /// Ends the program with SIGKILL and forgets it.
    void killProgram();

private:
    std::unique_ptr<Desktop> desktop_;
    std::unique_ptr<Witness> witness_;
    std::unique_ptr<Program> program_;
};

}  // namespace quillmere::support
