#include "Quillmere/Platform/Linux/Tap/ShortcutConflicts.h"
#include "Quillmere/Platform/Linux/Tap/Sway/SwayEventTap.h"
#include "Tests/App/FakeSway.h"
#include "Tests/Support/FakeInputSourceService.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// What the real compositor does not do at a test's wish; the rest is tried on
// that one.
namespace quillmere {

namespace {

using support::waitUntil;

constexpr Shortcut controlOptionSpace{Shortcut::space, {Modifiers::control, Modifiers::option}};
constexpr Shortcut commandShiftK{40, {Modifiers::command, Modifiers::shift}};

const std::string firstPair =
    "bindcode --no-warn --no-repeat Group1+Control+Mod1+65 input type:keyboard xkb_switch_layout 1; "
    "bindcode --no-warn --no-repeat Group2+Control+Mod1+65 input type:keyboard xkb_switch_layout 0; ";
const std::string unbindFirstPair = "unbindcode Group1+Control+Mod1+65; unbindcode Group2+Control+Mod1+65; ";

class SwayEventTapTest : public testing::Test {
protected:
    SwayEventTapTest() { sources.records = {layout("xkb:us"), layout("xkb:ua")}; }

    /// As the application does at its start.
    bool start(const std::vector<ArmedShortcut>& groups) {
        tap.emplace(socket(), sources);
        tap->onSwitched = [this](const Shortcut& shortcut, const std::string& id) {
            switched.emplace_back(shortcut, id);
        };
        tap->arm(groups);
        KeyInterest interest;
        for (const ArmedShortcut& group : groups)
            interest.shortcuts.push_back(group.shortcut);
        tap->setInterest(interest);
        return tap->install([this](const KeyEventFields& event) {
            delivered.push_back(event);
            return InterceptDecision::swallow;
        });
    }
    std::string socket() const { return (folder.path() / "sway").string(); }
    std::filesystem::path leftovers() const { return folder.path() / "sway.quillmere"; }
    std::string lastCommand() {
        const std::vector<std::string> commands = sway.commands();
        return commands.empty() ? std::string() : commands.back();
    }
    static QByteArray press(int code, const char* modifiers, int target) {
        return R"({"change": "run", "binding": {"command": "input type:keyboard xkb_switch_layout )"
               + QByteArray::number(target) + R"(", "event_state_mask": )" + modifiers + R"(, "input_code": )"
               + QByteArray::number(code) + R"(, "input_type": "keyboard"}})";
    }

    static inline const ArmedShortcut first{controlOptionSpace, {"xkb:us", "xkb:ua"}};
    static inline const ArmedShortcut second{commandShiftK, {"xkb:ua", "xkb:us"}};

    support::TemporaryFolder folder;
    std::optional<FakeSway> playing{std::in_place, folder.path() / "sway"};
    FakeSway& sway = *playing;
    FakeInputSourceService sources;
    std::vector<std::pair<Shortcut, std::string>> switched;
    std::vector<KeyEventFields> delivered;
    std::optional<SwayEventTap> tap;
};

TEST_F(SwayEventTapTest, WhatSwayHasSwitchedIsToldWithItsSource) {
    ASSERT_TRUE(start({first, second}));
    sway.announce(press(65, R"(["Control", "Mod1"])", 1));
    sway.announce(press(45, R"(["Shift", "Mod4"])", 0));
    ASSERT_TRUE(waitUntil([this] { return switched.size() == 2; }));
    EXPECT_EQ(switched[0], std::pair(controlOptionSpace, std::string("xkb:ua")));
    EXPECT_EQ(switched[1], std::pair(commandShiftK, std::string("xkb:us")));
}

TEST_F(SwayEventTapTest, WhatSwayOnlySwallowsIsDelivered) {
    ASSERT_TRUE(start({{controlOptionSpace, {}}, second}));
    const auto telling = [](const char* command) {
        return QByteArray(R"({"change": "run", "binding": {"command": ")") + command
               + R"(", "event_state_mask": ["Control", "Mod1"], "input_code": 65, "input_type": "keyboard"}})";
    };
    sway.announce(telling("nop"));
    sway.announce(telling("nop quillmere"));
    ASSERT_TRUE(waitUntil([this] { return delivered.size() == 2; }));
    EXPECT_EQ(delivered[0].type, KeyEventType::keyDown);
    EXPECT_EQ(delivered[0].keyCode, controlOptionSpace.keyCode);
    EXPECT_EQ(Modifiers::fromFlags(delivered[0].flags), controlOptionSpace.modifiers);
    EXPECT_EQ(delivered[1].type, KeyEventType::keyUp);
    EXPECT_TRUE(switched.empty());
    tap->arm({first, second});
    EXPECT_EQ(lastCommand(), firstPair + "unbindcode Control+Mod1+65; ") << "once it switches by itself again";
}

TEST_F(SwayEventTapTest, BindingsOfOthersAreNoSwitch) {
    ASSERT_TRUE(start({first}));
    sway.announce(press(65, R"(["Control"])", 1));
    sway.announce(press(66, R"(["Control", "Mod1"])", 1));
    sway.announce(press(65, R"(["Control", "Mod1"])", 7));
    sway.announce(press(65, R"(["Control", "Mod1"])", 1));
    ASSERT_TRUE(waitUntil([this] { return !switched.empty(); }));
    EXPECT_EQ(switched.size(), 1U);
}

TEST_F(SwayEventTapTest, WithoutSwayOrWithAnOlderOneThereIsNone) {
    sway.setVersion(1, 6);
    EXPECT_FALSE(start({first}));
    EXPECT_TRUE(sway.commands().empty());
    playing.reset();
    EXPECT_FALSE(start({first}));
    EXPECT_TRUE(tap->deliversAll());
    EXPECT_FALSE(SwayEventTap("", sources).install({}));
}

TEST_F(SwayEventTapTest, WhatIsOfNoInterestIsFreed) {
    ASSERT_TRUE(start({first}));
    EXPECT_EQ(lastCommand(), firstPair);
    tap->setInterest({.shortcuts = {controlOptionSpace}, .everyKey = true});
    EXPECT_EQ(lastCommand(), unbindFirstPair) << "the recorder may be given a present one, too";
    tap->setInterest({.shortcuts = {controlOptionSpace}});
    EXPECT_EQ(lastCommand(), firstPair);
    tap->setInterest({});
    EXPECT_EQ(lastCommand(), unbindFirstPair);
}

TEST_F(SwayEventTapTest, OnlyWhatIsAnotherIsBoundAnew) {
    ASSERT_TRUE(start({first}));
    const std::size_t count = sway.commands().size();
    tap->arm({first});
    tap->setInterest({.shortcuts = {controlOptionSpace}});
    sway.announce(R"({"change": "xkb_keymap", "input": {}})");
    sources.records.push_back(layout("xkb:de"));
    sway.announce(R"({"change": "xkb_keymap", "input": {}})");
    ASSERT_TRUE(waitUntil([&] { return sway.commands().size() > count; }));
    EXPECT_EQ(sway.commands().size(), count + 1);
    EXPECT_EQ(lastCommand(),
              "bindcode --no-warn --no-repeat Group3+Control+Mod1+65 input type:keyboard xkb_switch_layout 0; ");
}

TEST_F(SwayEventTapTest, WhileAnotherModeIsInUseBindingsGoIntoTheUsualOne) {
    sway.setMode("resize");
    ASSERT_TRUE(start({first}));
    EXPECT_EQ(lastCommand(), "mode default; " + firstPair + "mode \"resize\"");
    sway.announce(R"({"change": "my \"own\" one", "pango_markup": false})");
    sway.announce(R"({"change": "reload", "old": null, "current": null})");
    EXPECT_TRUE(waitUntil([this] { return lastCommand() == "mode default; " + firstPair + "mode 'my \"own\" one'"; }));
}

TEST_F(SwayEventTapTest, AfterAReloadEverythingIsBoundAgainAsTheNewConfigurationLeavesIt) {
    ASSERT_TRUE(start({first, second}));
    const std::size_t count = sway.commands().size();
    sway.setConfiguration("bindsym Mod4+Shift+k kill");
    sway.announce(R"({"change": "reload", "old": null, "current": null})");
    ASSERT_TRUE(waitUntil([&] { return sway.commands().size() > count; }));
    EXPECT_EQ(lastCommand(), firstPair + "unbindcode Group1+Shift+Mod4+45; unbindcode Group2+Shift+Mod4+45; ");
    EXPECT_EQ(tap->taken().all(), std::vector{commandShiftK});
}

TEST_F(SwayEventTapTest, AConnectionThatSwayHasClosedIsMadeAnewAndBoundAgain) {
    ASSERT_TRUE(start({first}));
    const std::size_t count = sway.commands().size();
    sway.hangUp();
    ASSERT_TRUE(waitUntil([&] { return sway.commands().size() > count; }));
    EXPECT_EQ(lastCommand(), firstPair);
    sway.announce(press(65, R"(["Control", "Mod1"])", 1));
    EXPECT_TRUE(waitUntil([this] { return !switched.empty(); }));
}

TEST_F(SwayEventTapTest, ASwayThatAnswersLateIsBoundWhenItDoes) {
    ASSERT_TRUE(start({}));
    sway.setSilent(true);
    tap->arm({first});
    tap->setInterest({.shortcuts = {controlOptionSpace}});
    EXPECT_EQ(lastCommand(), "");
    sway.setSilent(false);
    EXPECT_TRUE(waitUntil([this] { return lastCommand() == firstPair; }));
}

TEST_F(SwayEventTapTest, ASwayThatComesLaterIsTakenThen) {
    sway.setVersion(0, 0);
    ASSERT_FALSE(start({first}));
    sway.setVersion(1, 11);
    EXPECT_TRUE(tap->install({}));
    EXPECT_EQ(lastCommand(), firstPair);
}

TEST_F(SwayEventTapTest, ASwayThatEndsEndsNothingElse) {
    ASSERT_TRUE(start({first}));
    playing.reset();
    QCoreApplication::processEvents();
    tap->setInterest({});
    tap->setInterest({.shortcuts = {controlOptionSpace}});
    EXPECT_TRUE(tap->deliversAll());
}

TEST_F(SwayEventTapTest, WhatTheUsersConfigurationHasStaysTheirsAndIsSaid) {
    sway.setConfiguration("bindsym Ctrl+Alt+space exec menu");
    ASSERT_TRUE(start({first, second}));
    EXPECT_EQ(lastCommand().find("65"), std::string::npos) << lastCommand();
    EXPECT_NE(lastCommand().find("Mod4+45"), std::string::npos) << lastCommand();
    ShortcutConflicts conflicts(tap->taken(), QStringLiteral("sway has %1."));
    int changes = 0;
    QObject::connect(&conflicts, &Offer::changed, [&] { ++changes; });
    EXPECT_TRUE(conflicts.isOpen());
    EXPECT_EQ(conflicts.text(), QStringLiteral("sway has ⌃⌥Space."));
    tap->setInterest({.shortcuts = {commandShiftK}});
    EXPECT_FALSE(conflicts.isOpen());
    EXPECT_EQ(changes, 1);
}

TEST_F(SwayEventTapTest, WhatAKilledProgramLeftIsTakenBackAtTheNextStart) {
    std::ofstream(leftovers()) << "Group1+Control+Mod1+65\nGroup1+Mod4+45\n65; exec kill\n";
    ASSERT_TRUE(start({first}));
    const std::vector<std::string> commands = sway.commands();
    ASSERT_FALSE(commands.empty());
    EXPECT_EQ(commands.front(), "unbindcode Group1+Control+Mod1+65; unbindcode Group1+Mod4+45; ");
    EXPECT_EQ(lastCommand(), firstPair);
    EXPECT_TRUE(std::filesystem::exists(leftovers()));
    tap.reset();
    EXPECT_EQ(lastCommand(), unbindFirstPair);
    EXPECT_FALSE(std::filesystem::exists(leftovers()));
}

TEST_F(SwayEventTapTest, ALoneFnIsNotHeardAndTheOthersWork) {
    EXPECT_FALSE(start({{Shortcut::fn, {"xkb:us", "xkb:ua"}}, first}));
    EXPECT_EQ(lastCommand(), firstPair);
    tap->setInterest({.shortcuts = {controlOptionSpace}});
    EXPECT_TRUE(tap->install({}));
}

}  // namespace

}  // namespace quillmere
