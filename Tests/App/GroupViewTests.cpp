#include "Quillmere/Settings/SourceRow.h"
#include "Tests/App/SettingsFixture.h"

#include <QAccessible>
#include <QEvent>
#include <QMenu>
#include <QScrollArea>
#include <QScrollBar>

#include <algorithm>
#include <cmath>
#include <functional>
#include <set>

namespace quillmere {
namespace {

using Sources = std::vector<std::string>;

class GroupViewTest : public SettingsTest {
protected:
    /// What a row shows.
    struct Row {
        QLabel& position;
        QLabel& name;
        QAbstractButton& up;
        QAbstractButton& down;
        QAbstractButton& remove;
    };
    std::vector<SourceRow*> rows(std::size_t cardIndex) const { return shown<SourceRow>(card(cardIndex)); }
    Row row(std::size_t cardIndex, std::size_t index) const {
        const SourceRow& row = *rows(cardIndex).at(index);
        const auto labels = shown<QLabel>(row);
        const auto buttons = shown<QAbstractButton>(row);
        return {*labels.at(0), *labels.at(1), *buttons.at(0), *buttons.at(1), *buttons.at(2)};
    }
    QStringList names(std::size_t cardIndex) const {
        QStringList names;
        for (const SourceRow* const row : rows(cardIndex))
            names += texts(*row).join(' ');
        return names;
    }
    QScrollArea& scrollArea() const { return *shown<QScrollArea>(view()).front(); }
    /// Opens the menu of sources with a click, and answers it.
    QMenu* openMenu(std::size_t cardIndex) const {
        click(addButton(cardIndex));
        return addButton(cardIndex).findChild<QMenu*>();
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
    EXPECT_TRUE(button("Active").isVisible());
    EXPECT_EQ(button("Active").text(), "Active");
    EXPECT_TRUE(button("Add group").isVisible());
    EXPECT_EQ(button("Add group").text(), "Add group");
    EXPECT_TRUE(cards().empty());
}

TEST_F(GroupViewTest, ACardListsTheSourcesByTheirPlaceAndName) {
    open({group({"c", "a"}), group({})});
    EXPECT_EQ(names(0), QStringList({"1 Gamma", "2 Alpha"}));
    EXPECT_TRUE(rows(1).empty());
    EXPECT_EQ(addButton(0).text(), "Add source ▾");
}

TEST_F(GroupViewTest, AGroupWithOneSourceHasBothArrowsDisabled) {
    open({group({"a"})});
    EXPECT_FALSE(row(0, 0).up.isEnabled());
    EXPECT_FALSE(row(0, 0).down.isEnabled());
    EXPECT_TRUE(row(0, 0).remove.isEnabled());
}

TEST_F(GroupViewTest, TheFirstCannotMoveUpNorTheLastDown) {
    open({group({"a", "b", "c"})});
    EXPECT_FALSE(row(0, 0).up.isEnabled());
    EXPECT_TRUE(row(0, 0).down.isEnabled());
    EXPECT_TRUE(row(0, 1).up.isEnabled());
    EXPECT_TRUE(row(0, 1).down.isEnabled());
    EXPECT_TRUE(row(0, 2).up.isEnabled());
    EXPECT_FALSE(row(0, 2).down.isEnabled());
    click(row(0, 2).remove);
    EXPECT_FALSE(row(0, 1).down.isEnabled());
    choose(0, 0);
    EXPECT_TRUE(row(0, 1).down.isEnabled());
}

TEST_F(GroupViewTest, WithEveryAvailableSourceInTheGroupAddSourceIsDisabled) {
    open({group({"d", "c", "b", "a"})});
    EXPECT_FALSE(addButton(0).isEnabled());
    click(row(0, 0).remove);
    EXPECT_TRUE(addButton(0).isEnabled());
}

TEST_F(GroupViewTest, WithoutAnySourceANewGroupsAddSourceIsDisabledFromTheStart) {
    service.records.clear();
    open({});
    click(button("Add group"));
    EXPECT_FALSE(addButton(0).isEnabled());
    model->setAvailable({{"a", "Alpha", ""}});
    EXPECT_TRUE(addButton(0).isEnabled());
}

TEST_F(GroupViewTest, RemovingAGroupWhileItsShortcutIsRecordedEndsTheRecording) {
    open({group({}), group({})});
    click(recorder(1));
    ASSERT_TRUE(model->recorder());
    click(deleteButton(1));
    EXPECT_FALSE(model->recorder());
    EXPECT_EQ(model->recordingGroup(), std::nullopt);
    EXPECT_EQ(groups().size(), 1U);
}

TEST_F(GroupViewTest, AHandlerThatOutlivesItsRecorderDoesNothing) {
    open({group({})});
    click(recorder(0));
    const ShortcutHandler handler = model->recorder();
    click(deleteButton(0));
    settle();
    handler(controlOptionK.keyCode, controlOptionK.modifiers);
    EXPECT_TRUE(groups().empty());
    EXPECT_EQ(writes(), 1);
}

TEST_F(GroupViewTest, AnUnknownSourceIsShownAsItsIdentifierAndCanBeMovedAndRemoved) {
    open({group({"a", "gone:one"})});
    EXPECT_EQ(names(0), QStringList({"1 Alpha", "2 gone:one"}));
    click(row(0, 1).up);
    EXPECT_EQ(groups()[0].sourceIDs, Sources({"gone:one", "a"}));
    click(row(0, 0).remove);
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
        {"up", [this] { click(row(0, 2).up); }, {{"a", "c", "b"}, {}}},
        {"down", [this] { click(row(0, 0).down); }, {{"b", "a", "c"}, {}}},
        {"remove", [this] { click(row(0, 1).remove); }, {{"a", "c"}, {}}},
        {"add to the first", [this] { choose(0, 0); }, {{"a", "b", "c", "d"}, {}}},
        {"add to the second", [this] { choose(1, 2); }, {{"a", "b", "c"}, {"c"}}},
        {"add group", [this] { click(button("Add group")); }, {{"a", "b", "c"}, {}, {}}},
        {"delete", [this] { click(deleteButton(0)); }, {{}}},
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
    EXPECT_TRUE(button("Active").isChecked());
    click(button("Active"));
    EXPECT_FALSE(stored().active);
    EXPECT_EQ(writes(), 1);
    click(button("Active"));
    EXPECT_TRUE(stored().active);
    EXPECT_EQ(writes(), 2);
}

TEST_F(GroupViewTest, TheToggleFollowsAChangeMadeElsewhere) {
    open({});
    Config config = model->config();
    config.active = false;
    model->setConfig(config);
    EXPECT_FALSE(button("Active").isChecked());
}

TEST_F(GroupViewTest, ANewGroupIsEmptyWithAFreshIdentifierAndNoShortcut) {
    open({group({"a"})});
    click(button("Add group"));
    click(button("Add group"));
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
    EXPECT_EQ(row(0, 0).remove.accessibleName(), "Remove Ups & Downs");
}

TEST_F(GroupViewTest, SourcesEnabledMeanwhileAreOfferedAfterReopening) {
    open({group({"a", "b", "c", "d"})});
    service.records.push_back(layout("e", "Epsilon"));
    EXPECT_FALSE(addButton(0).isEnabled());
    window->open();
    EXPECT_EQ(menuTitles(0), QStringList({"Epsilon"}));
}

TEST_F(GroupViewTest, ANewNameOfASourceIsShown) {
    open({group({"a"})});
    model->setAvailable({{"a", "Aleph", "he"}});
    EXPECT_EQ(names(0), QStringList({"1 Aleph"}));
    EXPECT_EQ(row(0, 0).remove.accessibleName(), "Remove Aleph");
}

TEST_F(GroupViewTest, CardsKeepTheirIdentityWhenOthersComeAndGo) {
    open({group({"a"}), group({"b"}), group({"c"})});
    const GroupView* const second = &card(1);
    const GroupView* const third = &card(2);
    click(deleteButton(0));
    EXPECT_EQ(&card(0), second);
    EXPECT_EQ(&card(1), third);
    click(button("Add group"));
    EXPECT_EQ(&card(1), third);
    EXPECT_EQ(cards().size(), 3U);
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
    EXPECT_EQ(deleteButton(1).accessibleName(), "Delete group 2");
}

TEST_F(GroupViewTest, GroupsThatShareAnIdentifierAreShownAndRemovedTogether) {
    CycleGroup twin = group({"a"});
    CycleGroup other = twin;
    other.sourceIDs = {"b"};
    open({twin, other, group({"c"})});
    ASSERT_EQ(cards().size(), 3U);
    EXPECT_EQ(names(1), QStringList({"1 Beta"}));
    click(deleteButton(1));
    EXPECT_EQ(stored().groups.size(), 1U);
    EXPECT_EQ(cards().size(), 1U);
}

TEST_F(GroupViewTest, RowsOfGroupsThatShareAnIdentifierActOnTheirOwnGroup) {
    const CycleGroup first = group({"a"});
    CycleGroup second = first;
    second.sourceIDs = {"b", "c", "d"};
    open({first, second});
    click(row(1, 2).up);
    EXPECT_EQ(groups()[1].sourceIDs, Sources({"b", "d", "c"}));
    click(row(1, 0).down);
    EXPECT_EQ(groups()[1].sourceIDs, Sources({"d", "b", "c"}));
    click(row(1, 0).remove);
    EXPECT_EQ(groups()[1].sourceIDs, Sources({"b", "c"}));
    choose(1, 0);
    EXPECT_EQ(groups()[1].sourceIDs, Sources({"b", "c", "a"}));
    EXPECT_EQ(names(1), QStringList({"1 Beta", "2 Gamma", "3 Alpha"}));
    EXPECT_EQ(groups()[0], first);
}

TEST_F(GroupViewTest, AShortcutOfGroupsThatShareAnIdentifierIsShownAndSetInItsOwnGroup) {
    const CycleGroup first = group({"a"}, Shortcut::fn);
    CycleGroup second = first;
    second.shortcut.reset();
    open({first, second});
    EXPECT_EQ(recorder(1).text(), "Set shortcut");
    click(recorder(1));
    tapPress(controlOptionK.keyCode, controlOptionK.modifiers);
    EXPECT_EQ(groups()[0].shortcut, Shortcut::fn);
    EXPECT_EQ(groups()[1].shortcut, controlOptionK);
    EXPECT_EQ(recorder(1).text(), "⌃⌥K");
}

TEST_F(GroupViewTest, ASourceListedTwiceIsShownTwice) {
    open({group({"a", "b", "a"})});
    EXPECT_EQ(names(0), QStringList({"1 Alpha", "2 Beta", "3 Alpha"}));
    click(row(0, 2).remove);
    EXPECT_EQ(groups()[0].sourceIDs, Sources({"a", "b"}));
}

TEST_F(GroupViewTest, TheTabAndItsCardsAreLaidOutToTheirNumbers) {
    open({group({"a", "b"}), group({})});
    const auto frame = [this](QWidget& widget) { return QRect(widget.mapTo(&view(), QPoint()), widget.size()); };
    EXPECT_EQ(frame(card(0)).top() - frame(button("Active")).bottom() - 1, 16);
    EXPECT_EQ(frame(card(1)).top() - frame(card(0)).bottom() - 1, 12);
    EXPECT_EQ(frame(button("Add group")).top() - frame(scrollArea()).bottom() - 1, 16);
    EXPECT_EQ(frame(button("Add group")).left(), 20);
    EXPECT_EQ(frame(card(0)).left() + frame(card(0)).right(), view().width() - 1) << "centred";
    EXPECT_EQ(frame(deleteButton(0)).right(), frame(card(0)).right() - 14);
    const Row first = row(0, 0);
    EXPECT_EQ(first.position.width(), 18);
    EXPECT_LT(first.position.x(), first.name.x());
    EXPECT_LT(first.name.x(), first.up.x());
    EXPECT_LT(first.up.x(), first.down.x());
    EXPECT_LT(first.down.x(), first.remove.x());
    EXPECT_EQ(addButton(0).font().pixelSize(), 13);
    EXPECT_EQ(addButton(0).height(), addButton(0).fontMetrics().height() + 2 * 4);
    const double text = QFontMetricsF(addButton(0).font()).horizontalAdvance("Add source ▾");
    EXPECT_EQ(addButton(0).width(), static_cast<int>(std::ceil(text)) + 2 * 10);
}

TEST_F(GroupViewTest, APlaceIsWrittenInTheMutedColourAndANameInTheColourOfText) {
    open({group({"a"})});
    for (const bool isDark : {false, true}) {
        Palette::setDark(isDark);
        EXPECT_TRUE(isSame(ink(row(0, 0).position), Palette::muted().resolved(isDark)));
        EXPECT_TRUE(isSame(ink(row(0, 0).name), labelColor().resolved(isDark)));
    }
}

TEST_F(GroupViewTest, EveryControlSaysWhatItDoes) {
    open({group({"b", "a"}), group({})});
    EXPECT_EQ(row(0, 0).up.accessibleName(), "Move Beta up");
    EXPECT_EQ(row(0, 0).down.accessibleName(), "Move Beta down");
    EXPECT_EQ(row(0, 0).remove.accessibleName(), "Remove Beta");
    EXPECT_EQ(deleteButton(1).accessibleName(), "Delete group 2");
    EXPECT_EQ(addButton(1).accessibleName(), "Add source to group 2");
    const auto role = [](QWidget& widget) { return QAccessible::queryAccessibleInterface(&widget)->role(); };
    EXPECT_EQ(role(row(0, 0).up), QAccessible::Button);
    EXPECT_EQ(role(addButton(0)), QAccessible::ButtonMenu);
    EXPECT_EQ(role(button("Active")), QAccessible::CheckBox);
    EXPECT_EQ(role(row(0, 0).name), QAccessible::StaticText);
}

TEST_F(GroupViewTest, TabWalksThroughEverythingInReadingOrder) {
    open({group({"a", "b"})});
    click(button("Add group"));
    choose(0, 0);
    const std::vector<QWidget*> expected{&button("Layouts"),   &button("General"), &button("Active"), &recorder(0),
                                         &deleteButton(0),     &row(0, 0).down,    &row(0, 0).remove, &row(0, 1).up,
                                         &row(0, 1).down,      &row(0, 1).remove,  &row(0, 2).up,     &row(0, 2).remove,
                                         &addButton(0),        &recorder(1),       &deleteButton(1),  &addButton(1),
                                         &button("Add group"), &button("Layouts")};
    view().setFocus();
    for (std::size_t i = 0; i < expected.size(); ++i) {
        press(Qt::Key_Tab);
        EXPECT_EQ(view().focusWidget(), expected[i]) << i;
    }
    press(Qt::Key_Backtab);
    EXPECT_EQ(view().focusWidget(), &button("Add group"));
}

TEST_F(GroupViewTest, AFocusedControlScrollsIntoView) {
    std::vector<CycleGroup> many(20);
    std::ranges::generate(many, [] { return group({"a", "b"}); });
    open(many);
    settle();
    addButton(19).setFocus(Qt::TabFocusReason);
    press(Qt::Key_Backtab);
    settle();
    EXPECT_FALSE(row(19, 1).remove.visibleRegion().isEmpty());
}

TEST_F(GroupViewTest, TheFocusGoesAlongWithAMovedSource) {
    open({group({"a", "b", "c"})});
    row(0, 2).up.setFocus(Qt::TabFocusReason);
    press(Qt::Key_Space);
    EXPECT_EQ(view().focusWidget(), &row(0, 1).up);
    press(Qt::Key_Space);
    EXPECT_EQ(groups()[0].sourceIDs, Sources({"c", "a", "b"}));
    EXPECT_EQ(view().focusWidget(), &row(0, 0).down) << "the arrow up is disabled there";
}

TEST_F(GroupViewTest, RemovingWithTheKeyboardLeavesTheFocusNearby) {
    open({group({"a", "b"}), group({})});
    row(0, 1).remove.setFocus(Qt::TabFocusReason);
    press(Qt::Key_Space);
    EXPECT_EQ(view().focusWidget(), &row(0, 0).remove);
    press(Qt::Key_Space);
    EXPECT_EQ(view().focusWidget(), &addButton(0));
    deleteButton(0).setFocus(Qt::TabFocusReason);
    press(Qt::Key_Space);
    EXPECT_EQ(view().focusWidget(), &deleteButton(0));
    press(Qt::Key_Space);
    EXPECT_EQ(view().focusWidget(), &button("Add group"));
}

TEST_F(GroupViewTest, ALongNameIsShortenedAndToldInATooltip) {
    service.records = {layout("a", std::string(200, 'W'))};
    open({group({"a"})});
    settle();
    const QLabel& name = row(0, 0).name;
    EXPECT_LT(name.width(), name.sizeHint().width());
    EXPECT_LE(card(0).width(), scrollArea().viewport()->width());
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
    scrollArea().verticalScrollBar()->setValue(card(1).y() - 200);
    settle();
    Watcher watcher;
    click(row(0, 48).up);
    settle();
    EXPECT_EQ(groups()[0].sourceIDs[47], "source48");
    EXPECT_EQ(watcher.made, 0U);
    EXPECT_TRUE(isPainted(watcher, 0));
    EXPECT_FALSE(isPainted(watcher, 1));
    EXPECT_FALSE(watcher.painted.contains(&row(0, 45).name));
}

TEST_F(CrowdedTest, RemovingASourceMakesNothing) {
    openCrowd();
    Watcher watcher;
    click(row(0, 10).remove);
    settle();
    EXPECT_EQ(rows(0).size(), count - 1);
    EXPECT_EQ(watcher.made, 0U);
}

TEST_F(CrowdedTest, AddingASourceMakesOneRow) {
    openCrowd();
    click(row(0, 10).remove);
    settle();
    const qsizetype before = view().findChildren<QWidget*>().size();
    choose(0, 0);
    settle();
    EXPECT_EQ(rows(0).size(), count);
    EXPECT_LT(view().findChildren<QWidget*>().size(), before + 10);
}

TEST_F(CrowdedTest, ScrollingMakesNothing) {
    openCrowd();
    Watcher watcher;
    QScrollBar* const bar = scrollArea().verticalScrollBar();
    for (int i = 0; i <= 20; ++i) {
        bar->setValue(bar->maximum() * i / 20);
        settle();
    }
    EXPECT_EQ(watcher.made, 0U);
    EXPECT_TRUE(isPainted(watcher, count - 1));
}

}  // namespace
}  // namespace quillmere
