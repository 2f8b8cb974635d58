#include "TapService/LockCarrier.h"

#include <gtest/gtest.h>

namespace quillmere::tap {
namespace {

/// Desktops, by what a lock belongs to.
enum class LocksOf { eachKeyboard, all };

/// A keyboard, its clone, and a desktop that lights them.
class LockCarrierTest : public testing::Test {
protected:
    /// The user has locked this before the clone was there.
    void lock(std::uint16_t light) {
        original_.set(light);
        shared_.set(light);
    }

    void tap(std::uint16_t key) {
        ++taps_;
        const std::uint16_t light = key == KEY_CAPSLOCK ? LED_CAPSL : LED_NUML;
        if (locksOf_ == LocksOf::eachKeyboard) {
            clone_.flip(light);
            return;
        }
        shared_.flip(light);
        original_.set(light, shared_.test(light));
        clone_.set(light, shared_.test(light));
    }

    void takeOver() {
        if (carrier_.takeOver(original_, clone_)) carrier_.check(original_);
    }

    /// What the clone types with.
    Lights inEffect() const { return locksOf_ == LocksOf::eachKeyboard ? clone_ : shared_; }

    LocksOf locksOf_ = LocksOf::eachKeyboard;
    Lights original_;
    Lights clone_;
    Lights shared_;
    int taps_ = 0;
    LockCarrier carrier_{[this](std::uint16_t key) { tap(key); }};
};

TEST_F(LockCarrierTest, WithoutALockNothingIsTapped) {
    EXPECT_FALSE(carrier_.takeOver(original_, clone_));
    EXPECT_EQ(taps_, 0);
}

TEST_F(LockCarrierTest, CapsLockGoesOnWhereEachKeyboardHasItsOwn) {
    lock(LED_CAPSL);
    takeOver();
    EXPECT_TRUE(inEffect().test(LED_CAPSL));
    EXPECT_FALSE(inEffect().test(LED_NUML));
    EXPECT_EQ(taps_, 1);
}

TEST_F(LockCarrierTest, BothLocksGoOn) {
    lock(LED_CAPSL);
    lock(LED_NUML);
    takeOver();
    EXPECT_TRUE(inEffect().test(LED_CAPSL));
    EXPECT_TRUE(inEffect().test(LED_NUML));
}

TEST_F(LockCarrierTest, ALightOfTheCloneAloneMeansNothing) {
    clone_.set(LED_NUML);
    takeOver();
    EXPECT_EQ(taps_, 0);
}

TEST_F(LockCarrierTest, ADesktopThatHasLitTheCloneNeedsNothing) {
    lock(LED_NUML);
    clone_.set(LED_NUML);
    takeOver();
    EXPECT_EQ(taps_, 0);
}

TEST_F(LockCarrierTest, ATapThatUnlocksAllKeyboardsIsTakenBack) {
    locksOf_ = LocksOf::all;
    lock(LED_NUML);
    takeOver();
    EXPECT_TRUE(inEffect().test(LED_NUML));
    EXPECT_TRUE(original_.test(LED_NUML));
    EXPECT_EQ(taps_, 2);
}

TEST_F(LockCarrierTest, WhatTheUserUnlocksMeanwhileStaysUnlocked) {
    lock(LED_CAPSL);
    EXPECT_TRUE(carrier_.takeOver(original_, clone_));
    carrier_.pressed(KEY_CAPSLOCK);
    original_.reset(LED_CAPSL);
    clone_.reset(LED_CAPSL);
    carrier_.check(original_);
    EXPECT_EQ(taps_, 1);
}

TEST_F(LockCarrierTest, OneLookIsEnough) {
    lock(LED_CAPSL);
    takeOver();
    original_.reset(LED_CAPSL);
    carrier_.check(original_);
    EXPECT_EQ(taps_, 1);
}

}  // namespace
}  // namespace quillmere::tap
