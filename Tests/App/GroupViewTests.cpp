#include "Quillmere/Controls/ChipButtonStyle.h"
#include "Quillmere/Controls/IconButton.h"
#include "Quillmere/Controls/MenuButton.h"
#include "Quillmere/Controls/PaletteLabel.h"
#include "Quillmere/Controls/PaletteScrollArea.h"
#include "Quillmere/Controls/SwitchControl.h"
#include "Quillmere/Settings/ShortcutChip.h"
#include "Quillmere/Settings/ShortcutRecorder.h"
#include "Quillmere/Settings/SourceRow.h"
#include "Tests/App/SettingsFixture.h"

#include <QAccessible>
#include <QEvent>
#include <QMenu>
#include <QScrollBar>

#include <algorithm>
#include <functional>
#include <set>

namespace quillmere {
namespace {

using Sources = std::vector<std::string>;

class GroupViewTest : public SettingsTest {
protected:
    SourceRow& row(std::size_t cardIndex, std::size_t index) const { return *card(cardIndex).rows().at(index); }
    QStringList names(std::size_t cardIndex) const {
        QStringList names;
        for (const SourceRow* const row : card(cardIndex).rows())
            names += row->position().text() + " " + row->name().text();
        return names;
    }
    /// Opens the menu of sources with a click, and answers it.
    QMenu* openMenu(std::size_t cardIndex) const {
        click(card(cardIndex).addButton());
        return card(cardIndex).addButton().findChild<QMenu*>();
    }
    QStringList menuTitles(std::size_t cardIndex) const {
        QMenu* const menu = openMenu(cardIndex);
        QStringList titles;
        if (!menu) return titles;
        for (const QAction* const action : menu->actions())
            titles += action->text();
        menu->close();
        return titles;
    }
    void choose(std::size_t cardIndex, int index) const {
        QMenu* const menu = openMenu(cardIndex);
        ASSERT_NE(menu, nullptr);
        menu->setActiveAction(menu->actions().at(index));
        QTest::keyClick(menu, Qt::Key_Return);
        settle();
    }
};

TEST_F(GroupViewTest, WithNoGroupsTheTabShowsOnlyTheToggleAndAddGroup) {
    open({});
    EXPECT_TRUE(tab().activeSwitch().isVisible());
    EXPECT_EQ(tab().activeSwitch().title(), "Active");
    EXPECT_TRUE(tab().addGroupButton().isVisible());
    EXPECT_EQ(tab().addGroupButton().title(), "Add group");
    EXPECT_TRUE(tab().cards().empty());
}

TEST_F(GroupViewTest, ACardListsTheSourcesByTheirPlaceAndName) {
    open({group({"c", "a"}), group({})});
    EXPECT_EQ(names(0), QStringList({"1 Gamma", "2 Alpha"}));
    EXPECT_TRUE(card(1).rows().empty());
    EXPECT_EQ(card(0).addButton().title(), "Add source ▾");
}

TEST_F(GroupViewTest, AGroupWithOneSourceHasBothArrowsDisabled) {
    open({group({"a"})});
    EXPECT_FALSE(row(0, 0).up().isEnabled());
    EXPECT_FALSE(row(0, 0).down().isEnabled());
    EXPECT_TRUE(row(0, 0).remove().isEnabled());
}

TEST_F(GroupViewTest, TheFirstCannotMoveUpNorTheLastDown) {
    open({group({"a", "b", "c"})});
    EXPECT_FALSE(row(0, 0).up().isEnabled());
    EXPECT_TRUE(row(0, 0).down().isEnabled());
    EXPECT_TRUE(row(0, 1).up().isEnabled());
    EXPECT_TRUE(row(0, 1).down().isEnabled());
    EXPECT_TRUE(row(0, 2).up().isEnabled());
    EXPECT_FALSE(row(0, 2).down().isEnabled());
    click(row(0, 2).remove());
    EXPECT_FALSE(row(0, 1).down().isEnabled());
    choose(0, 0);
    EXPECT_TRUE(row(0, 1).down().isEnabled());
}

TEST_F(GroupViewTest, WithEveryAvailableSourceInTheGroupAddSourceIsDisabled) {
    open({group({"d", "c", "b", "a"})});
    EXPECT_FALSE(card(0).addButton().isEnabled());
    click(row(0, 0).remove());
    EXPECT_TRUE(card(0).addButton().isEnabled());
}

TEST_F(GroupViewTest, RemovingAGroupWhileItsShortcutIsRecordedEndsTheRecording) {
    open({group({}), group({})});
    click(card(1).recorder().button());
    ASSERT_TRUE(model->recorder());
    click(card(1).deleteButton());
    EXPECT_FALSE(model->recorder());
    EXPECT_EQ(model->recordingGroup(), std::nullopt);
    EXPECT_EQ(groups().size(), 1U);
}

TEST_F(GroupViewTest, AHandlerThatOutlivesItsRecorderDoesNothing) {
    open({group({})});
    click(card(0).recorder().button());
    const ShortcutHandler handler = model->recorder();
    click(card(0).deleteButton());
    settle();
    handler(controlOptionK.keyCode, controlOptionK.modifiers);
    EXPECT_TRUE(groups().empty());
    EXPECT_EQ(writes(), 1);
}

TEST_F(GroupViewTest, AnUnknownSourceIsShownAsItsIdentifierAndCanBeMovedAndRemoved) {
    open({group({"a", "gone:one"})});
    EXPECT_EQ(names(0), QStringList({"1 Alpha", "2 gone:one"}));
    click(row(0, 1).up());
    EXPECT_EQ(groups()[0].sourceIDs, Sources({"gone:one", "a"}));
    click(row(0, 0).remove());
    EXPECT_EQ(groups()[0].sourceIDs, Sources({"a"}));
    EXPECT_EQ(menuTitles(0), QStringList({"Beta", "Gamma", "Delta"}));
}

TEST_F(GroupViewTest, EachActionIsOneWrite) {
    struct Case {
        const char* name;
        std::function<void()> act;
        std::vector<Sources> expected;
    };
    const std::vector<Case> cases{
        {"up", [this] { click(row(0, 2).up()); }, {{"a", "c", "b"}, {}}},
        {"down", [this] { click(row(0, 0).down()); }, {{"b", "a", "c"}, {}}},
        {"remove", [this] { click(row(0, 1).remove()); }, {{"a", "c"}, {}}},
        {"add to the first", [this] { choose(0, 0); }, {{"a", "b", "c", "d"}, {}}},
        {"add to the second", [this] { choose(1, 2); }, {{"a", "b", "c"}, {"c"}}},
        {"add group", [this] { click(tab().addGroupButton()); }, {{"a", "b", "c"}, {}, {}}},
        {"delete", [this] { click(card(0).deleteButton()); }, {{}}},
    };
    for (const Case& testCase : cases) {
        SCOPED_TRACE(testCase.name);
        open({group({"a", "b", "c"}), group({})});
        testCase.act();
        EXPECT_EQ(writes(), 1);
        std::vector<Sources> sources;
        for (const CycleGroup& group : stored().groups)
            sources.push_back(group.sourceIDs);
        EXPECT_EQ(sources, testCase.expected);
    }
}

TEST_F(GroupViewTest, TheToggleFlipsActiveWithOneWrite) {
    open({});
    EXPECT_TRUE(tab().activeSwitch().isChecked());
    click(tab().activeSwitch());
    EXPECT_FALSE(stored().active);
    EXPECT_EQ(writes(), 1);
    click(tab().activeSwitch());
    EXPECT_TRUE(stored().active);
    EXPECT_EQ(writes(), 2);
}

TEST_F(GroupViewTest, TheToggleFollowsAChangeMadeElsewhere) {
    open({});
    Config config = model->config();
    config.active = false;
    model->setConfig(config);
    EXPECT_FALSE(tab().activeSwitch().isChecked());
}

TEST_F(GroupViewTest, ANewGroupIsEmptyWithAFreshIdentifierAndNoShortcut) {
    open({group({"a"})});
    click(tab().addGroupButton());
    click(tab().addGroupButton());
    ASSERT_EQ(groups().size(), 3U);
    EXPECT_NE(groups()[1].id, groups()[2].id);
    EXPECT_EQ(groups()[2].shortcut, std::nullopt);
    EXPECT_TRUE(groups()[2].sourceIDs.empty());
}

TEST_F(GroupViewTest, TheMenuOffersWhatTheGroupLacksInTheSystemsOrder) {
    open({group({"c"}), group({"a"})});
    EXPECT_EQ(menuTitles(0), QStringList({"Alpha", "Beta", "Delta"}));
    EXPECT_EQ(menuTitles(1), QStringList({"Beta", "Gamma", "Delta"}));
}

TEST_F(GroupViewTest, TheMenuShowsAnAmpersandAsItIs) {
    service.records = {layout("a", "Ups & Downs")};
    open({group({})});
    EXPECT_EQ(menuTitles(0), QStringList({"Ups && Downs"}));
    choose(0, 0);
    EXPECT_EQ(row(0, 0).remove().accessibleName(), "Remove Ups & Downs");
}

TEST_F(GroupViewTest, SourcesEnabledMeanwhileAreOfferedAfterReopening) {
    open({group({"a", "b", "c", "d"})});
    service.records.push_back(layout("e", "Epsilon"));
    EXPECT_FALSE(card(0).addButton().isEnabled());
    window->open();
    EXPECT_EQ(menuTitles(0), QStringList({"Epsilon"}));
}

TEST_F(GroupViewTest, ANewNameOfASourceIsShown) {
    open({group({"a"})});
    model->setAvailable({{"a", "Aleph", "he"}});
    EXPECT_EQ(names(0), QStringList({"1 Aleph"}));
    EXPECT_EQ(row(0, 0).remove().accessibleName(), "Remove Aleph");
}

TEST_F(GroupViewTest, CardsKeepTheirIdentityWhenOthersComeAndGo) {
    open({group({"a"}), group({"b"}), group({"c"})});
    const GroupView* const second = &card(1);
    const GroupView* const third = &card(2);
    click(card(0).deleteButton());
    EXPECT_EQ(&card(0), second);
    EXPECT_EQ(&card(1), third);
    click(tab().addGroupButton());
    EXPECT_EQ(&card(1), third);
    EXPECT_EQ(tab().cards().size(), 3U);
}

TEST_F(GroupViewTest, CardsFollowTheOrderOfTheGroups) {
    open({group({"a"}), group({"b"})});
    settle();
    const GroupView* const first = &card(0);
    Config config = model->config();
    std::swap(config.groups[0], config.groups[1]);
    model->setConfig(config);
    settle();
    EXPECT_EQ(&card(1), first);
    EXPECT_LT(card(0).y(), card(1).y());
    EXPECT_EQ(card(1).deleteButton().accessibleName(), "Delete group 2");
}

TEST_F(GroupViewTest, GroupsThatShareAnIdentifierAreShownAndRemovedTogether) {
    CycleGroup twin = group({"a"});
    CycleGroup other = twin;
    other.sourceIDs = {"b"};
    open({twin, other, group({"c"})});
    ASSERT_EQ(tab().cards().size(), 3U);
    EXPECT_EQ(names(1), QStringList({"1 Beta"}));
    click(card(1).deleteButton());
    EXPECT_EQ(stored().groups.size(), 1U);
    EXPECT_EQ(tab().cards().size(), 1U);
}

TEST_F(GroupViewTest, ASourceListedTwiceIsShownTwice) {
    open({group({"a", "b", "a"})});
    EXPECT_EQ(names(0), QStringList({"1 Alpha", "2 Beta", "3 Alpha"}));
    click(row(0, 2).remove());
    EXPECT_EQ(groups()[0].sourceIDs, Sources({"a", "b"}));
}

TEST_F(GroupViewTest, EveryControlSaysWhatItDoes) {
    open({group({"b", "a"}), group({})});
    EXPECT_EQ(row(0, 0).up().accessibleName(), "Move Beta up");
    EXPECT_EQ(row(0, 0).down().accessibleName(), "Move Beta down");
    EXPECT_EQ(row(0, 0).remove().accessibleName(), "Remove Beta");
    EXPECT_EQ(card(1).deleteButton().accessibleName(), "Delete group 2");
    EXPECT_EQ(card(1).addButton().accessibleName(), "Add source to group 2");
    const auto role = [](QWidget& widget) { return QAccessible::queryAccessibleInterface(&widget)->role(); };
    EXPECT_EQ(role(row(0, 0).up()), QAccessible::Button);
    EXPECT_EQ(role(card(0).addButton()), QAccessible::ButtonMenu);
    EXPECT_EQ(role(tab().activeSwitch()), QAccessible::CheckBox);
    EXPECT_EQ(role(row(0, 0).name()), QAccessible::StaticText);
}

TEST_F(GroupViewTest, TabWalksThroughEverythingInReadingOrder) {
    open({group({"a", "b"})});
    click(tab().addGroupButton());
    choose(0, 0);
    const std::vector<QWidget*> expected{&view().layoutsChip(),   &view().generalChip(),
                                         &tab().activeSwitch(),   &card(0).recorder().button(),
                                         &card(0).deleteButton(), &row(0, 0).down(),
                                         &row(0, 0).remove(),     &row(0, 1).up(),
                                         &row(0, 1).down(),       &row(0, 1).remove(),
                                         &row(0, 2).up(),         &row(0, 2).remove(),
                                         &card(0).addButton(),    &card(1).recorder().button(),
                                         &card(1).deleteButton(), &card(1).addButton(),
                                         &tab().addGroupButton(), &view().layoutsChip()};
    view().setFocus();
    for (std::size_t i = 0; i < expected.size(); ++i) {
        press(Qt::Key_Tab);
        EXPECT_EQ(view().focusWidget(), expected[i]) << i;
    }
    press(Qt::Key_Backtab);
    EXPECT_EQ(view().focusWidget(), &tab().addGroupButton());
}

TEST_F(GroupViewTest, AFocusedControlScrollsIntoView) {
    std::vector<CycleGroup> many(20);
    std::ranges::generate(many, [] { return group({"a", "b"}); });
    open(many);
    settle();
    card(19).addButton().setFocus(Qt::TabFocusReason);
    press(Qt::Key_Backtab);
    settle();
    EXPECT_FALSE(row(19, 1).remove().visibleRegion().isEmpty());
}

TEST_F(GroupViewTest, TheFocusGoesAlongWithAMovedSource) {
    open({group({"a", "b", "c"})});
    row(0, 2).up().setFocus(Qt::TabFocusReason);
    press(Qt::Key_Space);
    EXPECT_EQ(view().focusWidget(), &row(0, 1).up());
    press(Qt::Key_Space);
    EXPECT_EQ(groups()[0].sourceIDs, Sources({"c", "a", "b"}));
    EXPECT_EQ(view().focusWidget(), &row(0, 0).down()) << "the arrow up is disabled there";
}

TEST_F(GroupViewTest, RemovingWithTheKeyboardLeavesTheFocusNearby) {
    open({group({"a", "b"}), group({})});
    row(0, 1).remove().setFocus(Qt::TabFocusReason);
    press(Qt::Key_Space);
    EXPECT_EQ(view().focusWidget(), &row(0, 0).remove());
    press(Qt::Key_Space);
    EXPECT_EQ(view().focusWidget(), &card(0).addButton());
    card(0).deleteButton().setFocus(Qt::TabFocusReason);
    press(Qt::Key_Space);
    EXPECT_EQ(view().focusWidget(), &card(0).deleteButton());
    press(Qt::Key_Space);
    EXPECT_EQ(view().focusWidget(), &tab().addGroupButton());
}

TEST_F(GroupViewTest, ALongNameIsShortenedAndToldInATooltip) {
    service.records = {layout("a", std::string(200, 'W'))};
    open({group({"a"})});
    settle();
    const PaletteLabel& name = row(0, 0).name();
    EXPECT_LT(name.width(), name.sizeHint().width());
    EXPECT_TRUE(name.isElided());
    EXPECT_LE(card(0).width(), tab().scrollArea().viewport()->width());
    EXPECT_EQ(name.text().size(), 200);
}

/// Counts what is made and painted in the meantime.
class Watcher : public QObject {
public:
    Watcher() { QCoreApplication::instance()->installEventFilter(this); }
    std::size_t made = 0;
    std::set<QObject*> painted;

protected:
    bool eventFilter(QObject* object, QEvent* event) override {
        if (event->type() == QEvent::Paint) painted.insert(object);
        if (event->type() == QEvent::Polish) ++made;
        return false;
    }
};

class CrowdedTest : public GroupViewTest {
protected:
    static constexpr std::size_t count = 50;

    void openCrowd() {
        service.records.clear();
        Sources ids;
        for (std::size_t i = 0; i < count; ++i) {
            ids.push_back("source" + std::to_string(i));
            service.records.push_back(layout(ids.back(), "Source " + std::to_string(i)));
        }
        std::vector<CycleGroup> crowd(count);
        std::ranges::generate(crowd, [&] { return group(ids); });
        open(crowd);
        settle();
    }
    bool isPainted(const Watcher& watcher, std::size_t index) const {
        return std::ranges::any_of(watcher.painted, [&](QObject* object) {
            return object == &card(index) || card(index).isAncestorOf(qobject_cast<QWidget*>(object));
        });
    }
};

TEST_F(CrowdedTest, AnEditRedrawsOnlyWhatItChangesAndMakesNothing) {
    openCrowd();
    // the end of one card and the start of the next are in view
    tab().scrollArea().verticalScrollBar()->setValue(card(1).y() - 200);
    settle();
    Watcher watcher;
    click(row(0, 48).up());
    settle();
    EXPECT_EQ(groups()[0].sourceIDs[47], "source48");
    EXPECT_EQ(watcher.made, 0U);
    EXPECT_TRUE(isPainted(watcher, 0));
    EXPECT_FALSE(isPainted(watcher, 1));
    EXPECT_FALSE(watcher.painted.contains(&row(0, 45).name()));
}

TEST_F(CrowdedTest, RemovingASourceMakesNothing) {
    openCrowd();
    Watcher watcher;
    click(row(0, 10).remove());
    settle();
    EXPECT_EQ(card(0).rows().size(), count - 1);
    EXPECT_EQ(watcher.made, 0U);
}

TEST_F(CrowdedTest, AddingASourceMakesOneRow) {
    openCrowd();
    click(row(0, 10).remove());
    settle();
    const qsizetype before = view().findChildren<QWidget*>().size();
    choose(0, 0);
    settle();
    EXPECT_EQ(card(0).rows().size(), count);
    EXPECT_LT(view().findChildren<QWidget*>().size(), before + 10);
}

TEST_F(CrowdedTest, ScrollingMakesNothing) {
    openCrowd();
    Watcher watcher;
    QScrollBar* const bar = tab().scrollArea().verticalScrollBar();
    for (int i = 0; i <= 20; ++i) {
        bar->setValue(bar->maximum() * i / 20);
        settle();
    }
    EXPECT_EQ(watcher.made, 0U);
    EXPECT_TRUE(isPainted(watcher, count - 1));
}

}  // namespace
}  // namespace quillmere
