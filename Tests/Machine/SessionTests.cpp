#include "Tests/Machine/PasswordDialog.h"
#include "Tests/Machine/TapTest.h"
#include "Tests/Machine/Typist.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// Who gets the tap, and who does not.
namespace quillmere::machine {

namespace {

constexpr const char* notGranted = "org.quillmere.KeyTap1.Error.NotGranted";
constexpr const char* notActive = "org.quillmere.KeyTap1.Error.NotActive";

int run(std::vector<std::string> command) {
    return support::ChildProcess::run({.arguments = std::move(command),
                                       .environment = support::baseEnvironment("/"),
                                       .output = {},
                                       .inheritedDescriptors = {},
                                       .prepare = {}});
}

class Sessions : public TapTest {
protected:
    void TearDown() override {
        Service::revoke(stranger);
        session().activate();
        TapTest::TearDown();
    }

    /// The owner sees every key.
    void records() {
        owner().answer(TapOwner::Answer::swallow);
        owner().send(tap::Interest{.everyKey = true, .wantsFn = true, .shortcuts = {ctrlSpace}});
        ASSERT_TRUE(waitUntil([&] {
            owner().clear();
            monitor().type(taps({KEY_K}));
            return waitUntil([&] { return owner().events().size() == 2; }, moment) && questions() == 1;
        }));
    }
    /// And now none at all.
    void seesNothing() {
        ASSERT_TRUE(waitUntil([&] {
            desk_.clear();
            monitor().type(taps({KEY_K}));
            return waitUntil([&] { return desk_.strokes() == taps({KEY_K}); }, moment);
        }));
        owner().clear();
        desk_.clear();
        EXPECT_TRUE(arrives(taps({KEY_S, KEY_E, KEY_C, KEY_R, KEY_E, KEY_T, KEY_ENTER}) + ctrlSpaceStrokes));
        EXPECT_TRUE(owner().events().empty());
    }

    void swallows() {
        monitor().type(ctrlSpaceStrokes);
        EXPECT_TRUE(hasGot(ctrlStrokes));
    }
};

}  // namespace

TEST_F(Sessions, AUserWithoutAGrantIsRefused) {
    Session other({.user = stranger, .terminal = 2});
    other.activate();
    TapOwner refused(other);
    EXPECT_EQ(refused.hasAccess(), "no");
    EXPECT_EQ(refused.open(), notGranted);
    Service::grant(stranger);
    EXPECT_EQ(refused.hasAccess(), "");
    EXPECT_EQ(refused.open(), "");
}

TEST_F(Sessions, ARemoteSessionIsRefused) {
    Session remote({.user = writer, .terminal = 0, .isRemote = true});
    EXPECT_EQ(TapOwner(remote).open(), notActive);
}

TEST_F(Sessions, AnotherUsersProcessInTheActiveSessionIsRefused) {
    Service::grant(stranger);
    EXPECT_EQ(TapOwner(session(), stranger).open(), notActive);
}

TEST_F(Sessions, ASessionInTheBackgroundIsRefused) {
    Service::grant(stranger);
    Session background({.user = stranger, .terminal = 2});
    EXPECT_EQ(TapOwner(background).open(), notActive);
}

TEST_F(Sessions, OnlyTheTapOfTheActiveSessionSeesAnything) {
    listen(TapOwner::Answer::swallow);
    Service::grant(stranger);
    Session other({.user = stranger, .terminal = 2});
    other.activate();
    owner().clear();
    EXPECT_TRUE(becomesFree());
    EXPECT_TRUE(arrives(ctrlSpaceStrokes));
    EXPECT_TRUE(owner().events().empty());

    TapOwner second(other);
    ASSERT_EQ(second.open(), "");
    second.answer(TapOwner::Answer::swallow);
    second.send(tap::Interest{.shortcuts = {ctrlSpace}});
    ASSERT_TRUE(becomesGrabbed());
    swallows();
    EXPECT_EQ(second.events().size(), 2U);
    EXPECT_TRUE(owner().events().empty());

    session().activate();
    second.clear();
    ASSERT_TRUE(becomesGrabbed());
    swallows();
    EXPECT_EQ(questions(), 1U);
    EXPECT_TRUE(second.events().empty());
}

TEST_F(Sessions, TwoUsersWhoTakeTurnsWhileSomebodyTypesLoseNoKey) {
    Service::grant(stranger);
    Session other({.user = stranger, .terminal = 2});
    other.activate();
    TapOwner second(other);
    ASSERT_EQ(second.open(), "");
    for (TapOwner* each : {&owner(), &second})
        each->send(tap::Interest{.shortcuts = {ctrlSpace}});
    ASSERT_TRUE(becomesGrabbed());
    VirtualKeyboard keyboard({.name = "Busy keyboard"});
    Typist typist(keyboard);
    for (Session* each : {&session(), &other, &session(), &other, &session()}) {
        each->activate();
        const std::size_t before = desk_.strokes().size();
        EXPECT_TRUE(waitUntil([&] { return desk_.strokes().size() > before + 20; }));
    }
    EXPECT_TRUE(hasGot(typist.stop()));
    EXPECT_TRUE(owner().events().empty());
    EXPECT_TRUE(second.events().empty());
}

TEST_F(Sessions, RevocationTakesTheTapAwayAtOnce) {
    listen(TapOwner::Answer::swallow);
    EXPECT_EQ(owner().revokeAccess(), "");
    EXPECT_TRUE(waitUntil([&] { return owner().isClosed(); }));
    EXPECT_TRUE(becomesFree());
    EXPECT_TRUE(arrives(ctrlSpaceStrokes));
    EXPECT_EQ(owner().hasAccess(), "no");
    EXPECT_EQ(owner().open(), notGranted);
}

TEST_F(Sessions, AGrantThatAnAdministratorRemovesIsGoneAtOnce) {
    listen(TapOwner::Answer::swallow);
    Service::revoke(writer);
    EXPECT_TRUE(waitUntil([&] { return owner().isClosed(); }));
    EXPECT_TRUE(becomesFree());
    EXPECT_EQ(owner().open(), notGranted);
}

TEST_F(Sessions, ALockedSessionIsToldNothingWhateverItsInterest) {
    records();
    session().setLocked(true);
    seesNothing();
    session().setLocked(false);
}

TEST_F(Sessions, ALockScreenThatIsASessionOfItsOwnLocksTheSeat) {
    records();
    {
        const Session lockScreen({.user = writer, .terminal = 3, .kind = "lock-screen"});
        seesNothing();
    }
    owner().send(tap::Interest{.shortcuts = {ctrlSpace}});
    EXPECT_TRUE(becomesGrabbed());
}

TEST_F(Sessions, AGreetersSessionIsRefused) {
    Session greeter({.user = writer, .terminal = 2, .kind = "greeter"});
    greeter.activate();
    EXPECT_EQ(TapOwner(greeter).open(), notActive);
}

TEST_F(Sessions, ASystemServiceThatRunsAsTheUserIsRefused) {
    EXPECT_EQ(TapOwner(session(), session().systemService()).open(), notActive);
}

TEST_F(Sessions, AProgramOfTheUsersOwnServiceManagerIsServed) {
    EXPECT_EQ(TapOwner(session(), session().usersService()).open(), "");
}

TEST_F(Sessions, TheTapEndsWithItsSession) {
    Service::grant(stranger);
    auto other = std::make_unique<Session>(Session::Form{.user = stranger, .terminal = 2});
    other->activate();
    TapOwner second(*other);
    ASSERT_EQ(second.open(), "");
    other.reset();
    EXPECT_TRUE(waitUntil([&] { return second.isClosed(); }));
}

TEST_F(Sessions, AGrantEndsWithItsAccount) {
    constexpr uid_t guest = 1502;
    ASSERT_EQ(run({"useradd", "--uid", "1502", "guest"}), 0);
    Service::grant(guest);
    Session visit({.user = guest, .terminal = 2});
    visit.activate();
    TapOwner visitor(visit);
    EXPECT_EQ(visitor.open(), "");
    ASSERT_EQ(run({"userdel", "--force", "guest"}), 0);
    EXPECT_TRUE(waitUntil([&] { return visitor.isClosed(); }));
    ASSERT_EQ(run({"useradd", "--uid", "1502", "next"}), 0);
    EXPECT_EQ(visitor.hasAccess(), "no");
    EXPECT_EQ(run({"userdel", "--force", "next"}), 0);
}

TEST_F(Sessions, AGrantFromWhenTheServiceRanAsRootStillHolds) {
    ASSERT_EQ(run({"systemctl", "stop", "quillmere-tapd.service"}), 0);
    ASSERT_EQ(run({"chown", "-R", "root:root", "/var/lib/quillmere"}), 0);
    ASSERT_EQ(run({"chmod", "600", "/var/lib/quillmere/grants/1500"}), 0);
    EXPECT_EQ(owner().open(), "");
    EXPECT_EQ(owner().revokeAccess(), "");
    EXPECT_FALSE(Service::isGranted(writer));
}

TEST_F(Sessions, TheAdministratorsPasswordGrantsTheTap) {
    Service::revoke(writer);
    PasswordDialog dialog(session(), owner().process().pid());
    owner().beginRequestAccess();
    dialog.enter("root-secret");
    std::optional<std::string> result;
    EXPECT_TRUE(waitUntil([&] { return (result = owner().result()).has_value(); })) << dialog.shown();
    EXPECT_EQ(result, "");
    EXPECT_EQ(owner().hasAccess(), "");
    EXPECT_EQ(owner().open(), "");
    // It is remembered, so that nobody is asked a second time.
    EXPECT_EQ(owner().requestAccess(), "");
}

TEST_F(Sessions, AWrongPasswordGrantsNothing) {
    Service::revoke(writer);
    PasswordDialog dialog(session(), owner().process().pid());
    owner().beginRequestAccess();
    dialog.enter("wrong");
    std::optional<std::string> result;
    EXPECT_TRUE(waitUntil([&] { return (result = owner().result()).has_value(); })) << dialog.shown();
    EXPECT_EQ(result, "no");
    EXPECT_EQ(owner().hasAccess(), "no");
    EXPECT_EQ(owner().open(), notGranted);
}

}  // namespace quillmere::machine
