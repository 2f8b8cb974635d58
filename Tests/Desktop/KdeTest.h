#pragma once

#include "Tests/Desktop/ProgramTest.h"
#include "Tests/Support/Kwin.h"
#include "Tests/Support/KwinTypist.h"

#include <QDBusMessage>

#include <memory>
#include <string>

namespace quillmere::support {

/// The whole program on KDE's compositor with nothing faked but the hands: no
/// key-tap service, so the desktop itself catches the shortcuts.
class KdeTest : public ProgramTest {
protected:
    // Qt::CTRL | Qt::ALT | Qt::Key_…
    static constexpr int controlAltSpace = 0x0C000020;
    static constexpr int controlAltK = 0x0C00004B;
    static constexpr const char* shortcut = "+ctrl +alt +space -space -alt -ctrl";

    /// `isShown`: on a screen, of which there are pictures.
    explicit KdeTest(bool isShown = false);

    void TearDown() override;

    /// Starts it with one group on ⌃⌥Space, and waits until the desktop has it.
    void startSwitching();

    QDBusMessage callShortcuts(const char* method, const QVariantList& arguments) const;
    /// The program that has this combination; empty when nobody has.
    std::string ownerOf(int key) const;
    bool waitForOwner(int key, const std::string& owner) const {
        return waitUntil([&] { return ownerOf(key) == owner; });
    }
    /// What the desktop would know after the next login.
    std::string storedShortcuts() const;
    bool waitForLayout(int index) const {
        return waitUntil([&] { return kwin.layoutInUse() == index; });
    }
    bool asksForPermission() const {
        return XConnection(kwin.xDisplay()).visibleWindow("Quillmere needs permission").has_value();
    }
    /// Whether the window of Xwayland with this title has the keyboard.
    bool hasFocus(const char* title) const;
    /// Opens the settings and presses the recorder of the first group.
    void startRecording();

    QDBusConnection connection;
    std::unique_ptr<XServer> server;  ///< whose window the screen is; null for none
    Kwin kwin;
    KwinTypist typist;
};

}  // namespace quillmere::support
