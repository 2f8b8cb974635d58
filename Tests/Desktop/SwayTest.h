#pragma once

#include "Tests/Desktop/ProgramTest.h"
#include "Tests/Support/Sway.h"
#include "Tests/TapService/TapServiceHost.h"

#include <optional>
#include <string>

namespace quillmere::support {

/// The whole program on a Wayland desktop. Only the keyboard is played: the
/// key-tap service reads it from the test, since a real one takes a kernel.
class SwayTest : public ProgramTest {
protected:
    explicit SwayTest(const Sway::Options& options = {.hasXwayland = true});

    /// Keeps what helps to explain a failure.
    void TearDown() override;

    void startService();
    /// Starts it with one group on ⌃⌥Space, and waits until it has the keyboard.
    void startSwitching();

    void pressShortcut() { service->type("+ctrl +alt +space -space -alt -ctrl"); }
    bool waitForLayout(int index) {
        return waitUntil([&] { return sway->layoutsInUse(Sway::serverKeyboard) == std::vector{index}; });
    }

    /// A picture of the screen that is kept.
    QImage takePicture(const std::string& name) const;
    /// Whether the middle of the screen comes to show something, and its
    /// picture.
    bool waitForPicture(const std::string& name);

    /// Where the light plate is on a picture of the screen, in pixels, where
    /// all else is dark or blue; empty where it is not.
    static QRect plateFrame(const QImage& picture);
    /// Where it comes to be when it has moved for the last time; empty when it
    /// does not come.
    QRect waitForPlate(const std::string& pictureName);
    bool waitUntilPlateIsGone() {
        return waitUntil([this] { return plateFrame(screen.shot()).isEmpty(); });
    }

    static constexpr QPoint middle{640, 400};
    static constexpr QPoint corner{1270, 790};
    /// Within the edge of a plate with three rows.
    static constexpr QPoint besideTheRows{523, 400};

    SessionBus systemBus;
    XServer server;
    std::optional<Sway> sway;
    Screen screen;
    std::optional<TapServiceHost> service;
};

}  // namespace quillmere::support
