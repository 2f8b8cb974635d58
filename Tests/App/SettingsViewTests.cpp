#include "Quillmere/Controls/ChipButtonStyle.h"
#include "Tests/App/SettingsFixture.h"
#include "Tests/Support/FakeOffer.h"

#include <QImage>

namespace quillmere {
namespace {

class SettingsViewTest : public SettingsTest {
protected:
    void openGeneral() {
        open({});
        click(button("General"));
    }
    bool showsLayouts() const { return button("Layouts").isVisible() && isShown("Add group"); }
    bool showsGeneral() const { return isShown("Launch at login"); }
    bool isShown(const QString& name) const {
        return std::ranges::any_of(shown<QAbstractButton>(view()),
                                   [&](const QAbstractButton* button) { return button->accessibleName() == name; });
    }
    /// Whether the chip is outlined in the accent colour.
    bool isSelected(const QString& chip) const {
        const QImage image = button(chip).grab().toImage();
        return isSame(image.pixelColor(image.width() / 2, 0), Palette::accent().resolved(Palette::isDark()));
    }
    /// Where it lies in the window.
    QRect frame(const QWidget& widget) const { return {widget.mapTo(&view(), QPoint()), widget.size()}; }
    QRect cardAround(const QWidget& content) const { return frame(*content.parentWidget()); }
    static int gap(const QRect& upper, const QRect& lower) { return lower.top() - upper.bottom() - 1; }
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
    click(button("General"));
    EXPECT_EQ(settings->tab(), SettingsTab::general);
    window->window()->close();
    EXPECT_FALSE(first->isVisible());
    window->open();
    EXPECT_EQ(window->window(), first);
    EXPECT_TRUE(first->isVisible());
    EXPECT_EQ(settings->tab(), SettingsTab::layouts);
    EXPECT_TRUE(showsLayouts());
    EXPECT_EQ(workspace.broughtToFront, std::vector<QWidget*>({first, first}));
    EXPECT_EQ(workspace.blended, std::vector<QWidget*>{first});
}

TEST_F(SettingsViewTest, OpeningAgainWhileOpenGoesBackToLayouts) {
    openGeneral();
    window->open();
    EXPECT_TRUE(showsLayouts());
    EXPECT_TRUE(isSelected("Layouts"));
}

TEST_F(SettingsViewTest, OpeningReadsTheSourcesAndTheLoginItemAfresh) {
    open({});
    service.records = {layout("z", "Omega")};
    loginItem.enabled = true;
    window->open();
    EXPECT_EQ(model->available(), std::vector<SourceInfo>({{"z", "Omega", ""}}));
    EXPECT_TRUE(settings->launchAtLogin());
    showTab(SettingsTab::general);
    EXPECT_TRUE(button("Launch at login").isChecked());
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
    EXPECT_TRUE(isSelected("Layouts"));
    click(button("General"));
    EXPECT_FALSE(isSelected("Layouts"));
    EXPECT_TRUE(isSelected("General"));
    EXPECT_TRUE(showsGeneral());
    EXPECT_FALSE(showsLayouts());
    click(button("Layouts"));
    EXPECT_TRUE(showsLayouts());
}

TEST_F(SettingsViewTest, WithoutALoginServiceTheToggleIsDisabledOffAndExplained) {
    loginItem.available = false;
    loginItem.enabled = true;
    openGeneral();
    EXPECT_FALSE(button("Launch at login").isEnabled());
    EXPECT_FALSE(button("Launch at login").isChecked());
    QLabel& note = label(view(), "Needs a newer system");
    EXPECT_EQ(gap(frame(button("Launch at login")), frame(note)), 6);
    EXPECT_EQ(note.font().pixelSize(), 11);
    EXPECT_TRUE(isSame(ink(note), Palette::muted().light));
}

TEST_F(SettingsViewTest, WithALoginServiceThereIsNoNote) {
    openGeneral();
    EXPECT_EQ(button("Launch at login").text(), "Launch at login");
    EXPECT_TRUE(button("Launch at login").isEnabled());
    EXPECT_FALSE(texts(view()).contains("Needs a newer system"));
}

TEST_F(SettingsViewTest, ARefusedLoginItemSnapsTheToggleBackWithABeep) {
    loginItem.refuses = true;
    openGeneral();
    click(button("Launch at login"));
    EXPECT_EQ(loginItem.requested, std::vector<bool>({true}));
    EXPECT_EQ(workspace.beeps, 1);
    EXPECT_FALSE(button("Launch at login").isChecked());
}

TEST_F(SettingsViewTest, AnAcceptedLoginItemStaysOn) {
    openGeneral();
    click(button("Launch at login"));
    EXPECT_TRUE(button("Launch at login").isChecked());
    EXPECT_TRUE(loginItem.enabled);
    EXPECT_EQ(workspace.beeps, 0);
}

TEST_F(SettingsViewTest, WithoutAFeedThePlateSectionFollowsTheLoginCard) {
    updatesEnabled = false;
    openGeneral();
    EXPECT_FALSE(texts(view()).contains("Updates"));
    EXPECT_FALSE(isShown("Check for Updates…"));
    EXPECT_EQ(gap(cardAround(button("Launch at login")), cardAround(label(view(), "Switcher plate"))), 12);
}

TEST_F(SettingsViewTest, WithAFeedTheUpdatesCardLiesBetweenThem) {
    openGeneral();
    const QRect title = frame(label(view(), "Updates"));
    const QRect automatic = frame(button("Check for updates automatically"));
    const QRect check = frame(button("Check for Updates…"));
    EXPECT_EQ(label(view(), "Updates").font().weight(), QFont::DemiBold);
    EXPECT_EQ(gap(title, automatic), 10);
    EXPECT_EQ(gap(automatic, check), 10);
    EXPECT_EQ(check.left(), title.left());
    const QRect updates = cardAround(label(view(), "Updates"));
    EXPECT_EQ(gap(cardAround(button("Launch at login")), updates), 12);
    EXPECT_EQ(gap(updates, cardAround(label(view(), "Switcher plate"))), 12);
}

TEST_F(SettingsViewTest, TheCardsOfTheGeneralTabHugTheirContentInTheMiddle) {
    openGeneral();
    const QRect login = cardAround(button("Launch at login"));
    EXPECT_EQ(login.size(), button("Launch at login").size() + QSize(28, 28));
    EXPECT_LE(std::abs(login.center().x() - view().width() / 2), 1);
    const QRect updates = cardAround(label(view(), "Updates"));
    EXPECT_EQ(updates.width(), button("Check for updates automatically").width() + 28);
    EXPECT_LE(std::abs(updates.center().x() - view().width() / 2), 1);
}

TEST_F(SettingsViewTest, WhatTheSystemOffersIsAMutedLineWithAButtonAsLongAsItIsOpen) {
    auto owned = std::make_unique<FakeOffer>();
    FakeOffer& offer = *owned;
    offers.push_back(std::move(owned));
    openGeneral();
    QLabel& line = label(view(), offer.text());
    EXPECT_EQ(line.font().pixelSize(), 11);
    EXPECT_TRUE(isSame(ink(line), Palette::muted().light));
    EXPECT_EQ(gap(frame(line), frame(button(offer.action()))), 10);
    click(button(offer.action()));
    EXPECT_EQ(offer.accepted, 1);
    offer.setOpen(false);
    settle();
    EXPECT_FALSE(texts(view()).contains(offer.text()));
    EXPECT_FALSE(isShown(offer.action()));
    offer.open = true;
    openGeneral();
    EXPECT_TRUE(isShown(offer.action())) << "each opening looks anew";
}

TEST_F(SettingsViewTest, AutomaticUpdatesAreStoredAtOnce) {
    openGeneral();
    EXPECT_TRUE(button("Check for updates automatically").isChecked());
    click(button("Check for updates automatically"));
    EXPECT_FALSE(updateStore.automatic());
    EXPECT_FALSE(button("Check for updates automatically").isChecked());
    EXPECT_EQ(writes(), 0);
}

TEST_F(SettingsViewTest, TheCheckButtonRunsTheCheck) {
    openGeneral();
    int checks = 0;
    click(button("Check for Updates…"));
    settings->checkForUpdates = [&] { ++checks; };
    click(button("Check for Updates…"));
    EXPECT_EQ(checks, 1);
}

TEST_F(SettingsViewTest, TheContentKeepsItsDistances) {
    open({group({"a"})});
    settle();
    EXPECT_EQ(button("Layouts").pos(), QPoint(20, 20));
    EXPECT_EQ(button("General").x(), button("Layouts").geometry().right() + 1 + 8);
    EXPECT_EQ(gap(frame(button("Layouts")), frame(button("Active"))), 16);
    EXPECT_EQ(view().width() - frame(card(0)).right() - 1, 20);
    EXPECT_EQ(view().height() - frame(button("Add group")).bottom() - 1, 20);
    EXPECT_EQ(recorder(0).mapTo(&card(0), QPoint()), QPoint(14, 14));
    showTab(SettingsTab::general);
    EXPECT_EQ(cardAround(label(view(), "Switcher plate")).left(), 20);
}

TEST_F(SettingsViewTest, EverythingOfTheSmallestWindowFitsWithoutScrollingSideways) {
    open({group({"a", "b"}, controlOptionK)});
    for (const SettingsTab tab : {SettingsTab::layouts, SettingsTab::general}) {
        showTab(tab);
        EXPECT_EQ(window->window()->size(), QSize(460, 520));
        for (const ChipButton* const chip : shown<ChipButton>(view())) {
            EXPECT_GE(chip->width(), chip->sizeHint().width());
            EXPECT_LE(frame(*chip).right(), 440);
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
    EXPECT_EQ(window->window()->focusWidget(), view().focusProxy());
    press(Qt::Key_Tab);
    EXPECT_EQ(view().focusWidget(), &button("Layouts"));
}

}  // namespace
}  // namespace quillmere
