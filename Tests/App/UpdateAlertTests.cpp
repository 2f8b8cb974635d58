#include "Quillmere/Updates/UpdateAlert.h"

#include "Quillmere/Palette.h"
#include "Tests/App/WindowContent.h"
#include "Tests/Support/FakeWorkspace.h"
#include "Tests/Support/Settle.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QLabel>
#include <QPointer>
#include <QScreen>
#include <QTest>

namespace quillmere {

namespace {

class UpdateAlertTest : public testing::Test {
protected:
    ~UpdateAlertTest() override { Palette::setDark(false); }

    QWidget& window() const { return *alert.window(); }
    QStringList texts() const { return quillmere::texts(window()); }

    FakeWorkspace workspace;
    UpdateAlert alert{workspace};
};

}  // namespace

TEST_F(UpdateAlertTest, ShowsTheMessageAndTheInformativeText) {
    alert.show("You're up to date.", "Quillmere 1.3.2 is the latest version.");
    EXPECT_EQ(texts(), (QStringList{"You're up to date.", "Quillmere 1.3.2 is the latest version."}));
    EXPECT_EQ(window().accessibleName(), "You're up to date.");
    EXPECT_EQ(window().accessibleDescription(), "Quillmere 1.3.2 is the latest version.");
}

TEST_F(UpdateAlertTest, ComesToTheFrontAndIsModal) {
    alert.show("Message", "Text");
    EXPECT_TRUE(window().isVisible());
    EXPECT_EQ(window().windowModality(), Qt::ApplicationModal);
    EXPECT_EQ(workspace.broughtToFront, std::vector<QWidget*>{alert.window()});
}

TEST_F(UpdateAlertTest, HasTheProgramsIcon) {
    alert.show("Message", "Text");
    EXPECT_FALSE(window().windowIcon().isNull());
}

TEST_F(UpdateAlertTest, TextFromOutsideIsShownVerbatim) {
    alert.show("Couldn't check for updates.", "<b>Host</b> &amp; https://example.org not found");
    for (const QLabel* label : window().findChildren<QLabel*>()) {
        EXPECT_EQ(label->textFormat(), Qt::PlainText);
    }
}

TEST_F(UpdateAlertTest, ALongTextWraps) {
    alert.show("Message", std::string(400, 'x'));
    const auto labels = window().findChildren<QLabel*>();
    EXPECT_GT(labels.last()->height(), 3 * labels.last()->fontMetrics().height());
    EXPECT_EQ(window().minimumSize(), window().maximumSize());
}

TEST_F(UpdateAlertTest, IsClosedWithItsButtonWithReturnAndWithEscape) {
    const std::vector<std::function<void()>> ways = {
        [&] { QTest::mouseClick(&button(window(), "OK"), Qt::LeftButton); },
        [&] { QTest::keyClick(window().focusWidget(), Qt::Key_Return); },
        [&] { QTest::keyClick(&window(), Qt::Key_Escape); },
        [&] { window().close(); },
    };
    for (const auto& way : ways) {
        alert.show("Message", "Text");
        const QPointer<QWidget> closed = alert.window();
        way();
        settle();
        EXPECT_TRUE(closed.isNull());
        EXPECT_EQ(alert.window(), nullptr);
    }
}

TEST_F(UpdateAlertTest, ASecondOneTakesThePlaceOfTheFirst) {
    alert.show("First", "Text");
    const QPointer<QWidget> first = alert.window();
    alert.show("Second", "Text");
    settle();
    EXPECT_TRUE(first.isNull());
    EXPECT_EQ(texts().front(), "Second");
}

TEST_F(UpdateAlertTest, IsTitledAndClosableInTheMiddleOfTheScreenAndADialogToAssistivePrograms) {
    alert.show("Message", "Text");
    EXPECT_EQ(window().windowTitle(), "Quillmere");
    EXPECT_EQ(window().windowType(), Qt::Dialog);
    EXPECT_TRUE(window().windowFlags() & Qt::WindowCloseButtonHint);
    EXPECT_FALSE(window().windowFlags() & Qt::WindowMinimizeButtonHint);
    EXPECT_FALSE(window().windowFlags() & Qt::WindowMaximizeButtonHint);
    const QPoint middle = QGuiApplication::primaryScreen()->availableGeometry().center();
    EXPECT_LE((window().geometry().center() - middle).manhattanLength(), 8);
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&window())->role(), QAccessible::Dialog);
}

TEST_F(UpdateAlertTest, TheInformativeTextIsMuted) {
    alert.show("Message", "Text");
    for (const bool isDark : {false, true}) {
        Palette::setDark(isDark);
        EXPECT_TRUE(isSame(ink(label(window(), "Message")), labelColor().resolved(isDark)));
        EXPECT_TRUE(isSame(ink(label(window(), "Text")), Palette::muted().resolved(isDark)));
    }
}

TEST_F(UpdateAlertTest, IsDrawnInThePalettesColoursOfTheMoment) {
    alert.show("Message", "Text");
    const auto background = [&] { return window().grab().toImage().pixelColor(4, 4); };
    EXPECT_EQ(background(), Palette::window().light);
    Palette::setDark(true);
    EXPECT_EQ(background(), Palette::window().dark);
}

}  // namespace quillmere
