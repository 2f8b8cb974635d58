#include "TapService/SessionLocks.h"

#include "Tests/Support/SessionBus.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/WaitUntil.h"
#include "Tests/TapService/FakeLogin.h"
#include "Tests/TapService/TapLoop.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

namespace quillmere {
namespace {

using support::waitUntil;

class SessionLocksTest : public testing::Test {
protected:
    SessionLocksTest() { EXPECT_TRUE(locks.start()); }

    tap::Bus connect() const {
        sd_bus* connection = nullptr;
        if (sd_bus_new(&connection) < 0) throw std::runtime_error("no bus");
        tap::Bus owner(connection);
        if (sd_bus_set_address(connection, bus.address().c_str()) < 0 || sd_bus_set_bus_client(connection, 1) < 0
            || sd_bus_start(connection) < 0
            || sd_bus_attach_event(connection, loop.get(), SD_EVENT_PRIORITY_NORMAL) < 0)
            throw std::runtime_error("no connection to the bus");
        return owner;
    }
    /// Both sides of the bus are in this thread.
    bool becomes(const std::function<bool()>& condition) {
        return waitUntil([&] {
            loop.run();
            return condition();
        });
    }
    bool becomesLocked(bool isLocked) {
        return becomes([&] { return locks.isLocked("a") == isLocked; });
    }
    bool isAsked(int times) {
        return becomes([&] { return login->questions >= times; });
    }

    support::TemporaryFolder folder;
    support::SessionBus bus{folder.path(), support::baseEnvironment(folder.path().string())};
    std::unique_ptr<FakeLogin> login = std::make_unique<FakeLogin>(bus.connect());
    tap::TapLoop loop;
    tap::Bus connection = connect();
    tap::SessionLocks locks{connection.get()};
};

TEST_F(SessionLocksTest, ASessionIsLockedUntilLoginTellsThatItIsNot) {
    login->waits = true;
    locks.watch("a");
    ASSERT_TRUE(isAsked(1));
    EXPECT_TRUE(locks.isLocked("a"));
    login->waits = false;
    login->answer(false);
    EXPECT_TRUE(becomesLocked(false));
    EXPECT_TRUE(locks.isLocked("b"));
}

TEST_F(SessionLocksTest, ALockAndItsEndAreFollowed) {
    locks.watch("a");
    ASSERT_TRUE(becomesLocked(false));
    login->setLocked(true);
    EXPECT_TRUE(becomesLocked(true));
    login->setLocked(false);
    EXPECT_TRUE(becomesLocked(false));
}

TEST_F(SessionLocksTest, ASignalInLoginsNameFromSomebodyElseAsksNothing) {
    locks.watch("a");
    ASSERT_TRUE(becomesLocked(false));
    const int questions = login->questions;
    const QDBusConnection stranger = bus.connect();
    const char* name = nullptr;
    ASSERT_GE(sd_bus_get_unique_name(connection.get(), &name), 0);
    for (int count = 0; count < 100; ++count)
        FakeLogin::sendChange(stranger, name);
    // It comes after all of those.
    login->setLocked(true);
    EXPECT_TRUE(becomesLocked(true));
    EXPECT_LE(login->questions, questions + 2);
}

TEST_F(SessionLocksTest, AQuestionInFlightIsNotDroppedAndAskedOnceMoreAfterIt) {
    locks.watch("a");
    ASSERT_TRUE(becomesLocked(false));

    // A lock that comes while the question about an earlier change is open.
    login->waits = true;
    const int before = login->questions;
    login->setLocked(false);
    ASSERT_TRUE(isAsked(before + 1));
    login->setLocked(true);
    login->setLocked(true);
    login->setLocked(true);
    loop.run();
    login->answer(false);
    ASSERT_TRUE(isAsked(before + 2));
    login->answer(true);
    EXPECT_TRUE(becomesLocked(true));
    EXPECT_EQ(login->questions, before + 2);
}

TEST_F(SessionLocksTest, AnotherLoginServiceIsAskedAnew) {
    locks.watch("a");
    ASSERT_TRUE(becomesLocked(false));
    login.reset();
    login = std::make_unique<FakeLogin>(bus.connect());
    login->setLocked(true);
    EXPECT_TRUE(becomesLocked(true));
    login->setLocked(false);
    EXPECT_TRUE(becomesLocked(false));
}

}  // namespace
}  // namespace quillmere
