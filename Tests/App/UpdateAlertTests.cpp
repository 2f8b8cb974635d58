#include "Quillmere/Updates/UpdateAlert.h"

#include "Quillmere/Controls/ControlButton.h"
#include "Quillmere/Palette.h"
#include "Tests/Support/FakeWorkspace.h"
#include "Tests/Support/Settle.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QPointer>
#include <QTest>

namespace quillmere {

namespace {

class UpdateAlertTest : public testing::Test {
protected:
    ~UpdateAlertTest() override { Palette::setDark(false); }

    QStringList texts() const {
        QStringList result;
        for (const QLabel* label : alert.dialog()->findChildren<QLabel*>())
            result << label->text();
        return result;
    }

    FakeWorkspace workspace;
    UpdateAlert alert{workspace};
};

}  // namespace

TEST_F(UpdateAlertTest, ShowsTheMessageAndTheInformativeText) {
    alert.show("You're up to date.", "Quillmere 1.3.2 is the latest version.");
    EXPECT_EQ(texts(), (QStringList{"You're up to date.", "Quillmere 1.3.2 is the latest version."}));
    EXPECT_EQ(alert.dialog()->accessibleName(), "You're up to date.");
    EXPECT_EQ(alert.dialog()->accessibleDescription(), "Quillmere 1.3.2 is the latest version.");
}

TEST_F(UpdateAlertTest, ComesToTheFrontAndIsModal) {
    alert.show("Message", "Text");
    EXPECT_TRUE(alert.dialog()->isVisible());
    EXPECT_EQ(alert.dialog()->windowModality(), Qt::ApplicationModal);
    EXPECT_EQ(workspace.broughtToFront, std::vector<QWidget*>{alert.dialog()});
}

TEST_F(UpdateAlertTest, HasTheProgramsIcon) {
    alert.show("Message", "Text");
    EXPECT_FALSE(alert.dialog()->windowIcon().isNull());
}

TEST_F(UpdateAlertTest, TextFromOutsideIsShownVerbatim) {
    alert.show("Couldn't check for updates.", "<b>Host</b> &amp; https://example.org not found");
    for (const QLabel* label : alert.dialog()->findChildren<QLabel*>()) {
        EXPECT_EQ(label->textFormat(), Qt::PlainText);
    }
}

TEST_F(UpdateAlertTest, ALongTextWraps) {
    alert.show("Message", std::string(400, 'x'));
    const auto labels = alert.dialog()->findChildren<QLabel*>();
    EXPECT_GT(labels.last()->height(), 3 * labels.last()->fontMetrics().height());
    EXPECT_EQ(alert.dialog()->minimumSize(), alert.dialog()->maximumSize());
}

TEST_F(UpdateAlertTest, IsClosedWithItsButtonWithReturnAndWithEscape) {
    const std::vector<std::function<void()>> ways = {
        [&] { QTest::mouseClick(alert.dialog()->findChild<QAbstractButton*>(), Qt::LeftButton); },
        [&] { QTest::keyClick(alert.dialog()->focusWidget(), Qt::Key_Return); },
        [&] { QTest::keyClick(alert.dialog(), Qt::Key_Escape); },
        [&] { alert.dialog()->close(); },
    };
    for (const auto& way : ways) {
        alert.show("Message", "Text");
        const QPointer<QDialog> dialog = alert.dialog();
        way();
        settle();
        EXPECT_TRUE(dialog.isNull());
        EXPECT_EQ(alert.dialog(), nullptr);
    }
}

TEST_F(UpdateAlertTest, ASecondOneTakesThePlaceOfTheFirst) {
    alert.show("First", "Text");
    const QPointer<QDialog> first = alert.dialog();
    alert.show("Second", "Text");
    settle();
    EXPECT_TRUE(first.isNull());
    EXPECT_EQ(texts().front(), "Second");
}

TEST_F(UpdateAlertTest, IsDrawnInThePalettesColoursOfTheMoment) {
    alert.show("Message", "Text");
    const auto background = [&] { return alert.dialog()->grab().toImage().pixelColor(4, 4); };
    EXPECT_EQ(background(), Palette::window().light);
    Palette::setDark(true);
    EXPECT_EQ(background(), Palette::window().dark);
}

}  // namespace quillmere
