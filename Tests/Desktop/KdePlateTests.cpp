#include "Tests/Desktop/KdeTest.h"

namespace quillmere::support {

namespace {

/// Neither light nor red, as the plate is.
constexpr QColor ground(20, 60, 120);
constexpr QPoint corner(5, 5);
constexpr QPoint middle(640, 400);
/// Within the edge of a plate with three rows, where nothing is written.
constexpr QPoint besideTheRows(523, 400);

/// The plate over an application that has the whole screen: a window of
/// Xwayland is not shown there by every KWin, and eats clicks all the same.
class KdePlateTest : public KdeTest {
protected:
    KdePlateTest() : KdeTest(true), screen(server->display()) {}

    void SetUp() override {
        ASSERT_NO_FATAL_FAILURE(startSwitching());
        witness.emplace(kwin.xDisplay(), Witness::Size::fullScreen, ground);
        ASSERT_TRUE(waitUntil([this] { return isGround(corner) && isGround(middle); }));
    }

    bool isGround(QPoint at) const { return Screen::isNear(screen.color(at), ground); }
    /// Whether the plate is on the screen at this moment.
    bool isShown() const { return screen.color(besideTheRows).red() > 100; }
    /// Presses the shortcut until the plate is seen: a busy machine may look too
    /// late for one showing.
    bool showPlate() {
        return waitUntil([this] {
            typist.type(shortcut);
            return waitUntil([this] { return isShown(); }, std::chrono::seconds(1));
        });
    }

    Screen screen;
    std::optional<Witness> witness;
};

TEST_F(KdePlateTest, ComesOverAFullScreenWindowAndLeavesItTheKeys) {
    ASSERT_TRUE(showPlate());
    savePicture(screen.shot(), DesktopTest::artefacts() / "kde" / "over-full-screen.png");
    EXPECT_TRUE(isGround(corner));
    typist.type("+a -a");
    EXPECT_TRUE(waitUntil([this] { return witness->presses(keys::a) == 1; }));
    EXPECT_EQ(witness->focusLosses(), 0);
    EXPECT_TRUE(waitUntil([this] { return isGround(besideTheRows); })) << "it goes again";
}

TEST_F(KdePlateTest, LetsClicksThroughToTheWindowBelow) {
    bool wasShown = false;
    // A busy machine may click too late for one showing.
    ASSERT_TRUE(waitUntil([&] {
        witness->clear();
        if (!showPlate()) return false;
        typist.click(middle);
        const bool isThrough = waitUntil([this] { return !witness->clicks().empty(); });
        wasShown = isShown();
        return isThrough && wasShown;
    }));
    EXPECT_EQ(witness->clicks().front(), middle);
}

TEST_F(KdePlateTest, IsNoWindowOfXwayland) {
    ASSERT_TRUE(showPlate());
    EXPECT_FALSE(XConnection(kwin.xDisplay()).visibleWindow("Quillmere plate").has_value());
}

}  // namespace

}  // namespace quillmere::support
