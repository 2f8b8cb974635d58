#include "Quillmere/Permission/PermissionWindow.h"

#include "Quillmere/AppDelegate.h"
#include "Quillmere/Controls/AccentButtonStyle.h"
#include "Quillmere/Controls/ChipButtonStyle.h"
#include "Quillmere/Menu/StatusItem.h"
#include "Quillmere/Palette.h"
#include "Tests/App/WindowContent.h"
#include "Tests/Support/FakePermissionRequest.h"
#include "Tests/Support/FakePlatform.h"
#include "Tests/Support/Settle.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <stdexcept>

namespace quillmere {
namespace {

using State = PermissionGate::State;

class PermissionWindowTest : public testing::Test {
protected:
    ~PermissionWindowTest() override { Palette::setDark(false); }

    QWidget& window() const { return *shown.window(); }

    /// The texts that can be read, from top to bottom.
    QStringList texts() const {
        settle();
        return quillmere::texts(window());
    }

    std::vector<QLabel*> labels() const { return quillmere::shown<QLabel>(window()); }

    QAbstractButton& button(const QString& title) const { return quillmere::button(window(), title); }

    void press(const QString& title) {
        QTest::mouseClick(&button(title), Qt::LeftButton);
        settle();
    }

    QRect frameOf(const QWidget& widget) const { return {widget.mapTo(&window(), QPoint()), widget.size()}; }

    ManualQueue queue;
    FakeWorkspace workspace;
    FakePermissionRequest request;
    std::shared_ptr<PermissionModel> model = std::make_shared<PermissionModel>();
    PermissionWindow shown{model, queue, workspace, request};
};

TEST_F(PermissionWindowTest, ThereIsNoWindowBeforeItIsShown) {
    EXPECT_EQ(shown.window(), nullptr);
    EXPECT_EQ(model->state(), State::needed);
}

TEST_F(PermissionWindowTest, SaysWhatIsMissingAndThatItWaits) {
    shown.show();
    EXPECT_EQ(window().windowTitle(), "Quillmere needs permission");
    const QStringList expected{
        "Quillmere needs Accessibility access to see your shortcut keys.",
        request.text,
        "Waiting for permission…",
    };
    EXPECT_EQ(texts(), expected);
}

TEST_F(PermissionWindowTest, ComesToTheFrontInTheMiddleOfTheScreen) {
    shown.show();
    EXPECT_TRUE(window().isVisible());
    EXPECT_EQ(workspace.broughtToFront, std::vector<QWidget*>{&window()});
    EXPECT_EQ(workspace.blended, std::vector<QWidget*>{&window()});
    const QPoint middle = QGuiApplication::primaryScreen()->availableGeometry().center();
    EXPECT_LE((window().geometry().center() - middle).manhattanLength(), 8);
}

TEST_F(PermissionWindowTest, HasAnIconATitleAndACloseButtonAndKeepsItsSize) {
    shown.show();
    const Qt::WindowFlags flags = window().windowFlags();
    EXPECT_FALSE(window().windowIcon().isNull());
    EXPECT_TRUE(flags & Qt::WindowTitleHint);
    EXPECT_TRUE(flags & Qt::WindowCloseButtonHint);
    EXPECT_FALSE(flags & Qt::WindowMinimizeButtonHint);
    EXPECT_FALSE(flags & Qt::WindowMaximizeButtonHint);
    EXPECT_EQ(window().width(), 420);
    EXPECT_EQ(window().minimumSize(), window().maximumSize());
}

TEST_F(PermissionWindowTest, IsLaidOutAsAColumn) {
    shown.show();
    settle();
    const std::vector<QLabel*> lines = labels();
    const QRect settings = frameOf(button("Open System Settings"));
    const QRect quit = frameOf(button("Quit"));
    EXPECT_EQ(frameOf(*lines[0]).topLeft(), QPoint(24, 24));
    EXPECT_EQ(frameOf(*lines[1]).top() - frameOf(*lines[0]).bottom() - 1, 16);
    EXPECT_EQ(settings.top() - frameOf(*lines[1]).bottom() - 1, 16);
    EXPECT_EQ(settings.left(), 24);
    EXPECT_EQ(quit.left() - settings.right() - 1, 10);
    EXPECT_EQ(quit.center().y(), settings.center().y());
    EXPECT_EQ(frameOf(*lines[2]).top() - std::max(settings.bottom(), quit.bottom()) - 1, 16);
    EXPECT_EQ(window().height() - frameOf(*lines[2]).bottom() - 1, 24);
}

TEST_F(PermissionWindowTest, UsesTheCommonStyles) {
    shown.show();
    settle();
    const std::vector<QLabel*> lines = labels();
    EXPECT_EQ(lines[0]->font().pixelSize(), 15);
    EXPECT_EQ(lines[0]->font().weight(), QFont::DemiBold);
    EXPECT_EQ(lines[1]->font().pixelSize(), 13);
    EXPECT_EQ(lines[2]->font().pixelSize(), 11);
    for (const bool isDark : {false, true}) {
        Palette::setDark(isDark);
        EXPECT_TRUE(isSame(ink(*lines[0]), labelColor().resolved(isDark)));
        EXPECT_TRUE(isSame(ink(*lines[1]), Palette::muted().resolved(isDark)));
        EXPECT_TRUE(isSame(ink(*lines[2]), Palette::muted().resolved(isDark)));
    }
    EXPECT_NE(dynamic_cast<AccentButton*>(&button("Open System Settings")), nullptr);
    EXPECT_NE(dynamic_cast<ChipButton*>(&button("Quit")), nullptr);
}

TEST_F(PermissionWindowTest, TabWalksThroughTheButtonsOfEachState) {
    shown.show();
    EXPECT_EQ(window().focusWidget(), window().focusProxy()) << "no button has the focus yet";
    for (const char* const title : {"Open System Settings", "Quit", "Open System Settings"}) {
        QTest::keyClick(window().focusWidget(), Qt::Key_Tab);
        EXPECT_EQ(window().focusWidget(), &button(title));
    }
    shown.granted();
    settle();
    QTest::keyClick(window().focusWidget() ? window().focusWidget() : &window(), Qt::Key_Tab);
    EXPECT_EQ(window().focusWidget(), &button("Done"));
}

TEST_F(PermissionWindowTest, TheMainButtonOpensThePlaceThatGrants) {
    shown.show();
    press("Open System Settings");
    EXPECT_EQ(request.opens, 1);
    EXPECT_TRUE(window().isVisible());
    EXPECT_EQ(model->state(), State::needed);
    press("Open System Settings");
    EXPECT_EQ(request.opens, 2);
}

TEST_F(PermissionWindowTest, QuitEndsTheProgram) {
    shown.show();
    int quits = 0;
    const auto connection = QObject::connect(qApp, &QCoreApplication::aboutToQuit, [&quits] { ++quits; });
    QMetaObject::invokeMethod(
        qApp, [this] { QTest::mouseClick(&button("Quit"), Qt::LeftButton); }, Qt::QueuedConnection);
    QApplication::exec();
    QObject::disconnect(connection);
    EXPECT_EQ(quits, 1);
}

TEST_F(PermissionWindowTest, TheGrantChangesTitleAndTextInOneStep) {
    shown.show();
    workspace.broughtToFront.clear();
    shown.granted();
    EXPECT_EQ(model->state(), State::granted);
    EXPECT_EQ(window().windowTitle(), "Quillmere is ready");
    EXPECT_EQ(texts(), QStringList{"Permission granted. Quillmere is ready."});
    EXPECT_NE(dynamic_cast<AccentButton*>(&button("Done")), nullptr);
    EXPECT_THROW(button("Quit"), std::runtime_error);
    EXPECT_EQ(workspace.broughtToFront, std::vector<QWidget*>{&window()});
}

TEST_F(PermissionWindowTest, TheReadyMessageHasItsOwnHeight) {
    shown.show();
    settle();
    const int before = window().height();
    shown.granted();
    settle();
    EXPECT_EQ(window().width(), 420);
    EXPECT_LT(window().height(), before);
    const QRect done = frameOf(button("Done"));
    EXPECT_EQ(done.left(), 24);
    EXPECT_EQ(done.top() - frameOf(*labels()[0]).bottom() - 1, 16);
    EXPECT_EQ(window().height() - done.bottom() - 1, 24);
}

TEST_F(PermissionWindowTest, ClosesThreeSecondsAfterTheGrant) {
    shown.show();
    const QPointer<QWidget> first = shown.window();
    shown.granted();
    queue.advance(2.9);
    EXPECT_TRUE(first->isVisible());
    queue.advance(0.1);
    EXPECT_EQ(shown.window(), nullptr);
    settle();
    EXPECT_TRUE(first.isNull());
}

TEST_F(PermissionWindowTest, DoneClosesAtOnceAndTheJobFindsNothing) {
    shown.show();
    shown.granted();
    press("Done");
    EXPECT_EQ(shown.window(), nullptr);
    queue.advance(10);
    EXPECT_EQ(shown.window(), nullptr);
    EXPECT_EQ(queue.pendingCount(), 0U);
}

TEST_F(PermissionWindowTest, AGrantBeforeItIsShownChangesNothing) {
    shown.granted();
    EXPECT_EQ(shown.window(), nullptr);
    EXPECT_EQ(model->state(), State::needed);
    EXPECT_EQ(queue.pendingCount(), 0U);
}

TEST_F(PermissionWindowTest, AGrantAfterTheCloseButtonShowsTheSameWindowAgain) {
    shown.show();
    QWidget* const first = shown.window();
    first->close();
    EXPECT_FALSE(first->isVisible());
    EXPECT_EQ(shown.window(), first);
    shown.granted();
    EXPECT_EQ(shown.window(), first);
    EXPECT_TRUE(first->isVisible());
    EXPECT_EQ(first->windowTitle(), "Quillmere is ready");
    queue.advance(3);
    EXPECT_EQ(shown.window(), nullptr);
}

TEST_F(PermissionWindowTest, TheCloseButtonInTheReadyStateLeavesTheJobToForgetTheWindow) {
    shown.show();
    shown.granted();
    window().close();
    EXPECT_NE(shown.window(), nullptr);
    queue.advance(3);
    EXPECT_EQ(shown.window(), nullptr);
}

TEST_F(PermissionWindowTest, ClosingTwiceDoesNothing) {
    shown.show();
    shown.close();
    shown.close();
    EXPECT_EQ(shown.window(), nullptr);
}

TEST_F(PermissionWindowTest, ItsBackgroundFollowsDarkAndLight) {
    shown.show();
    for (const bool dark : {false, true}) {
        Palette::setDark(dark);
        settle();
        const QImage picture = window().grab().toImage();
        EXPECT_EQ(picture.pixelColor(2, 2), Palette::window().resolved(dark));
        EXPECT_EQ(picture.pixelColor(picture.width() - 3, picture.height() - 3), Palette::window().resolved(dark));
    }
}

TEST_F(PermissionWindowTest, EndingWithAnOpenWindowIsHarmless) {
    auto other = std::make_unique<PermissionWindow>(model, queue, workspace, request);
    other->show();
    other->granted();
    other.reset();
    queue.advance(10);
    EXPECT_EQ(queue.pendingCount(), 0U);
}

class PermissionAtLaunch : public testing::Test {
protected:
    void launch() {
        delegate = std::make_unique<AppDelegate>(system.take());
        delegate->applicationDidFinishLaunching();
    }

    FakePlatform system;
    std::unique_ptr<AppDelegate> delegate;
};

TEST_F(PermissionAtLaunch, WithPermissionThereIsNoWindow) {
    launch();
    EXPECT_EQ(delegate->permissionWindow(), nullptr);
}

TEST_F(PermissionAtLaunch, WithoutPermissionTheWindowWaitsAndTurnsReadyWithinASecondOfTheGrant) {
    system.tap.allowed = false;
    launch();
    QWidget* const window = delegate->permissionWindow()->window();
    EXPECT_EQ(window->windowTitle(), "Quillmere needs permission");
    system.queue.advance(5);
    EXPECT_EQ(window->windowTitle(), "Quillmere needs permission");
    system.tap.allowed = true;
    system.queue.advance(1);
    EXPECT_EQ(window->windowTitle(), "Quillmere is ready");
    EXPECT_FALSE(delegate->isRetrying());
    system.queue.advance(3);
    EXPECT_EQ(delegate->permissionWindow()->window(), nullptr);
}

TEST_F(PermissionAtLaunch, TheMenusKeyEquivalentsActInTheWindow) {
    system.tap.allowed = false;
    launch();
    QWidget* const window = delegate->permissionWindow()->window();
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window, 10000));
    const QSignalSpy quits(delegate->statusItem()->menu().actions().at(3), &QAction::triggered);
    QTest::keyClick(window, Qt::Key_Q, Qt::ControlModifier);
    EXPECT_EQ(quits.count(), 1);
    QTest::keyClick(window, Qt::Key_Comma, Qt::ControlModifier);
    ASSERT_NE(delegate->settingsWindow(), nullptr);
    EXPECT_TRUE(delegate->settingsWindow()->window()->isVisible());
}

TEST_F(PermissionAtLaunch, TheButtonAsksTheSystem) {
    system.tap.allowed = false;
    launch();
    QTest::mouseClick(&button(*delegate->permissionWindow()->window(), "Open System Settings"), Qt::LeftButton);
    EXPECT_EQ(system.permissionRequest.opens, 1);
    EXPECT_TRUE(delegate->isRetrying());
}

}  // namespace
}  // namespace quillmere
