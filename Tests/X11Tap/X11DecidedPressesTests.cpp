#include "Quillmere/Platform/Linux/Tap/X11/X11DecidedPresses.h"

#include <gtest/gtest.h>

namespace quillmere {
namespace {

using enum InterceptDecision;

TEST(X11DecidedPresses, APressHasItsVerdictOnce) {
    X11DecidedPresses decided;
    decided.add({.keyCode = 65, .time = 10}, swallow);
    EXPECT_EQ(decided.arrive({.keyCode = 65, .time = 10}), swallow);
    EXPECT_EQ(decided.arrive({.keyCode = 65, .time = 10}), std::nullopt);
}

TEST(X11DecidedPresses, AnotherPressOfTheSameKeyIsNotDecided) {
    X11DecidedPresses decided;
    decided.add({.keyCode = 65, .time = 10}, swallow);
    EXPECT_EQ(decided.arrive({.keyCode = 65, .time = 11}), std::nullopt);
    EXPECT_EQ(decided.arrive({.keyCode = 66, .time = 10}), std::nullopt);
    EXPECT_TRUE(decided.isMissing(65));
}

TEST(X11DecidedPresses, WhatComesBeforeAPressThatHasArrivedNeverWill) {
    X11DecidedPresses decided;
    decided.add({.keyCode = 65, .time = 10}, swallow);
    decided.add({.keyCode = 66, .time = 11}, pass);
    decided.add({.keyCode = 67, .time = 12}, swallow);
    EXPECT_EQ(decided.arrive({.keyCode = 66, .time = 11}), pass);
    EXPECT_FALSE(decided.isMissing(65));
    EXPECT_TRUE(decided.isMissing(67));
    decided.clear();
    EXPECT_FALSE(decided.isMissing(67));
}

TEST(X11DecidedPresses, OfPressesThatNeverArriveTheOldestAreForgotten) {
    X11DecidedPresses decided;
    for (unsigned int i = 0; i < 1000; ++i)
        decided.add({.keyCode = 8 + (i % 200), .time = i}, swallow);
    EXPECT_EQ(decided.arrive({.keyCode = 8, .time = 0}), std::nullopt);
    EXPECT_EQ(decided.arrive({.keyCode = 8 + 199, .time = 999}), swallow);
}

}  // namespace
}  // namespace quillmere
