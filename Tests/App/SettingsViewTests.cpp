#include "Quillmere/Controls/CardStyle.h"
#include "Quillmere/Controls/ChipButtonStyle.h"
#include "Quillmere/Controls/PaletteLabel.h"
#include "Quillmere/Controls/SwitchControl.h"
#include "Quillmere/Settings/GeneralTab.h"
#include "Quillmere/Settings/PlateSection.h"
#include "Quillmere/Settings/ShortcutChip.h"
#include "Quillmere/Settings/ShortcutRecorder.h"
#include "Tests/App/SettingsFixture.h"

#include <QImage>

namespace quillmere {
namespace {

class SettingsViewTest : public SettingsTest {
protected:
    GeneralTab& general() const { return view().generalTab(); }
    void openGeneral() {
        open({});
        click(view().generalChip());
        settle();
    }
};

TEST_F(SettingsViewTest, NothingIsMadeBeforeTheFirstOpening) {
    open({});
    const SettingsWindow unopened(*model, *settings, InputSources(service), workspace, false);
    EXPECT_EQ(unopened.window(), nullptr);
}

TEST_F(SettingsViewTest, TheWindowIsTitledResizableClosableAndCannotBeMinimised) {
    open({});
    const QWidget& opened = *window->window();
    EXPECT_EQ(opened.windowTitle(), "Quillmere");
    EXPECT_TRUE(opened.windowFlags() & Qt::WindowCloseButtonHint);
    EXPECT_FALSE(opened.windowFlags() & Qt::WindowMinimizeButtonHint);
    EXPECT_EQ(opened.minimumSizeHint(), QSize(460, 520));
    EXPECT_GT(opened.maximumWidth(), 10000);
}

TEST_F(SettingsViewTest, ItOpensOnLayoutsEachTimeInTheSameWindow) {
    open({});
    QWidget* const first = window->window();
    click(view().generalChip());
    EXPECT_EQ(settings->tab(), SettingsTab::general);
    window->window()->close();
    EXPECT_FALSE(first->isVisible());
    window->open();
    EXPECT_EQ(window->window(), first);
    EXPECT_TRUE(first->isVisible());
    EXPECT_EQ(settings->tab(), SettingsTab::layouts);
    EXPECT_TRUE(tab().isVisible());
    EXPECT_EQ(workspace.broughtToFront, std::vector<QWidget*>({first, first}));
}

TEST_F(SettingsViewTest, OpeningAgainWhileOpenGoesBackToLayouts) {
    openGeneral();
    window->open();
    EXPECT_TRUE(tab().isVisible());
    EXPECT_TRUE(view().layoutsChip().isSelected());
}

TEST_F(SettingsViewTest, OpeningReadsTheSourcesAndTheLoginItemAfresh) {
    open({});
    service.records = {layout("z", "Omega")};
    loginItem.enabled = true;
    window->open();
    EXPECT_EQ(model->available(), std::vector<SourceInfo>({{"z", "Omega", ""}}));
    EXPECT_TRUE(settings->launchAtLogin());
    EXPECT_TRUE(general().loginSwitch().isChecked());
    EXPECT_EQ(writes(), 0);
}

TEST_F(SettingsViewTest, ClosingTellsTheOwnerEachTime) {
    open({});
    window->window()->close();
    EXPECT_EQ(closings, 1);
    window->open();
    window->window()->close();
    EXPECT_EQ(closings, 2);
}

TEST_F(SettingsViewTest, TheChipsShowAndChooseTheTab) {
    open({});
    EXPECT_EQ(view().layoutsChip().title(), "Layouts");
    EXPECT_EQ(view().generalChip().title(), "General");
    EXPECT_TRUE(view().layoutsChip().isSelected());
    click(view().generalChip());
    EXPECT_FALSE(view().layoutsChip().isSelected());
    EXPECT_TRUE(view().generalChip().isSelected());
    EXPECT_TRUE(general().isVisible());
    EXPECT_FALSE(tab().isVisible());
    click(view().layoutsChip());
    EXPECT_TRUE(tab().isVisible());
}

TEST_F(SettingsViewTest, WithoutALoginServiceTheToggleIsDisabledOffAndExplained) {
    loginItem.available = false;
    loginItem.enabled = true;
    openGeneral();
    EXPECT_FALSE(general().loginSwitch().isEnabled());
    EXPECT_FALSE(general().loginSwitch().isChecked());
    ASSERT_NE(general().loginNote(), nullptr);
    EXPECT_EQ(general().loginNote()->text(), "Needs macOS 13 or later");
    EXPECT_TRUE(general().loginNote()->isVisible());
    EXPECT_GT(general().loginNote()->y(), general().loginSwitch().y());
}

TEST_F(SettingsViewTest, WithALoginServiceThereIsNoNote) {
    openGeneral();
    EXPECT_EQ(general().loginSwitch().title(), "Launch at login");
    EXPECT_TRUE(general().loginSwitch().isEnabled());
    EXPECT_EQ(general().loginNote(), nullptr);
}

TEST_F(SettingsViewTest, ARefusedLoginItemSnapsTheToggleBackWithABeep) {
    loginItem.refuses = true;
    openGeneral();
    click(general().loginSwitch());
    EXPECT_EQ(loginItem.requested, std::vector<bool>({true}));
    EXPECT_EQ(workspace.beeps, 1);
    EXPECT_FALSE(general().loginSwitch().isChecked());
}

TEST_F(SettingsViewTest, AnAcceptedLoginItemStaysOn) {
    openGeneral();
    click(general().loginSwitch());
    EXPECT_TRUE(general().loginSwitch().isChecked());
    EXPECT_TRUE(loginItem.enabled);
    EXPECT_EQ(workspace.beeps, 0);
}

TEST_F(SettingsViewTest, WithoutAFeedThePlateSectionFollowsTheLoginCard) {
    updatesEnabled = false;
    openGeneral();
    EXPECT_EQ(general().updatesCard(), nullptr);
    const QWidget* const loginCard = general().loginSwitch().parentWidget();
    EXPECT_EQ(general().plateSection().y(), loginCard->geometry().bottom() + 1 + 12);
}

TEST_F(SettingsViewTest, WithAFeedTheUpdatesCardLiesBetweenThem) {
    openGeneral();
    ASSERT_NE(general().updatesCard(), nullptr);
    EXPECT_EQ(general().checkButton()->title(), "Check for Updates…");
    EXPECT_EQ(general().updatesSwitch()->title(), "Check for updates automatically");
    EXPECT_GT(general().updatesCard()->y(), general().loginSwitch().parentWidget()->y());
    EXPECT_LT(general().updatesCard()->y(), general().plateSection().y());
}

TEST_F(SettingsViewTest, AutomaticUpdatesAreStoredAtOnce) {
    openGeneral();
    EXPECT_TRUE(general().updatesSwitch()->isChecked());
    click(*general().updatesSwitch());
    EXPECT_FALSE(updateStore.automatic());
    EXPECT_FALSE(general().updatesSwitch()->isChecked());
    EXPECT_EQ(writes(), 0);
}

TEST_F(SettingsViewTest, TheCheckButtonRunsTheCheck) {
    openGeneral();
    int checks = 0;
    click(*general().checkButton());
    settings->checkForUpdates = [&] { ++checks; };
    click(*general().checkButton());
    EXPECT_EQ(checks, 1);
}

TEST_F(SettingsViewTest, TheContentKeepsItsDistances) {
    open({group({"a"})});
    settle();
    EXPECT_EQ(view().layoutsChip().pos(), QPoint(20, 20));
    EXPECT_EQ(view().generalChip().x(), view().layoutsChip().geometry().right() + 1 + 8);
    EXPECT_EQ(tab().mapTo(&view(), QPoint()).y(), view().layoutsChip().geometry().bottom() + 1 + 16);
    EXPECT_EQ(view().width() - tab().geometry().right() - 1, 20);
    EXPECT_EQ(view().height() - tab().geometry().bottom() - 1, 20);
    EXPECT_EQ(card(0).recorder().pos(), QPoint(14, 14));
}

TEST_F(SettingsViewTest, EverythingOfTheSmallestWindowFitsWithoutScrollingSideways) {
    open({group({"a", "b"}, controlOptionK)});
    for (const SettingsTab shown : {SettingsTab::layouts, SettingsTab::general}) {
        settings->setTab(shown);
        settle();
        EXPECT_EQ(window->window()->size(), QSize(460, 520));
        for (QWidget* const widget : view().findChildren<QWidget*>()) {
            if (!widget->isVisible() || !dynamic_cast<ChipButton*>(widget)) continue;
            EXPECT_GE(widget->width(), widget->sizeHint().width());
            EXPECT_LE(widget->mapTo(&view(), widget->rect().bottomRight()).x(), 440);
        }
    }
}

TEST_F(SettingsViewTest, ColoursFollowDarkAndLightWhileOpen) {
    open({group({"a"})});
    const auto pixel = [this](const QPoint& at) { return view().grab().toImage().pixelColor(at); };
    const QPoint inWindow(5, 5);
    const QPoint inCard = card(0).mapTo(&view(), QPoint(8, card(0).height() / 2));
    EXPECT_EQ(pixel(inWindow), QColor(255, 255, 255));
    EXPECT_EQ(pixel(inCard), QColor(248, 247, 244));
    Palette::setDark(true);
    EXPECT_EQ(pixel(inWindow), QColor(27, 29, 34));
    EXPECT_EQ(pixel(inCard), QColor(38, 40, 45));
}

TEST_F(SettingsViewTest, TabWalksThroughTheGeneralTabInReadingOrder) {
    openGeneral();
    QStringList walked;
    view().setFocus();
    for (int i = 0; i < 9; ++i) {
        press(Qt::Key_Tab);
        walked += view().focusWidget()->accessibleName();
    }
    EXPECT_EQ(walked.join('|').toStdString(),
              "Layouts|General|Launch at login|Check for updates automatically|Check for Updates…|Show the plate|Solid|"
              "Background opacity|Preview");
}

TEST_F(SettingsViewTest, AtTheOpeningNoControlHasTheFocusYet) {
    open({group({"a"})});
    EXPECT_EQ(window->window()->focusWidget(), window->view());
    press(Qt::Key_Tab);
    EXPECT_EQ(view().focusWidget(), &view().layoutsChip());
}

}  // namespace
}  // namespace quillmere
