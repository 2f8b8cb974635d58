#include "Quillmere/Platform/Linux/Tap/Service/ServiceEventTap.h"

#include "Quillmere/Platform/Linux/Tap/FallbackEventTap.h"
#include "Quillmere/Platform/Linux/Tap/Service/ServicePermissionRequest.h"
#include "Tests/Support/FakeEventTap.h"
#include "Tests/Support/FakeWorkspace.h"
#include "Tests/Support/WaitUntil.h"
#include "Tests/TapService/TapServiceTest.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTimer>

#include <chrono>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace quillmere {
namespace {

using support::waitUntil;

const KeyInterest controlSpace{.shortcuts = {{Shortcut::space, Modifiers::control}}};

/// What a callback was told, and how it answers.
struct Listener {
    InterceptDecision answer = InterceptDecision::swallow;
    std::vector<KeyEventFields> events;
    /// Done before the answer.
    std::function<void()> pause;

    EventTap::Callback callback(EventTap& tap) {
        return [this, &tap](const KeyEventFields& event) {
            events.push_back(event);
            if (event.type == KeyEventType::tapDisabledByTimeout) tap.enable();
            if (pause && event.type == KeyEventType::keyDown) pause();
            return event.type == KeyEventType::keyDown ? answer : InterceptDecision::pass;
        };
    }
    std::size_t count(std::uint32_t type) const {
        return static_cast<std::size_t>(std::ranges::count(events, type, &KeyEventFields::type));
    }
};

/// The state is the first word behind the name, which is in brackets
/// (proc_pid_stat(5)).
bool isMainThreadAsleep() {
    std::ifstream file("/proc/self/stat");
    std::string line;
    std::getline(file, line);
    return line.substr(line.rfind(')')).starts_with(") S");
}

class ServiceEventTapTest : public TapServiceTest {
protected:
    void install() {
        host->grant();
        tap.emplace(client, support::patience);
        tap->setInterest(controlSpace);
        ASSERT_TRUE(tap->install(listener.callback(*tap)));
        ASSERT_TRUE(becomesGrabbed());
    }
    bool becomesGrabbed() {
        return waitUntil([this] { return host->isGrabbed(); });
    }
    bool comesOut(const std::string& keys) {
        return waitUntil([&] { return host->output() == keys; });
    }
    bool isTold(std::uint32_t type, std::size_t times = 1) {
        return waitUntil([&] { return listener.count(type) >= times; });
    }

    QDBusConnection client = bus.connect();
    Listener listener;
    std::optional<ServiceEventTap> tap;
};

TEST_F(ServiceEventTapTest, AGrantedUsersTapIsThereWithTheFirstProbe) {
    install();
}

TEST_F(ServiceEventTapTest, WithoutAGrantItIsRefusedAndComesWithALaterProbe) {
    tap.emplace(client, support::patience);
    EXPECT_FALSE(tap->install(listener.callback(*tap)));
    EXPECT_FALSE(tap->install(listener.callback(*tap)));
    host->grant();
    EXPECT_TRUE(waitUntil([this] { return tap->install(listener.callback(*tap)); }));
}

TEST_F(ServiceEventTapTest, AskedForInTimeItIsThereWithTheNextProbe) {
    tap.emplace(client, support::patience);
    EXPECT_FALSE(tap->install(listener.callback(*tap)));
    host->grant();
    tap->request();
    EXPECT_TRUE(waitUntil([this] { return host->tapCount() == 1; }));
    EXPECT_TRUE(waitUntil([this] { return tap->install(listener.callback(*tap)); }));
}

TEST_F(ServiceEventTapTest, WithoutTheServiceItIsRefusedAtOnce) {
    host.reset();
    tap.emplace(client, support::patience);
    EXPECT_FALSE(tap->install(listener.callback(*tap)));
}

TEST_F(ServiceEventTapTest, AServiceThatIsStillStartingIsWaitedFor) {
    host->grant();
    auto starting = host->stall();
    tap.emplace(client, support::patience);
    const std::jthread start([&] {
        while (!isMainThreadAsleep())
            std::this_thread::yield();
        starting.reset();
    });
    EXPECT_TRUE(tap->install(listener.callback(*tap)));
}

TEST_F(ServiceEventTapTest, AServiceThatNeedsTooLongIsNotWaitedFor) {
    host->grant();
    auto starting = host->stall();
    tap.emplace(client, std::chrono::milliseconds(100));
    EXPECT_FALSE(tap->install(listener.callback(*tap)));
    EXPECT_TRUE(tap->isStarting());
    starting.reset();
    EXPECT_TRUE(waitUntil([&] { return tap->install(listener.callback(*tap)); }));
}

TEST_F(ServiceEventTapTest, WithoutABusItIsRefusedAtOnce) {
    tap.emplace(QDBusConnection("no such connection"), support::patience);
    EXPECT_FALSE(tap->install(listener.callback(*tap)));
    tap->enable();
    tap->setInterest(controlSpace);
}

TEST_F(ServiceEventTapTest, ARecordingIsAskedForAnewAsLongAsItLastsAndNoLonger) {
    constexpr auto limit = std::chrono::milliseconds(200);
    host.reset();
    host.emplace(bus.address(), folder.path(), limit);
    host->grant();
    tap.emplace(client, support::patience, limit / 4);
    tap->setInterest({.everyKey = true});
    ASSERT_TRUE(tap->install(listener.callback(*tap)));
    QElapsedTimer time;
    time.start();
    ASSERT_TRUE(waitUntil([&] { return time.hasExpired(3 * limit.count()); }));
    EXPECT_TRUE(becomesGrabbed());
    tap->setInterest({});
    EXPECT_TRUE(waitUntil([&] { return !host->isGrabbed(); }));
    time.restart();
    ASSERT_TRUE(waitUntil([&] { return time.hasExpired(limit.count()); }));
    EXPECT_FALSE(host->isGrabbed());
}

TEST_F(ServiceEventTapTest, TheCallbackSwallowsAndPasses) {
    install();
    host->type("+ctrl +space");
    ASSERT_TRUE(isTold(KeyEventType::keyDown));
    EXPECT_EQ(listener.events.front().keyCode, Shortcut::space);
    EXPECT_EQ(listener.events.front().flags, KeyEventFlags::control);
    host->type("-space");
    ASSERT_TRUE(isTold(KeyEventType::keyUp));
    listener.answer = InterceptDecision::pass;
    host->type("+space");
    ASSERT_TRUE(isTold(KeyEventType::keyDown, 2));
    host->type("-space -ctrl");
    EXPECT_TRUE(comesOut("+ctrl +space -space -ctrl"));
}

TEST_F(ServiceEventTapTest, NothingOfNoInterestIsTold) {
    install();
    host->type("+a -a +ctrl +k -k -ctrl +fn -fn");
    host->type("+ctrl +space");
    ASSERT_TRUE(isTold(KeyEventType::keyDown));
    EXPECT_EQ(listener.events.size(), 1U);
    host->type("-space -ctrl");
}

TEST_F(ServiceEventTapTest, InterestChangesWithTheNextPress) {
    install();
    tap->setInterest({});
    EXPECT_TRUE(waitUntil([this] { return !host->isGrabbed(); }));
    tap->setInterest({.everyKey = true});
    EXPECT_TRUE(becomesGrabbed());
    host->type("+a");
    EXPECT_TRUE(isTold(KeyEventType::keyDown));
    host->type("-a");
    EXPECT_TRUE(isTold(KeyEventType::keyUp));
    EXPECT_EQ(host->output(), "");
}

TEST_F(ServiceEventTapTest, ALoneTapOfFnIsTold) {
    install();
    tap->setInterest({.shortcuts = {Shortcut::fn, controlSpace.shortcuts[0]}});
    // The interest is in place when a shortcut told after it is.
    host->type("+ctrl +space");
    ASSERT_TRUE(isTold(KeyEventType::keyDown));
    host->type("-space -ctrl");
    ASSERT_TRUE(waitUntil([this] {
        host->type("+fn +a -a -fn");
        return waitUntil([this] { return listener.count(KeyEventType::systemDefined) > 0; }, std::chrono::seconds(1));
    }));
    EXPECT_TRUE(isTold(KeyEventType::flagsChanged, 2));
}

TEST_F(ServiceEventTapTest, ACallbackThatTakesTooLongLetsTheKeyPassAndTheTapIsOnAgain) {
    install();
    listener.pause = [this] {
        // The service gives up meanwhile.
        const auto end = std::chrono::steady_clock::now() + support::patience;
        while (host->output() != "+ctrl +space" && std::chrono::steady_clock::now() < end)
            std::this_thread::yield();
    };
    host->type("+ctrl +space");
    EXPECT_TRUE(isTold(KeyEventType::tapDisabledByTimeout));
    listener.pause = {};
    host->type("-space -ctrl");
    EXPECT_EQ(host->output(), "+ctrl +space -space -ctrl");
    EXPECT_TRUE(becomesGrabbed());
    host->type("+ctrl +space");
    EXPECT_TRUE(isTold(KeyEventType::keyDown, 2));
    host->type("-space -ctrl");
    EXPECT_TRUE(comesOut("+ctrl +space -space -ctrl +ctrl -ctrl"));
}

TEST_F(ServiceEventTapTest, AKeyThatHasPassedBeforeTheMainThreadLookedIsNotTold) {
    install();
    host->type("+ctrl +space");
    // This thread is busy until the service has given up.
    const auto end = std::chrono::steady_clock::now() + support::patience;
    while (host->output() != "+ctrl +space" && std::chrono::steady_clock::now() < end)
        std::this_thread::yield();
    EXPECT_TRUE(isTold(KeyEventType::tapDisabledByTimeout));
    EXPECT_EQ(listener.count(KeyEventType::keyDown), 0U);
    host->type("-space -ctrl");
}

TEST_F(ServiceEventTapTest, ACallbackWithAnEventLoopOfItsOwnIsNotTurnedUpsideDown) {
    install();
    listener.pause = [] { QCoreApplication::processEvents(); };
    tap->setInterest({.everyKey = true});
    host->type("+ctrl +space");
    ASSERT_TRUE(isTold(KeyEventType::keyDown));
    host->type("-space +space");
    ASSERT_TRUE(isTold(KeyEventType::keyDown, 2));
    host->type("-space -ctrl");
    ASSERT_TRUE(isTold(KeyEventType::keyUp, 2));
    EXPECT_TRUE(comesOut("+ctrl -ctrl"));
}

TEST_F(ServiceEventTapTest, AfterTheServiceHasBeenRestartedItIsThereAgain) {
    install();
    host.reset();
    startService();
    EXPECT_TRUE(becomesGrabbed());
    host->type("+ctrl +space");
    EXPECT_TRUE(isTold(KeyEventType::keyDown));
    host->type("-space -ctrl");
    EXPECT_TRUE(comesOut("+ctrl -ctrl"));
}

TEST_F(ServiceEventTapTest, AnotherProgramOfTheSessionIsNotFoughtOverTheTap) {
    install();
    Listener second;
    ServiceEventTap other(client, support::patience);
    other.setInterest(controlSpace);
    ASSERT_TRUE(other.install(second.callback(other)));
    host->type("+ctrl +space");
    ASSERT_TRUE(waitUntil([&] { return second.count(KeyEventType::keyDown) == 1; }));
    host->type("-space -ctrl");
    EXPECT_TRUE(listener.events.empty());
}

TEST_F(ServiceEventTapTest, FnDoesNotStayDownWhenTheServiceEnds) {
    install();
    tap->setInterest({.shortcuts = {Shortcut::fn}});
    ASSERT_TRUE(waitUntil([this] {
        host->type("-fn +fn");
        return waitUntil([this] { return listener.count(KeyEventType::flagsChanged) > 0; }, std::chrono::seconds(1));
    }));
    host.reset();
    ASSERT_TRUE(isTold(KeyEventType::systemDefined));
    EXPECT_EQ(listener.events.back().type, KeyEventType::flagsChanged);
    EXPECT_EQ(listener.events.back().flags, 0U);
}

TEST_F(ServiceEventTapTest, ARevokedTapIsLost) {
    install();
    int losses = 0;
    QObject::connect(&*tap, &ServiceEventTap::lost, [&losses] { ++losses; });
    host->revoke();
    EXPECT_TRUE(waitUntil([&] { return losses > 0; }));
    EXPECT_FALSE(host->isGrabbed());
    host->grant();
    EXPECT_TRUE(becomesGrabbed());
}

// The choice between the two taps

TEST_F(ServiceEventTapTest, AnInterestThatIsToldAgainCostsTheServiceNothing) {
    install();
    // As a slider that is dragged for half a minute tells it; the service
    // would cut off whoever sends so much.
    for (int step = 0; step < 5000; ++step)
        tap->setInterest(controlSpace);
    host->type("+ctrl +space -space -ctrl");
    EXPECT_TRUE(comesOut("+ctrl -ctrl"));
    EXPECT_EQ(host->tapCount(), 1U);
}

class FallbackTapTest : public ServiceEventTapTest {
protected:
    void make(std::chrono::milliseconds firstWait = support::patience) {
        auto second = std::make_unique<FakeEventTap>();
        displayServers = second.get();
        auto first = std::make_unique<ServiceEventTap>(client, firstWait);
        service = first.get();
        choice.emplace(std::move(first), std::move(second));
        choice->setInterest(controlSpace);
    }
    bool installChoice() { return choice->install(listener.callback(*choice)); }

    ServiceEventTap* service = nullptr;
    FakeEventTap* displayServers = nullptr;
    std::optional<FallbackEventTap> choice;
};

TEST_F(FallbackTapTest, TheServiceComesFirst) {
    host->grant();
    make();
    EXPECT_TRUE(installChoice());
    EXPECT_EQ(displayServers->installCalls, 0);
    EXPECT_TRUE(becomesGrabbed());
}

TEST_F(FallbackTapTest, WithoutTheServicesConsentTheDesktopsTapIsTakenUntilItComes) {
    make();
    EXPECT_TRUE(installChoice());
    EXPECT_EQ(displayServers->interest, controlSpace);
    choice->setInterest({.everyKey = true});
    EXPECT_TRUE(displayServers->interest.everyKey);
    choice->enable();
    EXPECT_EQ(displayServers->enableCalls, 1);
    choice->setInterest(controlSpace);
    host->grant();
    service->request();
    EXPECT_TRUE(becomesGrabbed());
    EXPECT_EQ(displayServers->interest, KeyInterest{}) << "with both, each press would switch twice";
    host->type("+ctrl +space");
    EXPECT_TRUE(isTold(KeyEventType::keyDown));
}

TEST_F(FallbackTapTest, WhatTheDesktopsTapDoesNotHearIsMissingOnlyWhileItIsTheTap) {
    make();
    displayServers->hearsFn = false;
    ASSERT_TRUE(installChoice());
    EXPECT_TRUE(choice->deliversAll());
    choice->setInterest({.shortcuts = {Shortcut::fn}});
    EXPECT_FALSE(choice->deliversAll());
    EXPECT_FALSE(installChoice());
    host->grant();
    EXPECT_TRUE(waitUntil([this] { return installChoice(); }));
    EXPECT_TRUE(choice->deliversAll());
}

TEST_F(FallbackTapTest, ItTellsWhichIsTheTap) {
    make();
    int changes = 0;
    QObject::connect(&*choice, &FallbackEventTap::tapChanged, [&changes] { ++changes; });
    ASSERT_TRUE(installChoice());
    EXPECT_FALSE(choice->usesService());
    EXPECT_EQ(changes, 1);
    host->grant();
    service->request();
    EXPECT_TRUE(waitUntil([&] { return choice->usesService(); }));
    EXPECT_EQ(changes, 2);
}

TEST_F(FallbackTapTest, WithNeitherThereIsNoTapUntilThePermissionComes) {
    make();
    displayServers->allowed = false;
    EXPECT_FALSE(installChoice());
    EXPECT_FALSE(installChoice());
    host->grant();
    EXPECT_TRUE(waitUntil([this] { return installChoice(); }));
    EXPECT_TRUE(becomesGrabbed());
}

TEST_F(FallbackTapTest, ATapThatHearsOnlyAPartServesUntilTheServiceHearsAll) {
    make();
    displayServers->allowed = false;
    EXPECT_FALSE(installChoice());
    EXPECT_EQ(displayServers->interest, controlSpace);
    choice->setInterest({.everyKey = true});
    EXPECT_TRUE(displayServers->interest.everyKey);
    choice->setInterest(controlSpace);
    EXPECT_EQ(displayServers->interest, controlSpace);
    host->grant();
    EXPECT_TRUE(waitUntil([this] { return installChoice(); }));
    EXPECT_EQ(displayServers->interest, KeyInterest{}) << "with both, each press would switch twice";
    host->revoke();
    EXPECT_TRUE(waitUntil([this] { return displayServers->interest == controlSpace; }));
    choice->setInterest({});
    EXPECT_EQ(displayServers->interest, KeyInterest{});
}

TEST_F(FallbackTapTest, ATapThatTheServiceTakesAwayIsReplaced) {
    host->grant();
    make();
    ASSERT_TRUE(installChoice());
    host->revoke();
    EXPECT_TRUE(waitUntil([this] { return displayServers->installCalls == 1; }));
    EXPECT_EQ(displayServers->interest, controlSpace);
}

TEST_F(FallbackTapTest, ATapThatTheServiceGivesBackIsTheOnlyOneAgain) {
    host->grant();
    make();
    ASSERT_TRUE(installChoice());
    host->revoke();
    ASSERT_TRUE(waitUntil([this] { return displayServers->interest == controlSpace; }));
    host->grant();
    EXPECT_TRUE(becomesGrabbed());
    EXPECT_EQ(displayServers->interest, KeyInterest{});
    host->type("+ctrl +space");
    EXPECT_TRUE(isTold(KeyEventType::keyDown));
}

TEST_F(FallbackTapTest, AServiceThatNeedsLongToStartTakesOverWhenItIsThere) {
    host->grant();
    auto starting = host->stall();
    make(std::chrono::milliseconds(100));
    ASSERT_TRUE(installChoice());
    ASSERT_EQ(displayServers->installCalls, 1);
    EXPECT_EQ(displayServers->interest, controlSpace);
    starting.reset();
    EXPECT_TRUE(becomesGrabbed());
    // With both, each press would switch twice.
    EXPECT_EQ(displayServers->interest, KeyInterest{});
    const KeyInterest optionSpace{.shortcuts = {{Shortcut::space, Modifiers::option}}};
    choice->setInterest({});
    EXPECT_TRUE(waitUntil([this] { return !host->isGrabbed(); }));
    choice->setInterest(optionSpace);
    EXPECT_TRUE(becomesGrabbed());
    EXPECT_EQ(displayServers->interest, KeyInterest{});
    host->type("+alt +space -space -alt");
    EXPECT_TRUE(isTold(KeyEventType::keyUp));

    host->revoke();
    EXPECT_TRUE(waitUntil([&] { return displayServers->interest == optionSpace; }));
    EXPECT_EQ(displayServers->installCalls, 1);
    EXPECT_EQ(displayServers->enableCalls, 1);
}

// Asking for permission

class PermissionRequestTest : public TapServiceTest {
protected:
    QDBusConnection client = bus.connect();
    FakeAuthority authority{bus.connect()};
    FakeWorkspace workspace;
    QUrl page = QUrl::fromLocalFile("/page");
    ServicePermissionRequest request{workspace, page, client};
};

TEST_F(PermissionRequestTest, TheDirectionsSayWhatTheButtonWillAskForAndWhatFor) {
    EXPECT_TRUE(request.directions().contains("administrator's password"));
    EXPECT_TRUE(request.directions().contains("your shortcut keys, Fn among them"));
    host.reset();
    EXPECT_TRUE(request.directions().contains("how to install the keyboard service"));
    EXPECT_FALSE(request.directions().contains("password"));
}

TEST_F(PermissionRequestTest, TheServiceAsksTheUserAndAYesIsTold) {
    int grants = 0;
    request.onGranted = [&grants] { ++grants; };
    request.open();
    EXPECT_TRUE(waitUntil([&] { return grants == 1; }));
    EXPECT_TRUE(host->isGranted());
    EXPECT_TRUE(workspace.opened.empty());
}

TEST_F(PermissionRequestTest, ANoLeavesEverythingAsItIsAndCanBeAskedAgain) {
    authority.answer = FakeAuthority::Answer::no;
    request.onGranted = [] { ADD_FAILURE(); };
    request.open();
    EXPECT_TRUE(waitUntil([this] { return authority.questions.size() == 1; }));
    EXPECT_TRUE(waitUntil([this] {
        request.open();
        return authority.questions.size() == 2;
    }));
    EXPECT_TRUE(workspace.opened.empty());
}

TEST_F(PermissionRequestTest, WhileTheDialogIsOpenASecondPressDoesNothing) {
    authority.answer = FakeAuthority::Answer::ask;
    request.open();
    EXPECT_TRUE(waitUntil([this] { return authority.questions.size() == 1; }));
    request.open();
    EXPECT_FALSE(waitUntil([this] { return authority.questions.size() > 1; }, std::chrono::milliseconds(200)));
    EXPECT_TRUE(workspace.opened.empty());
    authority.finish(false);
    EXPECT_TRUE(waitUntil([this] { return !host->isBusy(); }));
}

TEST_F(PermissionRequestTest, WithoutTheServiceThePageOpens) {
    host.reset();
    request.open();
    EXPECT_TRUE(waitUntil([this] { return !workspace.opened.empty(); }));
    EXPECT_EQ(workspace.opened, std::vector<QUrl>{page});
}

TEST_F(PermissionRequestTest, WithoutABusThePageOpens) {
    ServicePermissionRequest lonely(workspace, page, QDBusConnection("no such connection"));
    lonely.open();
    EXPECT_EQ(workspace.opened, std::vector<QUrl>{page});
}

TEST_F(PermissionRequestTest, WithoutPolkitThePageOpens) {
    authority.answer = FakeAuthority::Answer::error;
    request.open();
    EXPECT_TRUE(waitUntil([this] { return !workspace.opened.empty(); }));
}

}  // namespace
}  // namespace quillmere
