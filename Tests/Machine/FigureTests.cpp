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
#include <optional>
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
constexpr const char* yardstick = "Yardstick keyboard";
constexpr const char* bareLoopsClone = "Clone of the bare loop";
constexpr int rounds = 4;
constexpr int keysPerRound = 1000;

/// A keyboard's stand-in, as an application reads it.
class CloneReader {
public:
    /// By the stand-in's own name.
    explicit CloneReader(const std::string& clone) {
        for (const auto& entry : std::filesystem::directory_iterator("/dev/input")) {
            const int descriptor = open(entry.path().c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
            if (descriptor < 0) continue;
            if (deviceName(descriptor) == clone && isClone(descriptor)) descriptor_ = descriptor;
            if (descriptor != descriptor_) close(descriptor);
        }
        if (descriptor_ < 0) throw support::SupportError("no " + clone);
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
    void measure(const std::string& clone, const std::vector<KeyStroke>& strokes, const KeyStroke& measured,
                 int repetitions, Times& times) {
        const CloneReader reader(clone);
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

    /// Waits until what is typed on it comes through this clone.
    void waitForClone(VirtualKeyboard& keyboard, const std::string& clone) {
        ASSERT_TRUE(waitUntil([&] {
            desk_.clear();
            keyboard.type(taps({KEY_F12}));
            if (!waitUntil([&] { return desk_.strokes().size() == 2; }, moment)) return false;
            const DeskEvent first = desk_.events()[0];
            return first.isFromClone && first.device == clone;
        })) << desk_.describe();
    }

    void startService() {
        ASSERT_EQ(owner().open(), "");
        listen(TapOwner::Answer::pass);
        waitForClone(keyboard_, name);
    }
    void stopService() {
        owner().close();
        ASSERT_TRUE(waitUntil([&] { return !desk_.clones().contains(name); }));
    }
    /// In a control group of its own, as the service is: waking a program of
    /// another group costs more.
    void startBareLoop(VirtualKeyboard& keyboard, const char* nameOfKeyboard) {
        loop_.emplace(
            support::ChildProcess::Options{.arguments = {"systemd-run", "--scope", "--quiet", programPath("bare_loop"),
                                                         nameOfKeyboard, bareLoopsClone},
                                           .environment = support::baseEnvironment("/"),
                                           .output = {},
                                           .inheritedDescriptors = {},
                                           .prepare = {}});
        waitForClone(keyboard, bareLoopsClone);
    }
    void stopBareLoop() {
        loop_.reset();
        ASSERT_TRUE(waitUntil([&] { return !desk_.clones().contains(bareLoopsClone); }));
    }

    void measureService(const std::vector<KeyStroke>& strokes, int repetitions, Times& times) {
        ASSERT_NO_FATAL_FAILURE(startService());
        measure(name, strokes, strokes[strokes.size() / 2 - 1], repetitions, times);
        stopService();
    }

    void measureBareLoop(const std::vector<KeyStroke>& strokes, int repetitions, Times& times) {
        ASSERT_NO_FATAL_FAILURE(startBareLoop(keyboard_, name));
        measure(bareLoopsClone, strokes, strokes[strokes.size() / 2 - 1], repetitions, times);
        stopBareLoop();
    }

    /// Both beside each other, each with a keyboard of its own, and key by key:
    /// what else the computer does meets both alike.
    void measureInTurns(int repetitions, Times& service, Times& bareLoop) {
        VirtualKeyboard keyboard{{.name = yardstick}};
        ASSERT_TRUE(waitUntil([&] { return desk_.originals().contains(yardstick); }));
        ASSERT_NO_FATAL_FAILURE(startBareLoop(keyboard, yardstick));
        ASSERT_NO_FATAL_FAILURE(startService());
        ASSERT_NO_FATAL_FAILURE(waitForClone(keyboard, bareLoopsClone)) << "not the service's";
        const CloneReader servicesReader(name);
        const CloneReader bareLoopsReader(bareLoopsClone);
        for (int i = 0; i < repetitions; ++i) {
            ASSERT_NO_FATAL_FAILURE(tap(keyboard_, servicesReader, service));
            ASSERT_NO_FATAL_FAILURE(tap(keyboard, bareLoopsReader, bareLoop));
        }
        ASSERT_NO_FATAL_FAILURE(stopService());
        stopBareLoop();
    }

    bool ownerIsTold_ = false;
    int interestChanges_ = 0;
    int arrivals_ = 0;

private:
    /// Presses a key and releases it; how long the press takes.
    static void tap(VirtualKeyboard& keyboard, const CloneReader& reader, Times& times) {
        for (const KeyStroke& stroke : taps({KEY_A})) {
            const Clock::time_point begin = Clock::now();
            keyboard.type({stroke});
            ASSERT_TRUE(reader.await(stroke));
            if (stroke.isDown) times.push_back(Clock::now() - begin);
        }
    }

    Clock::time_point nextChange_;
    std::optional<support::ChildProcess> loop_;
    std::vector<std::unique_ptr<VirtualKeyboard>> plugged_;
    VirtualKeyboard keyboard_{{.name = name}};
};

}  // namespace

TEST_F(Figures, AKeyOfNoInterest) {
    Times service;
    Times bareLoop;
    ASSERT_NO_FATAL_FAILURE(measureInTurns(rounds * keysPerRound, service, bareLoop));
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
