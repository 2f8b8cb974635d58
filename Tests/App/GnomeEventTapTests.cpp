#include "Quillmere/Platform/Linux/Tap/Gnome/GnomeEventTap.h"
#include "Tests/App/FakeGnome.h"
#include "Tests/Support/SessionBus.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/WaitUntil.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace quillmere {

namespace {

using support::waitUntil;

constexpr Shortcut controlOptionSpace{Shortcut::space, {Modifiers::control, Modifiers::option}};
constexpr Shortcut commandShiftK{40, {Modifiers::command, Modifiers::shift}};

class GnomeEventTapTest : public testing::Test {
protected:
    GnomeEventTapTest() {
        gnome.startShell();
        gnome.enableExtension();
    }

    /// As the application does at its start.
    bool start(const KeyInterest& interest) {
        tap.emplace(connection);
        tap->onSwitched = [this](const Shortcut& shortcut, const std::string& id) {
            switched.emplace_back(shortcut, id);
        };
        tap->arm(groups);
        tap->setInterest(interest);
        return tap->install([this](const KeyEventFields& event) {
            delivered.push_back(event);
            return InterceptDecision::swallow;
        });
    }
    bool waitForArmed(const QStringList& lines) {
        return waitUntil([&] { return gnome.armed() == lines; });
    }

    static inline const std::vector<ArmedShortcut> groups{
        {controlOptionSpace, {"xkb:us", "fcitx:mozc", "ibus:libpinyin"}},
        {commandShiftK, {"xkb:us+dvorak", "xkb:ua"}},
    };
    static inline const KeyInterest both{.shortcuts = {controlOptionSpace, commandShiftK}};
    static inline const QString first = QStringLiteral("<Control><Alt>0x41: xkb us, ibus libpinyin");
    static inline const QString second = QStringLiteral("<Shift><Super>0x2d: xkb us+dvorak, xkb ua");

    support::TemporaryFolder folder;
    support::SessionBus bus{folder.path(), support::baseEnvironment(folder.path().string())};
    FakeGnome gnome{bus.address()};
    QDBusConnection connection = bus.connect();
    std::vector<std::pair<Shortcut, std::string>> switched;
    std::vector<KeyEventFields> delivered;
    std::optional<GnomeEventTap> tap;
};

TEST_F(GnomeEventTapTest, TheShellIsArmedWithTheGroupsByTheKeysPlaces) {
    EXPECT_TRUE(start(both));
    EXPECT_TRUE(waitForArmed({first, second}));
}

TEST_F(GnomeEventTapTest, WhatTheShellHasSwitchedIsToldWithItsSource) {
    ASSERT_TRUE(start(both));
    ASSERT_TRUE(waitForArmed({first, second}));
    gnome.emitSwitched(0, 1, connection.baseService());
    gnome.emitSwitched(1, 0, connection.baseService());
    ASSERT_TRUE(waitUntil([this] { return switched.size() == 2; }));
    EXPECT_EQ(switched[0], std::pair(controlOptionSpace, std::string("ibus:libpinyin")));
    EXPECT_EQ(switched[1], std::pair(commandShiftK, std::string("xkb:us+dvorak")));
    gnome.emitSwitched(1, 2, connection.baseService());
    gnome.emitSwitched(7, 0, connection.baseService());
    gnome.emitSwitched(1, 1, connection.baseService());
    ASSERT_TRUE(waitUntil([this] { return switched.size() == 3; }));
    EXPECT_EQ(switched[2].second, "xkb:ua") << "what means nothing is not told";
}

TEST_F(GnomeEventTapTest, WhatTheShellOnlySwallowsIsDelivered) {
    ASSERT_TRUE(start(both));
    ASSERT_TRUE(waitForArmed({first, second}));
    tap->arm({{controlOptionSpace, {}}, groups[1]});
    ASSERT_TRUE(waitForArmed({QStringLiteral("<Control><Alt>0x41: "), second}));
    gnome.emitPressed(7, connection.baseService());
    gnome.emitPressed(0, connection.baseService());
    ASSERT_TRUE(waitUntil([this] { return delivered.size() == 2; }));
    EXPECT_EQ(delivered[0].type, KeyEventType::keyDown);
    EXPECT_EQ(delivered[0].keyCode, controlOptionSpace.keyCode);
    EXPECT_EQ(Modifiers::fromFlags(delivered[0].flags), controlOptionSpace.modifiers);
    EXPECT_EQ(delivered[1].type, KeyEventType::keyUp);
    EXPECT_TRUE(switched.empty());
}

TEST_F(GnomeEventTapTest, WithoutTheExtensionOrWithAnotherVersionThereIsNone) {
    gnome.setVersion(2);
    EXPECT_FALSE(start(both));
    gnome.disableExtension();
    EXPECT_FALSE(start(both));
    EXPECT_EQ(gnome.armCount(), 0);
    gnome.setVersion(1);
    gnome.enableExtension();
    EXPECT_TRUE(waitUntil([this] { return tap->install({}); })) << "it has come since";
    EXPECT_TRUE(waitForArmed({first, second}));
}

TEST_F(GnomeEventTapTest, WhatIsOfNoInterestIsFreed) {
    ASSERT_TRUE(start(both));
    ASSERT_TRUE(waitForArmed({first, second}));
    tap->setInterest({.shortcuts = {commandShiftK}});
    EXPECT_TRUE(waitForArmed({second}));
    tap->setInterest({.shortcuts = both.shortcuts, .everyKey = true});
    EXPECT_TRUE(waitForArmed({})) << "the recorder may be given a present one, too";
    tap->setInterest(both);
    EXPECT_TRUE(waitForArmed({first, second}));
    tap->setInterest({});
    EXPECT_TRUE(waitForArmed({}));
}

TEST_F(GnomeEventTapTest, AGroupThatHasChangedIsArmedAnewAndTheSameOneIsNot) {
    ASSERT_TRUE(start(both));
    ASSERT_TRUE(waitForArmed({first, second}));
    const int count = gnome.armCount();
    tap->arm(groups);
    tap->setInterest(both);
    tap->arm({{commandShiftK, {"xkb:ua"}}});
    EXPECT_TRUE(waitForArmed({QStringLiteral("<Shift><Super>0x2d: xkb ua")}));
    EXPECT_EQ(gnome.armCount(), count + 1);
}

TEST_F(GnomeEventTapTest, WhatTheShellHasForSomethingElseIsKnown) {
    gnome.setTaken({QStringLiteral("<Shift><Super>0x2d")});
    ASSERT_TRUE(start(both));
    const std::vector theirs{commandShiftK};
    EXPECT_TRUE(waitUntil([&] { return tap->taken().all() == theirs; }));
    tap->setInterest({.shortcuts = both.shortcuts, .everyKey = true});
    ASSERT_TRUE(waitForArmed({}));
    tap->setInterest(both);
    ASSERT_TRUE(waitForArmed({first, second}));
    EXPECT_EQ(tap->taken().all(), theirs) << "a recording changes nothing about it";
    tap->setInterest({.shortcuts = {controlOptionSpace}});
    EXPECT_TRUE(waitUntil([&] { return tap->taken().all().empty(); }));
}

TEST_F(GnomeEventTapTest, OfAnExtensionThatHasGoneNothingIsSaid) {
    gnome.setTaken({QStringLiteral("<Shift><Super>0x2d")});
    ASSERT_TRUE(start(both));
    ASSERT_TRUE(waitUntil([&] { return !tap->taken().all().empty(); }));
    gnome.disableExtension();
    EXPECT_TRUE(waitUntil([&] { return tap->taken().all().empty(); }));
}

TEST_F(GnomeEventTapTest, AnExtensionThatIsBackIsArmedAgain) {
    ASSERT_TRUE(start(both));
    ASSERT_TRUE(waitForArmed({first, second}));
    gnome.disableExtension();
    ASSERT_TRUE(waitForArmed({}));
    gnome.enableExtension();
    EXPECT_TRUE(waitForArmed({first, second}));
}

TEST_F(GnomeEventTapTest, ALoneFnIsNotHeardAndTheOthersWork) {
    EXPECT_FALSE(start({.shortcuts = {Shortcut::fn, commandShiftK}}));
    EXPECT_TRUE(waitForArmed({second}));
    tap->setInterest({.shortcuts = {commandShiftK}});
    EXPECT_TRUE(tap->install({}));
}

}  // namespace

}  // namespace quillmere
