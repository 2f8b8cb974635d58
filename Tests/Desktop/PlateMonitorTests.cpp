#include "Tests/Desktop/DesktopTest.h"
#include "Tests/Support/Dock.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>

#include <array>
#include <optional>
#include <vector>

namespace quillmere::support {

namespace {

constexpr QRect leftMonitor(0, 0, 640, 800);
constexpr QRect rightMonitor(640, 0, 640, 800);
constexpr QPoint insideMonitor(40, 120);

class PlateMonitorTest : public DesktopTest {
protected:
    void startOnTwoMonitors(const std::vector<QRect>& monitors = {leftMonitor, rightMonitor}) {
        startDesktop({.monitors = monitors});
        storeConfiguration(configurationText({{.sources = threeSources}}));
        startWitness();
    }

    /// The plate's middle after a press while the window with the keyboard is
    /// on this monitor.
    QPoint middleOfPlate(const QRect& monitor) {
        witness().moveTo(monitor.topLeft() + insideMonitor);
        return middleOfPlate();
    }
    QPoint middleOfPlate() {
        pressShortcut();
        std::optional<WindowInfo> plate;
        EXPECT_TRUE(waitUntil([&] {
            plate = program().plate();
            return plate.has_value();
        }));
        EXPECT_TRUE(program().waitForNoPlate());
        return plate ? plate->frame.center() : QPoint();
    }
};

TEST_F(PlateMonitorTest, GoesToTheMonitorOfTheWindowWithTheKeyboard) {
    startOnTwoMonitors();
    ASSERT_NO_FATAL_FAILURE(startProgram());
    EXPECT_EQ(middleOfPlate(rightMonitor), rightMonitor.center());
    EXPECT_EQ(middleOfPlate(leftMonitor), leftMonitor.center());
}

TEST_F(PlateMonitorTest, FollowsTheFocusWhereNoWindowManagerTellsOfIt) {
    startOnTwoMonitors();
    ASSERT_NO_FATAL_FAILURE(startProgram());
    Display* display = witness().connection().display();
    XDeleteProperty(display, DefaultRootWindow(display), witness().connection().atom("_NET_ACTIVE_WINDOW"));
    EXPECT_EQ(middleOfPlate(rightMonitor), rightMonitor.center());
}

TEST_F(PlateMonitorTest, GoesToThePrimaryMonitorWhenNoWindowHasTheKeyboard) {
    startOnTwoMonitors({rightMonitor, leftMonitor});
    ASSERT_NO_FATAL_FAILURE(startProgram());
    Display* display = witness().connection().display();
    XUnmapWindow(display, witness().window());
    witness().connection().synchronize();
    EXPECT_EQ(middleOfPlate(), rightMonitor.center());
}

TEST_F(PlateMonitorTest, IsCentredInWhatPanelsLeaveOfItsMonitor) {
    startOnTwoMonitors();
    const Dock dock(desktop().display(), QRect(rightMonitor.topLeft(), QSize(rightMonitor.width(), 60)));
    ASSERT_NO_FATAL_FAILURE(startProgram());
    EXPECT_EQ(middleOfPlate(rightMonitor), rightMonitor.adjusted(0, 60, 0, 0).center());
    EXPECT_EQ(middleOfPlate(leftMonitor), leftMonitor.center());
}

TEST_F(PlateMonitorTest, BelievesAWindowManagerThatTellsWhatIsFreeOfEachMonitor) {
    startOnTwoMonitors();
    ASSERT_NO_FATAL_FAILURE(startProgram());
    const std::array<unsigned long, 8> areas{0, 0, 640, 780, 640, 100, 640, 700};
    Display* display = witness().connection().display();
    XChangeProperty(display, DefaultRootWindow(display), witness().connection().atom("_GTK_WORKAREAS_D0"), XA_CARDINAL,
                    32, PropModeReplace, reinterpret_cast<const unsigned char*>(areas.data()),
                    static_cast<int>(areas.size()));
    EXPECT_EQ(middleOfPlate(rightMonitor), QRect(640, 100, 640, 700).center());
    EXPECT_EQ(middleOfPlate(leftMonitor), QRect(0, 0, 640, 780).center());
}

}  // namespace

}  // namespace quillmere::support
