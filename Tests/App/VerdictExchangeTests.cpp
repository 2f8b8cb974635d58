#include "Quillmere/Platform/Linux/Sources/SwitchWait.h"
#include "Quillmere/Platform/Linux/Tap/X11/VerdictExchange.h"

#include <QCoreApplication>
#include <QThread>

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <thread>
#include <vector>

namespace quillmere {

namespace {

using namespace std::chrono_literals;

constexpr auto endlessly = 60'000ms;
constexpr auto briefly = 20ms;

KeyEventFields press(std::int64_t key, std::int64_t autorepeat = 0) {
    return {.type = KeyEventType::keyDown, .keyCode = key, .autorepeat = autorepeat};
}

KeyEventFields release(std::int64_t key) {
    return {.type = KeyEventType::keyUp, .keyCode = key};
}

class VerdictExchangeTest : public testing::Test {
protected:
    EventTap::Callback callback() {
        return [this](const KeyEventFields& event) {
            EXPECT_EQ(std::this_thread::get_id(), mainThread);
            delivered.push_back(event);
            if (onDelivery) onDelivery(event);
            return decide(event.keyCode);
        };
    }

    /// Runs the main thread's event loop until the condition holds.
    template <typename Condition>
    static bool runUntil(Condition condition) {
        const auto end = std::chrono::steady_clock::now() + 20s;
        while (!condition() && std::chrono::steady_clock::now() < end)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        return condition();
    }
    template <typename T>
    static bool isReady(const std::future<T>& future) {
        return future.wait_for(0s) == std::future_status::ready;
    }

    const std::thread::id mainThread = std::this_thread::get_id();
    std::function<InterceptDecision(std::int64_t)> decide = [](std::int64_t key) {
        return key == 49 ? InterceptDecision::swallow : InterceptDecision::pass;
    };
    std::vector<KeyEventFields> delivered;
    std::function<void(const KeyEventFields&)> onDelivery;
};

TEST_F(VerdictExchangeTest, TheVerdictIsTheCallbacks) {
    VerdictExchange exchange(callback(), endlessly);
    auto verdicts = std::async(std::launch::async, [&] {
        return std::vector{exchange.ask(press(49)), exchange.ask(press(0)), exchange.ask(press(49))};
    });
    ASSERT_TRUE(runUntil([&] { return isReady(verdicts); }));
    using enum InterceptDecision;
    EXPECT_EQ(verdicts.get(), (std::vector{swallow, pass, swallow}));
}

TEST_F(VerdictExchangeTest, WhatIsToldAndAskedArrivesInOrder) {
    VerdictExchange exchange(callback(), endlessly);
    const auto done = std::async(std::launch::async, [&] {
        exchange.tell(press(1));
        exchange.tell(release(1));
        exchange.ask(press(2));
        exchange.tell(release(2));
    });
    ASSERT_TRUE(runUntil([&] { return delivered.size() == 4 && isReady(done); }));
    const std::vector<std::int64_t> expected{1, 1, 2, 2};
    for (std::size_t i = 0; i < expected.size(); ++i)
        EXPECT_EQ(delivered[i].keyCode, expected[i]);
}

TEST_F(VerdictExchangeTest, WithoutAVerdictInTimeTheKeyPassesAndIsNeverDelivered) {
    VerdictExchange exchange(callback(), briefly);
    auto verdict = std::async(std::launch::async, [&] { return exchange.ask(press(49)); });
    // The main thread is busy: its event loop does not run.
    EXPECT_EQ(verdict.get(), InterceptDecision::pass);
    EXPECT_FALSE(exchange.isEnabled());
    ASSERT_TRUE(runUntil([&] { return !delivered.empty(); }));
    ASSERT_EQ(delivered.size(), 1U);
    EXPECT_EQ(delivered[0].type, KeyEventType::tapDisabledByTimeout);
}

TEST_F(VerdictExchangeTest, WhileDisabledNothingIsAskedAndOnlyReleasesAreDelivered) {
    VerdictExchange exchange(callback(), briefly);
    std::async(std::launch::async, [&] { exchange.ask(press(49)); }).get();
    EXPECT_EQ(exchange.ask(press(49)), InterceptDecision::pass);
    EXPECT_FALSE(exchange.tell({.type = KeyEventType::flagsChanged}));
    EXPECT_TRUE(exchange.tell(release(49)));
    ASSERT_TRUE(runUntil([&] { return delivered.size() == 2; }));
    EXPECT_EQ(delivered[0].type, KeyEventType::tapDisabledByTimeout);
    EXPECT_EQ(delivered[1].type, KeyEventType::keyUp);
}

TEST_F(VerdictExchangeTest, OnceEnabledAgainItAsksAgain) {
    VerdictExchange exchange(callback(), briefly);
    std::async(std::launch::async, [&] { exchange.ask(press(49)); }).get();
    onDelivery = [&](const KeyEventFields& event) {
        if (event.type == KeyEventType::tapDisabledByTimeout) exchange.enable();
    };
    ASSERT_TRUE(runUntil([&] { return exchange.isEnabled(); }));
    std::atomic<bool> isSwallowed = false;
    std::atomic<bool> isStopped = false;
    // The patience of this exchange is short, so a slow machine may need more than one.
    std::thread asker([&] {
        while (!isSwallowed && !isStopped)
            isSwallowed = exchange.ask(press(49)) == InterceptDecision::swallow;
    });
    EXPECT_TRUE(runUntil([&] { return isSwallowed.load(); }));
    isStopped = true;
    asker.join();
}

TEST_F(VerdictExchangeTest, AVerdictThatComesTooLateCountsForNothing) {
    VerdictExchange exchange(callback(), briefly);
    std::future<InterceptDecision> verdict;
    onDelivery = [&](const KeyEventFields& event) {
        if (event.type != KeyEventType::keyDown) return;
        EXPECT_TRUE(exchange.isDelivering());
        EXPECT_EQ(verdict.get(), InterceptDecision::pass);
    };
    verdict = std::async(std::launch::async, [&] { return exchange.ask(press(49)); });
    ASSERT_TRUE(runUntil([&] { return !exchange.isEnabled() && !delivered.empty(); }));
    EXPECT_FALSE(exchange.isDelivering());
    ASSERT_TRUE(runUntil([&] { return delivered.back().type == KeyEventType::tapDisabledByTimeout; }));
}

TEST_F(VerdictExchangeTest, ClosingFreesWhoeverWaits) {
    VerdictExchange exchange(callback(), endlessly);
    std::promise<void> isAsking;
    auto verdict = std::async(std::launch::async, [&] {
        isAsking.set_value();
        return exchange.ask(press(49));
    });
    isAsking.get_future().wait();
    exchange.close();
    EXPECT_EQ(verdict.get(), InterceptDecision::pass);
    QCoreApplication::processEvents();
    EXPECT_TRUE(delivered.empty());
    EXPECT_TRUE(exchange.isEnabled()) << "an end is no time-out";
}

TEST_F(VerdictExchangeTest, TheRepeatsOfAHeldKeyDoNotPileUp) {
    VerdictExchange exchange(callback(), endlessly);
    for (int i = 0; i < 1000; ++i)
        exchange.tell(press(49, 1));
    exchange.tell(press(50, 1));
    exchange.tell(release(49));
    exchange.tell(press(49, 1));
    ASSERT_TRUE(runUntil([&] { return delivered.size() == 4; }));
}

TEST_F(VerdictExchangeTest, AnEventLoopInsideTheCallbackStillDelivers) {
    VerdictExchange exchange(callback(), endlessly);
    std::atomic<bool> isInner = false;
    onDelivery = [&](const KeyEventFields& event) {
        if (event.keyCode != 1) return;
        isInner = true;
        EXPECT_TRUE(runUntil([&] { return delivered.size() == 2; }));
    };
    auto verdict = std::async(std::launch::async, [&] {
        exchange.tell(press(1));
        while (!isInner)
            QThread::msleep(1);
        return exchange.ask(press(49));
    });
    ASSERT_TRUE(runUntil([&] { return isReady(verdict); }));
    EXPECT_EQ(verdict.get(), InterceptDecision::swallow);
}

TEST_F(VerdictExchangeTest, AQuestionThatComesWhileTheOneBeforeIsDecidedHasItsOwnTime) {
    VerdictExchange exchange(callback(), endlessly);
    std::vector<std::chrono::steady_clock::duration> times;
    onDelivery = [&](const KeyEventFields&) {
        const SwitchWait wait;
        times.push_back(wait.deadline() - std::chrono::steady_clock::now());
        std::this_thread::sleep_until(wait.deadline());
    };
    auto verdicts = std::async(std::launch::async, [&] {
        exchange.ask(press(1));
        exchange.ask(press(2));
    });
    ASSERT_TRUE(runUntil([&] { return isReady(verdicts); }));
    ASSERT_EQ(times.size(), 2U);
    EXPECT_GT(times[1], longestSwitch / 2);
}

TEST_F(VerdictExchangeTest, ManyQuestionsWithAndWithoutTimeOutsNeverGetEachOthersAnswers) {
    VerdictExchange exchange(callback(), 1ms);
    onDelivery = [&](const KeyEventFields& event) {
        if (event.type == KeyEventType::tapDisabledByTimeout) exchange.enable();
        // Until just after the asker has given up.
        while (event.keyCode % 5 == 0 && event.type == KeyEventType::keyDown && exchange.isEnabled())
            std::this_thread::yield();
    };
    decide = [](std::int64_t key) { return key % 2 == 1 ? InterceptDecision::swallow : InterceptDecision::pass; };
    int wronglySwallowed = 0;
    int swallowed = 0;
    std::atomic<bool> isDone = false;
    std::thread asker([&] {
        for (std::int64_t key = 0; key < 2000; ++key) {
            while (!exchange.isEnabled())
                std::this_thread::yield();
            if (exchange.ask(press(key)) == InterceptDecision::pass) continue;
            key % 2 == 1 ? ++swallowed : ++wronglySwallowed;
        }
        isDone = true;
    });
    EXPECT_TRUE(runUntil([&] { return isDone.load(); }));
    asker.join();
    EXPECT_EQ(wronglySwallowed, 0);
    EXPECT_GT(swallowed, 0);
    std::int64_t last = -1;
    for (const KeyEventFields& event : delivered) {
        if (event.type != KeyEventType::keyDown) continue;
        EXPECT_GT(event.keyCode, last);
        last = event.keyCode;
    }
}

}  // namespace

}  // namespace quillmere
