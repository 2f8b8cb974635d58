#pragma once

#include "Tests/Mac/Doubles/WindowServer.h"

#include <gtest/gtest.h>

#include <string>

namespace quillmere {

/// A Mac that a test sets up: English, Ukrainian and Japanese are enabled, the
/// first is current, and the program may see the keyboard.
class MacTest : public testing::Test {
protected:
    MacTest();
    ~MacTest() override;

    /// Types on the played keyboard at the time `time`.
    windowserver::Fate down(std::int64_t key, std::uint64_t flags = 0, bool isRepeat = false);
    windowserver::Fate up(std::int64_t key, std::uint64_t flags = 0);
    windowserver::Fate changeFlags(std::uint64_t flags);
    windowserver::Fate pressSpecialKey();
    /// Fn alone, held for so long.
    void tapFn(double seconds);
    void wait(double seconds);

    /// The identifier of the current source; empty without one.
    static std::string currentSource();

    static constexpr const char* english = "com.apple.keylayout.ABC";
    static constexpr const char* ukrainian = "com.apple.keylayout.Ukrainian";
    static constexpr const char* japanese = "com.apple.inputmethod.Kotoeri.Hiragana";

private:
    std::uint64_t time_ = 1'000'000'000;
};

}  // namespace quillmere
