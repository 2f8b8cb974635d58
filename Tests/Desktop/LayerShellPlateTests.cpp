#include "Tests/Desktop/SwayTest.h"
#include "Tests/Support/SettingsPortal.h"
#include "Tests/Support/Typist.h"
#include "Tests/Support/Witness.h"

namespace quillmere::support {

namespace {

/// Neither light nor red, as the tests' plates are found.
constexpr QColor ground(20, 60, 120);

constexpr QSize threeRows(244, 192);

class LayerShellPlateTest : public SwayTest {
protected:
    using SwayTest::SwayTest;

    /// An application over the whole screen.
    Witness& startFullScreen() {
        Witness& witness = witness_.emplace(sway->xDisplay(), Witness::Size::fullScreen, ground);
        const bool isFull = sway->command("fullscreen enable") && waitUntil([this] {
                                return screen.color({0, 0}) == ground && screen.color(corner) == ground;
                            });
        if (!isFull) ADD_FAILURE() << "not over the whole screen";
        witness.clear();
        return witness;
    }

    /// Whether the screen follows what the compositor does, and does not keep the
    /// last picture. The window is full screen afterwards.
    bool isPaintedAgain() {
        const auto becomesGround = [this](bool isGround) {
            return waitUntil([&] { return (screen.color({0, 0}) == ground) == isGround; }, std::chrono::seconds(5));
        };
        return sway->command("fullscreen disable") && becomesGround(false) && sway->command("fullscreen enable")
               && becomesGround(true);
    }

    /// The plate's place in full opacity, whatever the machine misses.
    QRect showPlate(const std::string& pictureName) {
        pressShortcut();
        return waitForPlate(pictureName);
    }

private:
    std::optional<Witness> witness_;
};

TEST_F(LayerShellPlateTest, ComesOverAFullScreenWindow) {
    Witness& witness = startFullScreen();
    ASSERT_NO_FATAL_FAILURE(startSwitching());
    const QRect plate = showPlate("over-full-screen");
    EXPECT_EQ(plate.size(), threeRows);
    EXPECT_NEAR(plate.center().x(), middle.x(), 1);
    EXPECT_NEAR(plate.center().y(), middle.y(), 1);
    EXPECT_TRUE(waitUntilPlateIsGone());
    EXPECT_TRUE(waitUntil([this] { return screen.color(middle) == ground; }));
    EXPECT_EQ(witness.focusLosses(), 0);
}

TEST_F(LayerShellPlateTest, LetsKeysAndClicksThroughToTheWindowBelow) {
    Witness& witness = startFullScreen();
    ASSERT_NO_FATAL_FAILURE(startSwitching());
    Typist typist(server.display());
    bool wasShown = false;
    // A busy machine may click too late for one showing.
    ASSERT_TRUE(waitUntil([&] {
        witness.clear();
        if (showPlate("clicked").isEmpty()) return false;
        typist.movePointer(middle);
        typist.click();
        typist.tap(keys::a);
        const bool isThrough = waitUntil([&] { return witness.presses(keys::a) == 1 && !witness.clicks().empty(); });
        wasShown = !plateFrame(screen.shot()).isEmpty();
        return isThrough && wasShown;
    }));
    EXPECT_EQ(witness.clicks().front(), middle);
    EXPECT_EQ(witness.focusLosses(), 0);
}

TEST_F(LayerShellPlateTest, IsNoWindowOfXwayland) {
    const XConnection xwayland(sway->xDisplay());
    ASSERT_NO_FATAL_FAILURE(startSwitching());
    ASSERT_FALSE(showPlate("native").isEmpty());
    EXPECT_FALSE(xwayland.visibleWindow("Quillmere plate").has_value());
}

TEST_F(LayerShellPlateTest, FollowsTheScaleOfItsOutput) {
    ASSERT_NO_FATAL_FAILURE(startSwitching());
    for (const auto& [scale, name] : {std::pair{2.0, "scale-2"}, {1.5, "scale-1.5"}, {1.0, "scale-1"}}) {
        ASSERT_TRUE(waitUntilPlateIsGone());
        ASSERT_TRUE(sway->command("output X11-1 scale " + std::to_string(scale)));
        const QRect plate = showPlate(name);
        EXPECT_NEAR(plate.width(), threeRows.width() * scale, 2) << scale;
        EXPECT_NEAR(plate.height(), threeRows.height() * scale, 2) << scale;
        EXPECT_NEAR(plate.center().x(), middle.x(), 2) << scale;
        EXPECT_NEAR(plate.center().y(), middle.y(), 2) << scale;
    }
}

TEST_F(LayerShellPlateTest, IsDrawnAnewWhenTheDesktopTurnsDark) {
    SettingsPortal portal(bus.connect(), SettingsPortal::Scheme::light);
    ASSERT_NO_FATAL_FAILURE(startSwitching());
    ASSERT_FALSE(showPlate("light").isEmpty());
    portal.setScheme(SettingsPortal::Scheme::dark);
    ASSERT_TRUE(waitUntil([this] {
        const int red = screen.color(besideTheRows).red();
        return red > 10 && red < 100;
    })) << "while it is shown";
    takePicture("dark");
}

TEST_F(LayerShellPlateTest, OutlivesItsOutput) {
    startFullScreen();
    ASSERT_NO_FATAL_FAILURE(startSwitching());
    ASSERT_FALSE(showPlate("before-unplugging").isEmpty());
    ASSERT_TRUE(sway->command("output X11-1 disable"));
    pressShortcut();
    ASSERT_TRUE(waitForLayout(2)) << "nothing waits for a screen";
    ASSERT_TRUE(sway->command("output X11-1 enable"));
    if (!isPaintedAgain())
        GTEST_SKIP() << "this compositor shows nothing any more on an X server's window that was disabled";
    EXPECT_TRUE(waitUntil([this] { return showPlate("after-unplugging").size() == threeRows; }));
}

class BarPlateTest : public LayerShellPlateTest {
protected:
    static constexpr const char* bar =
        "bar {\n"
        "  position top\n"
        "  height 60\n"
        "  workspace_buttons no\n"
        "  colors background #000060\n"
        "}";

    BarPlateTest() : LayerShellPlateTest(Sway::Options{.hasXwayland = true, .configuration = bar}) {}
};

TEST_F(BarPlateTest, IsInTheMiddleOfWhatABarLeaves) {
    ASSERT_TRUE(waitUntil([this] { return screen.color({640, 30}) == QColor(0, 0, 0x60); }));
    ASSERT_NO_FATAL_FAILURE(startSwitching());
    const QRect plate = showPlate("below-a-bar");
    EXPECT_NEAR(plate.center().x(), 640, 1);
    EXPECT_NEAR(plate.center().y(), 60 + 740 / 2.0, 1);
}

class NoXwaylandPlateTest : public LayerShellPlateTest {
protected:
    NoXwaylandPlateTest() : LayerShellPlateTest(Sway::Options{}) {
        // The program's windows are of no concern here.
        environment["QT_QPA_PLATFORM"] = "offscreen";
    }
};

TEST_F(NoXwaylandPlateTest, NeedsNoXwayland) {
    ASSERT_NO_FATAL_FAILURE(startSwitching());
    EXPECT_EQ(showPlate("no-xwayland").size(), threeRows);
    EXPECT_TRUE(waitUntilPlateIsGone());
}

}  // namespace

}  // namespace quillmere::support
