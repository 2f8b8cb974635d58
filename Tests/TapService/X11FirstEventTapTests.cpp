#include "Quillmere/Platform/Linux/Tap/X11FirstEventTap.h"

#include "Tests/Support/FakeEventTap.h"
#include "Tests/Support/WaitUntil.h"
#include "Tests/TapService/TapServiceTest.h"

#include <QCoreApplication>

#include <algorithm>
#include <optional>
#include <vector>

namespace quillmere {
namespace {

using support::waitUntil;

const Shortcut controlSpace{Shortcut::space, Modifiers::control};
const KeyInterest both{.shortcuts = {Shortcut::fn, controlSpace}};
const KeyInterest withoutFn{.shortcuts = {controlSpace}};

class X11FirstTapTest : public TapServiceTest {
protected:
    bool install(const KeyInterest& interest) {
        auto server = std::make_unique<FakeEventTap>();
        server_ = server.get();
        server_->allowed = serverIsAllowed_;
        tap_.emplace(std::move(server), [this] {
            ++services_;
            return std::make_unique<ServiceEventTap>(client_, support::patience);
        });
        tap_->setInterest(interest);
        return tap_->install([this](const KeyEventFields& event) {
            events_.push_back(event);
            return event.type == KeyEventType::keyDown ? InterceptDecision::swallow : InterceptDecision::pass;
        });
    }

    bool serviceTakesFn() {
        return waitUntil([this] { return server_->interest == withoutFn; });
    }

    std::ptrdiff_t count(std::uint32_t type) const { return std::ranges::count(events_, type, &KeyEventFields::type); }

    /// Whether a tap of Fn on the keyboard is told, as often as the keyboard
    /// has been read by then.
    bool fnIsTold() {
        events_.clear();
        return waitUntil([this] {
            host->type("+fn -fn");
            return count(KeyEventType::flagsChanged) >= 2;
        });
    }

    QDBusConnection client_ = bus.connect();
    bool serverIsAllowed_ = true;
    FakeEventTap* server_ = nullptr;
    int services_ = 0;
    std::vector<KeyEventFields> events_;
    std::optional<X11FirstEventTap> tap_;
};

TEST_F(X11FirstTapTest, WithoutFnTheServiceIsNotEvenAsked) {
    host->grant();
    EXPECT_TRUE(install(withoutFn));
    EXPECT_EQ(services_, 0);
    EXPECT_EQ(server_->interest, withoutFn);
    tap_->setInterest(both);
    EXPECT_EQ(services_, 1);
    EXPECT_TRUE(serviceTakesFn());
}

TEST_F(X11FirstTapTest, FnComesFromTheServiceAndNoKeyboardIsTaken) {
    host->grant();
    EXPECT_TRUE(install(both));
    EXPECT_TRUE(serviceTakesFn());
    EXPECT_TRUE(fnIsTold());
    host->type("+ctrl +space -space -ctrl");
    EXPECT_FALSE(host->isGrabbed());
    EXPECT_EQ(host->output(), "");
    EXPECT_EQ(count(KeyEventType::keyDown), 0);
}

TEST_F(X11FirstTapTest, ARecordingTakesNoKeyboardEither) {
    host->grant();
    EXPECT_TRUE(install({.everyKey = true}));
    EXPECT_TRUE(fnIsTold());
    EXPECT_TRUE(server_->interest.everyKey);
    EXPECT_FALSE(host->isGrabbed());
}

TEST_F(X11FirstTapTest, WithoutTheServicesConsentFnIsTheServersAsWell) {
    EXPECT_TRUE(install(both));
    EXPECT_TRUE(waitUntil([this] { return services_ == 1 && !host->isBusy(); }));
    EXPECT_EQ(server_->interest, both);
    EXPECT_EQ(server_->callback({.type = KeyEventType::flagsChanged}), InterceptDecision::pass);
    EXPECT_EQ(count(KeyEventType::flagsChanged), 1);
}

TEST_F(X11FirstTapTest, WithoutTheServiceFnIsTheServersAsWell) {
    host.reset();
    EXPECT_TRUE(install(both));
    EXPECT_EQ(server_->interest, both);
}

TEST_F(X11FirstTapTest, KeysAreDecidedFromTheServerAndItsFnIsNot) {
    host->grant();
    EXPECT_TRUE(install(both));
    ASSERT_TRUE(serviceTakesFn());
    EXPECT_EQ(server_->callback({.type = KeyEventType::keyDown, .keyCode = Shortcut::space}),
              InterceptDecision::swallow);
    EXPECT_EQ(server_->callback({.type = KeyEventType::flagsChanged, .flags = KeyEventFlags::secondaryFn}),
              InterceptDecision::pass);
    EXPECT_EQ(count(KeyEventType::keyDown), 1);
    EXPECT_EQ(count(KeyEventType::flagsChanged), 0);
}

TEST_F(X11FirstTapTest, WhenTheServiceTakesItsTapAwayFnIsTheServersAgain) {
    host->grant();
    EXPECT_TRUE(install(both));
    ASSERT_TRUE(serviceTakesFn());
    host->revoke();
    EXPECT_TRUE(waitUntil([this] { return server_->interest == both; }));
    server_->callback({.type = KeyEventType::flagsChanged});
    EXPECT_GE(count(KeyEventType::flagsChanged), 1);
    tap_->setInterest(withoutFn);
    EXPECT_EQ(server_->interest, withoutFn);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(host->tapCount(), 0U);
}

TEST_F(X11FirstTapTest, EnabledBothGoOn) {
    host->grant();
    EXPECT_TRUE(install(both));
    ASSERT_TRUE(serviceTakesFn());
    tap_->enable();
    EXPECT_EQ(server_->enableCalls, 1);
    EXPECT_TRUE(fnIsTold());
}

TEST_F(X11FirstTapTest, AServerThatRefusesIsNoTap) {
    host->grant();
    serverIsAllowed_ = false;
    EXPECT_FALSE(install(both));
    EXPECT_EQ(services_, 0);
}

}  // namespace
}  // namespace quillmere
