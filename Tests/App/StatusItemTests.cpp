#include "Quillmere/Menu/StatusItem.h"

#include "Quillmere/Palette.h"
#include "Tests/Support/FakeAppearance.h"
#include "Tests/Support/FakeInputSourceService.h"
#include "Tests/Support/FakeTrayHost.h"
#include "Tests/Support/MemoryDefaults.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QImage>
#include <QSystemTrayIcon>
#include <QTest>

#include <memory>
#include <string>
#include <vector>

namespace quillmere {
namespace {

class StatusItemTest : public testing::Test {
protected:
    std::unique_ptr<StatusItem> makeItem() {
        return std::make_unique<StatusItem>(model, appearance, trayHost,
                                            StatusItem::Actions{
                                                .toggleActive = [this] { setActive(!model.config().active); },
                                                .openSettings = [this] { done.emplace_back("settings"); },
                                                .quit = [this] { done.emplace_back("quit"); },
                                            });
    }

    void setActive(bool active) {
        Config config = model.config();
        config.active = active;
        model.setConfig(config);
    }

    static QAction& activeItem(StatusItem& item) { return *item.menu().actions().front(); }

    /// The strongest pixel of the icon.
    static QColor ink(const StatusItem& item) {
        const auto image = item.trayIcon()->icon().pixmap(QSize(64, 64), 1.0).toImage();
        QColor strongest(0, 0, 0, 0);
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const QColor color = image.pixelColor(x, y);
                if (color.alpha() > strongest.alpha()) strongest = color;
            }
        }
        return strongest;
    }

    MemoryDefaults defaults;
    FakeInputSourceService service;
    ConfigModel model{defaults, InputSources(service)};
    FakeAppearance appearance;
    FakeTrayHost trayHost;
    std::vector<std::string> done;
};

TEST_F(StatusItemTest, TheMenuHasItsFourEntriesInOrder) {
    const auto item = makeItem();
    const auto actions = item->menu().actions();
    ASSERT_EQ(actions.size(), 4);
    EXPECT_EQ(actions[0]->text(), "Active");
    EXPECT_TRUE(actions[0]->isCheckable());
    EXPECT_TRUE(actions[0]->shortcut().isEmpty());
    EXPECT_EQ(actions[1]->text(), "Settings\u2026");
    EXPECT_EQ(actions[1]->shortcut(), QKeySequence("Ctrl+,"));
    EXPECT_TRUE(actions[2]->isSeparator());
    EXPECT_EQ(actions[3]->text(), "Quit Quillmere");
    EXPECT_EQ(actions[3]->shortcut(), QKeySequence("Ctrl+Q"));
}

TEST_F(StatusItemTest, TheMenuCanBeShownWhereThereIsNoTray) {
    const auto item = makeItem();
    EXPECT_EQ(trayHost.shownMenu, &item->menu());
    EXPECT_TRUE(trayHost.shownActive);
    setActive(false);
    EXPECT_FALSE(trayHost.shownActive);
    EXPECT_EQ(item->trayIcon(), nullptr);
}

TEST_F(StatusItemTest, EachEntryDoesItsWork) {
    const auto item = makeItem();
    const auto actions = item->menu().actions();
    actions[1]->trigger();
    actions[3]->trigger();
    EXPECT_EQ(done, (std::vector<std::string>{"settings", "quit"}));
}

TEST_F(StatusItemTest, TheKeyEquivalentsActInTheOpenMenuAndCloseIt) {
    const auto item = makeItem();
    for (const Qt::Key key : {Qt::Key_Comma, Qt::Key_Q}) {
        item->menu().popup(QPoint());
        ASSERT_TRUE(item->menu().isVisible());
        QTest::keyClick(&item->menu(), key, Qt::ControlModifier);
        EXPECT_FALSE(item->menu().isVisible());
    }
    EXPECT_EQ(done, (std::vector<std::string>{"settings", "quit"}));
}

TEST_F(StatusItemTest, TogglingTwiceComesBackAndStoresBothTimes) {
    const auto item = makeItem();
    const Config before = model.config();
    activeItem(*item).trigger();
    EXPECT_FALSE(model.config().active);
    EXPECT_EQ(defaults.writes("config"), 1);
    activeItem(*item).trigger();
    EXPECT_EQ(model.config(), before);
    EXPECT_EQ(defaults.writes("config"), 2);
}

TEST_F(StatusItemTest, TheCheckMarkIsRefreshedWhenTheMenuOpensAndOnlyThen) {
    const auto item = makeItem();
    emit item->menu().aboutToShow();
    EXPECT_TRUE(activeItem(*item).isChecked());
    setActive(false);
    EXPECT_TRUE(activeItem(*item).isChecked());
    emit item->menu().aboutToShow();
    EXPECT_FALSE(activeItem(*item).isChecked());
    setActive(true);
    emit item->menu().aboutToShow();
    EXPECT_TRUE(activeItem(*item).isChecked());
}

TEST_F(StatusItemTest, TheIconWaitsForATray) {
    const auto item = makeItem();
    EXPECT_EQ(item->trayIcon(), nullptr);
    trayHost.comeUp();
    ASSERT_NE(item->trayIcon(), nullptr);
    EXPECT_TRUE(item->trayIcon()->isVisible());
    EXPECT_EQ(item->trayIcon()->contextMenu(), &item->menu());
    EXPECT_EQ(item->trayIcon()->toolTip(), "Quillmere");
}

TEST_F(StatusItemTest, TheIconIsThereAtOnceWhereTheTrayIs) {
    trayHost.comeUp();
    EXPECT_NE(makeItem()->trayIcon(), nullptr);
}

TEST_F(StatusItemTest, TheIconIsDimmedWhileInactive) {
    trayHost.comeUp();
    const auto item = makeItem();
    EXPECT_EQ(ink(*item).alpha(), 255);
    setActive(false);
    EXPECT_LT(ink(*item).alpha(), 140);
    setActive(true);
    EXPECT_EQ(ink(*item).alpha(), 255);
}

TEST_F(StatusItemTest, AnInactiveStartAndALateTrayGiveADimmedIcon) {
    setActive(false);
    const auto item = makeItem();
    trayHost.comeUp();
    EXPECT_LT(ink(*item).alpha(), 140);
}

TEST_F(StatusItemTest, TheIconIsDarkOnLightDesktopsAndLightOnDarkOnes) {
    trayHost.comeUp();
    const auto item = makeItem();
    EXPECT_LT(ink(*item).lightness(), 60);
    appearance.setDark(true);
    EXPECT_GT(ink(*item).lightness(), 195);
    appearance.setDark(false);
    EXPECT_LT(ink(*item).lightness(), 60);
}

TEST_F(StatusItemTest, TheMenuOpensInTheColorsOfTheMoment) {
    const auto item = makeItem();
    emit item->menu().aboutToShow();
    EXPECT_GT(item->menu().palette().color(QPalette::Window).lightness(), 195);
    Palette::setDark(true);
    emit item->menu().aboutToShow();
    EXPECT_LT(item->menu().palette().color(QPalette::Window).lightness(), 60);
    Palette::setDark(false);
}

TEST_F(StatusItemTest, ALeftClickOpensTheMenu) {
    trayHost.comeUp();
    const auto item = makeItem();
    ASSERT_FALSE(item->menu().isVisible());
    setActive(false);
    QMetaObject::invokeMethod(const_cast<QSystemTrayIcon*>(item->trayIcon()), "activated",
                              Q_ARG(QSystemTrayIcon::ActivationReason, QSystemTrayIcon::Trigger));
    EXPECT_TRUE(item->menu().isVisible());
    EXPECT_FALSE(activeItem(*item).isChecked());
    item->menu().close();
}

TEST_F(StatusItemTest, AMenuBarOpensTheMenuAndTintsTheIconItself) {
    trayHost.menuBar = true;
    trayHost.comeUp();
    appearance.setDark(true);
    const auto item = makeItem();
    EXPECT_TRUE(item->trayIcon()->icon().isMask());
    EXPECT_EQ(ink(*item), QColor(0, 0, 0, 255));
    QMetaObject::invokeMethod(const_cast<QSystemTrayIcon*>(item->trayIcon()), "activated",
                              Q_ARG(QSystemTrayIcon::ActivationReason, QSystemTrayIcon::Trigger));
    EXPECT_FALSE(item->menu().isVisible()) << "it would be open twice";
    setActive(false);
    EXPECT_LT(ink(*item).alpha(), 140);
    EXPECT_TRUE(item->trayIcon()->icon().isMask());
}

TEST_F(StatusItemTest, NoEntryIsOneThatTheSystemWouldTakeOutOfTheMenu) {
    const auto item = makeItem();
    const auto actions = item->menu().actions();
    EXPECT_EQ(actions[1]->menuRole(), QAction::NoRole);
    EXPECT_EQ(actions[3]->menuRole(), QAction::NoRole);
}

}  // namespace
}  // namespace quillmere
