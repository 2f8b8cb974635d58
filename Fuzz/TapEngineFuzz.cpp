#include "Fuzz/Require.h"
#include "Tests/TapService/TapBench.h"

#include <fuzzer/FuzzedDataProvider.h>
#include <linux/input-event-codes.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <map>
#include <set>
#include <utility>

namespace quillmere::tap {
namespace {

constexpr std::array<std::uint16_t, 15> codes = {
    KEY_A,       KEY_K,  KEY_SPACE,  KEY_BACKSPACE, KEY_ESC,      KEY_ENTER, KEY_LEFTCTRL, KEY_LEFTMETA,
    KEY_LEFTALT, KEY_FN, KEY_WAKEUP, KEY_VOLUMEUP,  KEY_CAPSLOCK, KEY_POWER, BTN_LEFT,
};
constexpr std::array<Time, 5> pauses = {Time(1), std::chrono::milliseconds(10), TapEngine::verdictDeadline,
                                        DeviceGrabs::freedTime, DeviceGrabs::ungrabDeadline};
constexpr DeviceId deviceCount = 3;

/// An owner that knows what it may be told.
class WaryOwner : public FakeOwner {
public:
    const Interest* interest = nullptr;
    std::uint16_t lastQuestionCode = 0;
    bool isFreed = false;

    bool tell(const KeyEvent& event) override {
        if (!FakeOwner::tell(event)) return false;
        switch (event.kind) {
            case KeyEventKind::press:
                checkInterest(event);
                if (event.sequence != 0) lastQuestionCode = event.code;
                ++told_[event.code];
                break;
            case KeyEventKind::repeat:
                require(told_[event.code] > 0, "only a key that was told is told to repeat");
                break;
            case KeyEventKind::release:
                require(told_[event.code]-- > 0, "only a key that was told is told to go up");
                break;
            case KeyEventKind::other:
                require(fnIsDown_, "other keys are told while Fn is down only");
                break;
            case KeyEventKind::flags:
                require(fnIsDown_ || (event.flags & Flags::fn) != 0, "modifiers are told while Fn is down only");
                fnIsDown_ = (event.flags & Flags::fn) != 0;
                break;
        }
        return true;
    }

    void tellDisabled(DisabledReason reason) override {
        FakeOwner::tellDisabled(reason);
        isFreed = isFreed || reason == DisabledReason::userInput;
        told_.clear();
    }

    void beginAnew() {
        told_.clear();
        fnIsDown_ = false;
        log.clear();
        events.clear();
    }

private:
    void checkInterest(const KeyEvent& event) const {
        require(roleOf(event.code) == KeyRole::key, "no program gets a power key or a mouse's button");
        const TapShortcut pressed{event.code, static_cast<std::uint8_t>(event.flags & Flags::modifiers)};
        require(interest->everyKey || std::ranges::find(interest->shortcuts, pressed) != interest->shortcuts.end(),
                "a key of no interest is told to nobody");
        require(interest->everyKey || (event.flags & (Flags::control | Flags::option | Flags::command)) != 0,
                "what is typed is told to nobody");
    }

    std::map<std::uint16_t, int> told_;
    bool fnIsDown_ = false;
};

/// Random fingers, owners, plugs and clocks, in random order.
class Storm {
public:
    explicit Storm(FuzzedDataProvider& data) : data_(data) { owner_.interest = &interest_; }

    void run() {
        while (data_.remaining_bytes() > 0) {
            step();
            check();
        }
        settle();
    }

private:
    void step() {
        switch (data_.ConsumeIntegralInRange(0, 14)) {
            case 0:
                plug();
                break;
            case 1:
                unplug();
                break;
            case 2:
                own();
                break;
            case 3:
                engine_.detach(now());
                break;
            case 4:
                interest_ = anyInterest();
                engine_.setInterest(interest_, now());
                break;
            case 5:
                engine_.enable(now());
                break;
            case 6:
                answer();
                break;
            case 7:
                wait();
                break;
            case 8:
                changeWeather();
                break;
            case 9:
                engine_.releaseEverything(now());
                break;
            default:
                move();
        }
        if (data_.ConsumeBool()) deliver();
    }

    Time now() const { return keyboards_.now; }

    FakeKeyboards::Keyboard* anyKeyboard() {
        const auto found = keyboards_.keyboards.find(data_.ConsumeIntegralInRange<DeviceId>(1, deviceCount));
        return found == keyboards_.keyboards.end() ? nullptr : &found->second;
    }

    void plug() {
        const auto id = data_.ConsumeIntegralInRange<DeviceId>(1, deviceCount);
        if (keyboards_.keyboards.contains(id)) return;
        FakeKeyboards::Keyboard& keyboard = keyboards_.keyboards[id];
        for (const std::uint16_t code : codes)
            keyboard.keys.set(code, data_.ConsumeIntegralInRange(0, 7) != 0);
        engine_.addDevice(id, keyboard.keys, now());
    }

    void unplug() {
        const auto id = data_.ConsumeIntegralInRange<DeviceId>(1, deviceCount);
        if (!keyboards_.keyboards.contains(id)) return;
        engine_.removeDevice(id, now());
        // What waits behind a question keeps the device until it is out.
        gone_.insert(id);
    }

    Interest anyInterest() {
        Interest interest;
        interest.everyKey = data_.ConsumeIntegralInRange(0, 3) == 0;
        interest.wantsFn = data_.ConsumeBool();
        for (int count = data_.ConsumeIntegralInRange(0, 2); count > 0; --count) {
            interest.shortcuts.push_back({data_.PickValueInArray(codes), data_.ConsumeIntegral<std::uint8_t>()});
            interest.shortcuts.back().modifiers &= Flags::modifiers;
        }
        return interest;
    }

    void own() {
        engine_.detach(now());
        owner_.beginAnew();
        interest_ = anyInterest();
        engine_.attach(owner_, interest_, data_.ConsumeBool(), now());
    }

    void answer() {
        const bool swallow = data_.ConsumeBool();
        if (swallow && engine_.awaits(owner_.lastQuestion)) ++allowed_[owner_.lastQuestionCode];
        engine_.verdict(owner_.lastQuestion, swallow, now());
    }

    void wait() {
        keyboards_.now += data_.PickValueInArray(pauses);
        rest();
    }

    bool isDue() const {
        const auto deadline = engine_.deadline();
        return deadline && *deadline <= now();
    }

    std::ptrdiff_t grabs() const {
        return std::ranges::count_if(keyboards_.keyboards, [](const auto& entry) { return entry.second.isGrabbed; });
    }

    void rest() {
        // For each device: a clone, a grab, its end, its closing.
        constexpr int mostSteps = 4 * deviceCount + 2;
        for (int steps = 0; isDue(); ++steps) {
            require(steps < mostSteps, "a deadline that has passed has had its effect");
            const auto before = grabs();
            const bool waited = engine_.awaits(engine_.lastSequence());
            engine_.tick(now());
            require(waited || std::abs(grabs() - before) <= 1, "a step takes or gives back one device at the most");
        }
    }

    void changeWeather() {
        keyboards_.newClone = data_.PickValueInArray({CloneState::failed, CloneState::making, CloneState::ready});
        keyboards_.grabIsFree = data_.ConsumeBool();
        keyboards_.canOpen = data_.ConsumeBool();
        owner_.reads = data_.ConsumeBool();
        engine_.cloneMade(data_.ConsumeIntegralInRange<DeviceId>(1, deviceCount), data_.ConsumeBool(), now());
    }

    void move() {
        const FakeKeyboards::Keyboard* keyboard = anyKeyboard();
        const std::uint16_t code = data_.PickValueInArray(codes);
        const bool repeats = data_.ConsumeBool();
        if (keyboard == nullptr || !keyboard->keys.test(code)) return;
        for (auto& [id, candidate] : keyboards_.keyboards) {
            if (&candidate != keyboard || gone_.contains(id)) continue;
            const bool isDown = keyboard->down.test(code);
            if (isDown && repeats) {
                keyboards_.move(id, code, 2);
            } else {
                keyboards_.move(id, code, isDown ? 0 : 1);
            }
        }
    }

    void deliver() {
        for (auto& [id, keyboard] : keyboards_.keyboards) {
            while (!keyboard.unread.empty()) {
                const InputEvent event = keyboard.unread.front();
                keyboard.unread.pop_front();
                engine_.handleEvent(id, event, now());
            }
        }
    }

    void checkFreedom() {
        if (std::exchange(owner_.isFreed, false)) freedUntil_ = now() + DeviceGrabs::freedTime;
        require(now() >= freedUntil_ || grabs() == 0, "what the user has freed is not taken again");
    }

    void check() {
        checkFreedom();
        require(keyboards_.faults.empty(), keyboards_.faults.empty() ? "" : keyboards_.faults.front().c_str());
        std::erase_if(keyboards_.keyboards, [this](const auto& entry) {
            if (entry.second.isForgotten) gone_.erase(entry.first);
            return entry.second.isForgotten;
        });
        if (engine_.awaits(engine_.lastSequence())) return;
        std::map<std::uint16_t, int> missing;
        for (const auto& [id, keyboard] : keyboards_.keyboards) {
            if (!keyboard.unread.empty()) return;
            require((keyboard.cloneDown & ~keyboard.down).none(), "what is down on a clone is down on its device");
            if (!keyboard.isGrabbed) continue;
            for (const std::uint16_t code : codes)
                missing[code] += keyboard.down.test(code) && !keyboard.cloneDown.test(code) ? 1 : 0;
        }
        for (const std::uint16_t code : codes) {
            require(missing[code] <= allowed_[code], "what is not down on a clone was swallowed");
            allowed_[code] = missing[code];
        }
    }

    /// Whatever has happened: without an owner and with all keys up, everybody
    /// has their keyboard again.
    void settle() {
        engine_.detach(now());
        deliver();
        rest();
        for (auto& [id, keyboard] : keyboards_.keyboards) {
            for (const std::uint16_t code : codes) {
                if (keyboard.down.test(code)) keyboards_.move(id, code, 0);
            }
        }
        deliver();
        rest();
        check();
        require(!engine_.isGrabbing(), "without an owner nothing is grabbed");
        require(!engine_.deadline(), "without an owner nothing is awaited");
        for (const auto& [id, keyboard] : keyboards_.keyboards) {
            require(keyboard.cloneDown.none() && keyboard.worldDown.none(),
                    "with no key down on a device, none is down anywhere");
            require(!keyboard.isOpen, "without an owner nothing is read");
        }
    }

    FuzzedDataProvider& data_;
    FakeKeyboards keyboards_;
    WaryOwner owner_;
    TapEngine engine_{keyboards_};
    Interest interest_;
    std::set<DeviceId> gone_;
    Time freedUntil_{};
    /// How many presses of each key may be missing on the clones.
    std::map<std::uint16_t, int> allowed_;
};

}  // namespace
}  // namespace quillmere::tap

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzedDataProvider provider(data, size);
    quillmere::tap::Storm(provider).run();
    return 0;
}
