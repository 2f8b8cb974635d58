#include "Tests/Machine/TapTest.h"
#include "Tests/Machine/Typist.h"

#include <algorithm>
#include <csignal>
#include <fstream>
#include <string>
#include <vector>

// What programs of other users, and unruly ones of the same user, try with the
// service that everybody may call.
namespace quillmere::machine {

namespace {

constexpr const char* tooOften = "org.quillmere.KeyTap1.Error.TooOften";

class Attack : public TapTest {
protected:
    /// A program of somebody who was given nothing.
    static support::ChildProcess intruder(std::vector<std::string> arguments) {
        return support::ChildProcess({.arguments = std::move(arguments),
                                      .environment = support::baseEnvironment("/"),
                                      .output = {},
                                      .inheritedDescriptors = {},
                                      .prepare = Session::becoming(stranger)});
    }

    long residentKibibytes() {
        std::ifstream file("/proc/" + std::to_string(service_.waitForPid()) + "/status");
        std::string word;
        long kibibytes = 0;
        while (file >> word)
            if (word == "VmRSS:") file >> kibibytes;
        return kibibytes;
    }

    void swallows() {
        desk_.clear();
        monitor().type(ctrlSpaceStrokes);
        EXPECT_TRUE(hasGot(ctrlStrokes));
    }
};

}  // namespace

TEST_F(Attack, ForgedSignalsHideNoLockAndEndNoTap) {
    listen(TapOwner::Answer::swallow);
    const support::ChildProcess forger = intruder({
        "sh",
        "-c",
        "while busctl emit " + session().path()
            + " org.freedesktop.DBus.Properties PropertiesChanged 'sa{sv}as' org.freedesktop.login1.Session 1 "
              "LockedHint "
              "b false 0; do busctl emit /org/freedesktop/DBus org.freedesktop.DBus NameOwnerChanged sss "
              "org.freedesktop.login1 :1.1 ''; done",
    });
    session().setLocked(true);
    EXPECT_TRUE(becomesFree());
    owner().clear();
    EXPECT_TRUE(arrives(ctrlSpaceStrokes + taps({KEY_A, KEY_B}) + ctrlSpaceStrokes));
    EXPECT_TRUE(owner().events().empty());
    session().setLocked(false);
    EXPECT_TRUE(becomesGrabbed());
    swallows();
    EXPECT_FALSE(owner().isClosed());
}

TEST_F(Attack, AFloodOfCallsLosesNoKeyAndKeepsNobodyWaiting) {
    listen(TapOwner::Answer::swallow);
    VirtualKeyboard keyboard({.name = "Busy keyboard"});
    ASSERT_TRUE(waitUntil([this] { return desk_.originals().contains("Busy keyboard"); }));
    const pid_t pid = service_.pid();
    const support::ChildProcess flood = intruder({programPath("call_flood")});
    {
        Typist typist(keyboard);
        EXPECT_TRUE(waitUntil([this] { return desk_.strokes().size() > 200; }));
        EXPECT_TRUE(hasGot(typist.stop()));
    }
    swallows();
    EXPECT_LT(residentKibibytes(), 32 * 1024);
    EXPECT_EQ(owner().revokeAccess(), "");
    EXPECT_TRUE(waitUntil([this] { return owner().isClosed(); }));
    EXPECT_EQ(service_.pid(), pid);
}

TEST_F(Attack, TapsOpenedWithoutEndAreRefusedAndLoseNoKey) {
    listen(TapOwner::Answer::swallow);
    VirtualKeyboard keyboard({.name = "Busy keyboard"});
    ASSERT_TRUE(waitUntil([this] { return desk_.originals().contains("Busy keyboard"); }));
    Typist typist(keyboard);
    TapOwner unruly(session());
    std::vector<std::string> answers;
    while (answers.size() < 30)
        answers.push_back(unruly.open());
    EXPECT_GE(std::ranges::count(answers, ""), 15);
    EXPECT_GE(std::ranges::count(answers, tooOften), 5);
    EXPECT_TRUE(hasGot(typist.stop()));
    // Another one that keeps no account of these, or the next cases pay for them.
    const pid_t pid = service_.pid();
    service_.signal(SIGTERM);
    ASSERT_TRUE(waitUntil([&] { return service_.pid() != pid; }));
    service_.start();
}

}  // namespace quillmere::machine
