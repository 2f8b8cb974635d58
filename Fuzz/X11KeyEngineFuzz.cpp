#include "Fuzz/Require.h"
#include "Tests/X11Tap/X11TapBench.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <chrono>

namespace quillmere::support {
namespace {

constexpr const char* wishes[] = {"ctrl+space", "alt+space", "super+k", "ctrl+shift+a", "space", "fn"};
constexpr const char* combinations[] = {"ctrl+space", "alt+space", "super+k", "space"};

/// Random fingers, programs and other clients, in random order. The bench
/// itself knows what must never happen.
class Storm {
public:
    explicit Storm(FuzzedDataProvider& data) : data_(data) {
        bench_.verdicts.answer = [this] { return anyAnswer(); };
    }

    void run() {
        while (data_.remaining_bytes() > 0) {
            step();
            // Else more happens before anything of it is read.
            if (data_.ConsumeBool()) bench_.deliver();
            check();
        }
    }

private:
    void step() {
        switch (data_.ConsumeIntegralInRange(0, 15)) {
            case 0:
                changeInterest();
                break;
            case 1:
                bench_.interest.everyKey = !bench_.interest.everyKey;
                bench_.setInterest();
                break;
            case 2:
                bench_.enable();
                break;
            case 3:
                bench_.advance(std::chrono::milliseconds(data_.ConsumeIntegralInRange(0, 150)));
                break;
            case 4:
                changeOthers();
                break;
            case 5:
                bench_.giveBack();
                bench_.takeAgain();
                break;
            default:
                move();
        }
    }

    FakeVerdicts::Answer anyAnswer() {
        using enum FakeVerdicts::Answer;
        const int given = data_.ConsumeIntegralInRange(0, 7);
        return given == 0 ? late : given < 3 ? pass : swallow;
    }

    void changeInterest() {
        bench_.interest.shortcuts.clear();
        for (int count = data_.ConsumeIntegralInRange(0, 3); count > 0; --count)
            bench_.interest.shortcuts.push_back(X11TapBench::shortcut(data_.PickValueInArray(wishes)));
        bench_.setInterest();
    }

    void changeOthers() {
        FakeX11Keyboard& keyboard = bench_.keyboard;
        const X11KeyCombination combination = FakeX11Keyboard::combination(data_.PickValueInArray(combinations));
        switch (data_.ConsumeIntegralInRange(0, 5)) {
            case 0:
                keyboard.openMenu();
                break;
            case 1:
                keyboard.closeMenu();
                break;
            case 2:
                keyboard.theirs.insert(combination);
                break;
            case 3:
                keyboard.theirs.erase(combination);
                break;
            case 4:
                keyboard.theirsWin = data_.ConsumeBool();
                break;
            default:
                keyboard.swapAltAndSuper();
        }
    }

    void move() {
        const auto& codes = FakeX11Keyboard::codes();
        const unsigned int code = codes[data_.ConsumeIntegralInRange<std::size_t>(0, codes.size() - 1)];
        if (!bench_.keyboard.held()[code]) {
            bench_.keyboard.press(code);
        } else if (data_.ConsumeBool() && bench_.keyboard.canRepeat(code) && !FakeX11Keyboard::isFlagKey(code)) {
            bench_.keyboard.repeat(code);
        } else {
            bench_.keyboard.release(code);
        }
    }

    void check() {
        const auto& faults = bench_.keyboard.faults;
        require(faults.empty(), faults.empty() ? "" : faults.front().c_str());
        // With all read there is nothing that it could wait for.
        if (bench_.keyboard.inbox.empty())
            require(!bench_.keyboard.isStandingStill(), "with every event answered the keyboard goes on");
    }

    FuzzedDataProvider& data_;
    X11TapBench bench_;
};

}  // namespace
}  // namespace quillmere::support

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider provider(data, size);
    quillmere::support::Storm(provider).run();
    return 0;
}
