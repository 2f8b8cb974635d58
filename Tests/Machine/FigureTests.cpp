#include "Tests/Machine/InputNode.h"
#include "Tests/Machine/TapTest.h"
#include "Tests/Support/SupportError.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

// What the way of a key through the service costs, against the least that any
// program could take for the same.
namespace quillmere::machine {

namespace {

using Clock = std::chrono::steady_clock;
using Times = std::vector<std::chrono::duration<double, std::micro>>;

constexpr const char* name = "Measured keyboard";
constexpr const char* other = "Other keyboard";
constexpr int rounds = 4;
constexpr int keysPerRound = 1000;

/// The stand-in for the measured keyboard, as an application reads it.
class CloneReader {
public:
    CloneReader() {
        for (const auto& entry : std::filesystem::directory_iterator("/dev/input")) {
            const int descriptor = open(entry.path().c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
            if (descriptor < 0) continue;
            if (deviceName(descriptor) == name && isClone(descriptor)) descriptor_ = descriptor;
            if (descriptor != descriptor_) close(descriptor);
        }
        if (descriptor_ < 0) throw support::SupportError("no clone of the measured keyboard");
    }
    ~CloneReader() { close(descriptor_); }
    CloneReader(const CloneReader&) = delete;
    CloneReader& operator=(const CloneReader&) = delete;

    /// Waits for this stroke; false when it does not come.
    bool await(const KeyStroke& stroke) const {
        pollfd ready{descriptor_, POLLIN, 0};
        while (poll(&ready, 1, static_cast<int>(support::patience.count())) == 1) {
            input_event event{};
            while (read(descriptor_, &event, sizeof event) == ssize_t{sizeof event})
                if (event.type == EV_KEY && event.code == stroke.code && event.value == (stroke.isDown ? 1 : 0))
                    return true;
        }
        return false;
    }

private:
    int descriptor_ = -1;
};

double percentile(Times times, double share) {
    std::ranges::sort(times);
    return times.at(static_cast<std::size_t>(share * static_cast<double>(times.size() - 1))).count();
}

std::string inMicroseconds(const Times& times) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(0) << percentile(times, 0.5) << " µs (p99 " << percentile(times, 0.99)
         << " µs)";
    return text.str();
}

std::string inMilliseconds(const Times& times) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(1) << percentile(times, 1) / 1000 << " ms (p99 "
         << percentile(times, 0.99) / 1000 << " ms)";
    return text.str();
}

class Figures : public TapTest {
protected:
    /// From the moment that a key is pressed or released until an application
    /// can read it.
    void measure(const std::vector<KeyStroke>& strokes, const KeyStroke& measured, int repetitions, Times& times) {
        const CloneReader reader;
        for (int i = 0; i < repetitions || interestChanges_ > 0 || arrivals_ > 0; ++i)
            for (const KeyStroke& stroke : strokes) {
                const Clock::time_point begin = Clock::now();
                keyboard_.type({stroke});
                ASSERT_TRUE(reader.await(stroke));
                if (stroke == measured) times.push_back(Clock::now() - begin);
                // It waits until somebody takes what it has to say.
                if (ownerIsTold_) owner().clear();
                if (interestChanges_ > 0) changeInterest();
                if (arrivals_ > 0) plugKeyboards();
            }
    }

    /// One after the other, with time for each to be found.
    void plugKeyboards() {
        constexpr std::chrono::milliseconds timeForOne{200};
        const Clock::time_point now = Clock::now();
        if (now < nextChange_) return;
        nextChange_ = now + timeForOne;
        // None comes in the last turn, which is for what the one before still costs.
        if (--arrivals_ > 0)
            plugged_.push_back(std::make_unique<VirtualKeyboard>(VirtualKeyboard::Form{.name = other}));
    }

    /// All pulled out, and gone.
    void unplugKeyboards() {
        plugged_.clear();
        ASSERT_TRUE(waitUntil([&] { return !desk_.originals().contains(other) && !desk_.clones().contains(other); }));
    }

    /// As often as a program may.
    void changeInterest() {
        constexpr std::chrono::milliseconds allowance{16};
        const Clock::time_point now = Clock::now();
        if (now < nextChange_) return;
        nextChange_ = now + allowance;
        owner().send(tap::Interest{.wantsFn = --interestChanges_ % 2 == 0, .shortcuts = {ctrlSpace}});
    }

    void measureService(const std::vector<KeyStroke>& strokes, int repetitions, Times& times) {
        ASSERT_EQ(owner().open(), "");
        listen(TapOwner::Answer::pass);
        ASSERT_TRUE(waitUntil([&] {
            desk_.clear();
            keyboard_.type(taps({KEY_F12}));
            return waitUntil([&] { return desk_.strokes().size() == 2; }, moment) && desk_.events()[0].isFromClone;
        })) << desk_.describe();
        measure(strokes, strokes[strokes.size() / 2 - 1], repetitions, times);
        owner().close();
        ASSERT_TRUE(waitUntil([&] { return !desk_.clones().contains(name); }));
    }

    void measureBareLoop(const std::vector<KeyStroke>& strokes, int repetitions, Times& times) {
        // In a control group of its own, as the service is: waking a program of
        // another group costs more.
        support::ChildProcess loop({.arguments = {"systemd-run", "--scope", "--quiet", programPath("bare_loop"), name},
                                    .environment = support::baseEnvironment("/"),
                                    .output = {},
                                    .inheritedDescriptors = {},
                                    .prepare = {}});
        ASSERT_TRUE(waitUntil([&] {
            desk_.clear();
            keyboard_.type(taps({KEY_F12}));
            return waitUntil([&] { return desk_.strokes().size() == 2; }, moment) && desk_.events()[0].isFromClone;
        })) << desk_.describe();
        measure(strokes, strokes[strokes.size() / 2 - 1], repetitions, times);
        loop.kill();
        ASSERT_TRUE(waitUntil([&] { return !desk_.clones().contains(name); }));
    }

    bool ownerIsTold_ = false;
    int interestChanges_ = 0;
    int arrivals_ = 0;

private:
    Clock::time_point nextChange_;
    std::vector<std::unique_ptr<VirtualKeyboard>> plugged_;
    VirtualKeyboard keyboard_{{.name = name}};
};

}  // namespace

TEST_F(Figures, AKeyOfNoInterest) {
    Times service;
    Times bareLoop;
    for (int round = 0; round < rounds; ++round) {
        ASSERT_NO_FATAL_FAILURE(measureBareLoop(taps({KEY_A}), keysPerRound, bareLoop));
        ASSERT_NO_FATAL_FAILURE(measureService(taps({KEY_A}), keysPerRound, service));
    }
    // A row of the table that ./bench prints.
    std::cout << "| a key's way through the key-tap service, on an emulated computer | " << inMicroseconds(service)
              << " | a bare loop that reads and writes: " << inMicroseconds(bareLoop) << " | " << std::fixed
              << std::setprecision(2) << percentile(service, 0.5) / percentile(bareLoop, 0.5) << " | ≤ 1.2 |"
              << std::endl;
}

TEST_F(Figures, TheWorstKeyWhileAnotherUserFloodsTheService) {
    Times alone;
    Times flooded;
    for (int round = 0; round < rounds; ++round) {
        ASSERT_NO_FATAL_FAILURE(measureService(taps({KEY_A}), keysPerRound, alone));
        const support::ChildProcess flood({.arguments = {programPath("call_flood")},
                                           .environment = support::baseEnvironment("/"),
                                           .output = {},
                                           .inheritedDescriptors = {},
                                           .prepare = Session::becoming(stranger)});
        ASSERT_NO_FATAL_FAILURE(measureService(taps({KEY_A}), keysPerRound, flooded));
    }
    std::cout << "| the worst key while another user floods the service, on an emulated computer | "
              << inMilliseconds(flooded) << " | without: " << inMilliseconds(alone) << " | " << std::fixed
              << std::setprecision(2) << percentile(flooded, 0.99) / percentile(alone, 0.99) << " (p99) | < 20 ms |"
              << std::endl;
}

TEST_F(Figures, TheWorstKeyWhileTheInterestChangesAThousandTimes) {
    Times alone;
    Times changing;
    ASSERT_NO_FATAL_FAILURE(measureService(taps({KEY_A}), keysPerRound, alone));
    interestChanges_ = 1000;
    ASSERT_NO_FATAL_FAILURE(measureService(taps({KEY_A}), keysPerRound, changing));
    std::cout << "| the worst key while the interest changes a thousand times, on an emulated computer | "
              << inMilliseconds(changing) << " | without: " << inMilliseconds(alone) << " | " << std::fixed
              << std::setprecision(2) << percentile(changing, 0.99) / percentile(alone, 0.99) << " (p99) | < 20 ms |"
              << std::endl;
}

TEST_F(Figures, TheWorstKeyWhileTenKeyboardsArePluggedIn) {
    constexpr int turns = 11;
    Times service;
    Times bareLoop;
    for (int round = 0; round < rounds; ++round) {
        arrivals_ = turns;
        ASSERT_NO_FATAL_FAILURE(measureBareLoop(taps({KEY_A}), keysPerRound, bareLoop));
        ASSERT_NO_FATAL_FAILURE(unplugKeyboards());
        arrivals_ = turns;
        ASSERT_NO_FATAL_FAILURE(measureService(taps({KEY_A}), keysPerRound, service));
        ASSERT_NO_FATAL_FAILURE(unplugKeyboards());
    }
    std::cout << "| the worst key while ten keyboards are plugged in, on an emulated computer | "
              << inMilliseconds(service) << " | a bare loop, which takes none of them: " << inMilliseconds(bareLoop)
              << " | " << std::fixed << std::setprecision(2) << percentile(service, 0.99) / percentile(bareLoop, 0.99)
              << " (p99) | < 20 ms more |" << std::endl;
}

TEST_F(Figures, MemoryWithAnOpenTap) {
    listen(TapOwner::Answer::pass);
    std::ifstream file("/proc/" + std::to_string(service_.waitForPid()) + "/smaps_rollup");
    std::string word;
    double kibibytes = 0;
    while (file >> word)
        if (word == "Pss:") file >> kibibytes;
    std::cout << "| memory of the key-tap service with a tap open (PSS) | " << std::fixed << std::setprecision(1)
              << kibibytes / 1024 << " MiB | – | – | ≤ 3 MiB |" << std::endl;
}

TEST_F(Figures, AShortcutFromPressToVerdict) {
    ownerIsTold_ = true;
    Times times;
    ASSERT_NO_FATAL_FAILURE(measureService(ctrlSpaceStrokes, keysPerRound, times));
    std::cout << "| a shortcut from its press to the verdict's effect, on an emulated computer | "
              << inMicroseconds(times) << " | – | – | – |" << std::endl;
}

}  // namespace quillmere::machine
