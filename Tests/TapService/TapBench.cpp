#include "Tests/TapService/TapBench.h"

#include <linux/input-event-codes.h>

#include <sstream>
#include <utility>

namespace quillmere::tap {

namespace {

constexpr std::pair<const char*, std::uint16_t> keyNames[] = {
    {"a", KEY_A},
    {"b", KEY_B},
    {"c", KEY_C},
    {"k", KEY_K},
    {"space", KEY_SPACE},
    {"esc", KEY_ESC},
    {"enter", KEY_ENTER},
    {"backspace", KEY_BACKSPACE},
    {"f13", KEY_F13},
    {"ctrl", KEY_LEFTCTRL},
    {"rctrl", KEY_RIGHTCTRL},
    {"shift", KEY_LEFTSHIFT},
    {"alt", KEY_LEFTALT},
    {"altgr", KEY_RIGHTALT},
    {"super", KEY_LEFTMETA},
    {"rsuper", KEY_RIGHTMETA},
    {"caps", KEY_CAPSLOCK},
    {"fn", KEY_FN},
    {"globe", KEY_KBD_LAYOUT_NEXT},
    {"wakeup", KEY_WAKEUP},
    {"power", KEY_POWER},
    {"sleep", KEY_SLEEP},
    {"suspend", KEY_SUSPEND},
    {"filler", KEY_UNKNOWN},
    {"dim", KEY_BRIGHTNESSDOWN},
    {"click", BTN_LEFT},
};

std::string flagNames(std::uint8_t flags) {
    std::string text;
    for (const auto& [flag, name] :
         {std::pair(Flags::command, "super+"), std::pair(Flags::shift, "shift+"), std::pair(Flags::option, "alt+"),
          std::pair(Flags::control, "ctrl+"), std::pair(Flags::fn, "fn+")}) {
        if ((flags & flag) != 0) text += name;
    }
    return text;
}

void append(std::string& line, const std::string& word) {
    if (!line.empty()) line += ' ';
    line += word;
}

}  // namespace

// Keyboards

std::optional<KeySet> FakeKeyboards::open(DeviceId device) {
    Keyboard& keyboard = keyboards.at(device);
    ++keyboard.openCalls;
    if (!canOpen) return std::nullopt;
    keyboard.isOpen = true;
    keyboard.isHeardInFull = true;
    keyboard.unread.clear();
    return keyboard.down;
}

void FakeKeyboards::close(DeviceId device) {
    Keyboard& keyboard = keyboards.at(device);
    if (keyboard.isGrabbed) fault("closed while grabbed");
    keyboard.isOpen = false;
    keyboard.unread.clear();
}

void FakeKeyboards::hearFnOnly(DeviceId device) {
    Keyboard& keyboard = keyboards.at(device);
    if (!keyboard.isOpen) fault("a mask on what is not open");
    if (keyboard.isGrabbed) fault("deaf to what is grabbed");
    keyboard.isHeardInFull = false;
}

KeySet FakeKeyboards::hearAll(DeviceId device) {
    Keyboard& keyboard = keyboards.at(device);
    if (!keyboard.isOpen) fault("a mask on what is not open");
    keyboard.isHeardInFull = true;
    return keyboard.down;
}

CloneState FakeKeyboards::prepareClone(DeviceId device) {
    if (newClone != CloneState::failed) keyboards.at(device).hasClone = true;
    return newClone;
}

std::optional<Time> FakeKeyboards::grab(DeviceId device) {
    Keyboard& keyboard = keyboards.at(device);
    if (!keyboard.hasClone) fault("grabbed without a clone");
    if (!keyboard.isHeardInFull) fault("grabbed what is not heard");
    if (!grabIsFree || keyboard.down.any() || !keyboard.unread.empty()) return std::nullopt;
    keyboard.isGrabbed = true;
    return now;
}

std::optional<Time> FakeKeyboards::ungrab(DeviceId device, bool force) {
    Keyboard& keyboard = keyboards.at(device);
    if (!force && !keyboard.unread.empty()) return std::nullopt;
    keyboard.isGrabbed = false;
    return now;
}

void FakeKeyboards::forward(DeviceId device, const InputEvent& event) {
    forwarded.push_back(event);
    if (event.type != EV_KEY) return;
    Keyboard& keyboard = keyboards.at(device);
    const std::string name = TapBench::name(event.code);
    if (event.value == 2) fault("a repeat was forwarded: " + name);
    const bool isPress = event.value == 1;
    if (keyboard.cloneDown.test(event.code) == isPress) fault("pressed or released twice: " + name);
    keyboard.cloneDown.set(event.code, isPress);
    append(output, (isPress ? "+" : "-") + name);
}

void FakeKeyboards::forget(DeviceId device) {
    Keyboard& keyboard = keyboards.at(device);
    keyboard.isForgotten = true;
    if (keyboard.cloneDown.any()) fault("forgotten with a key down on the clone");
}

void FakeKeyboards::move(DeviceId device, std::uint16_t code, std::int32_t value) {
    Keyboard& keyboard = keyboards.at(device);
    if (value != 2) keyboard.down.set(code, value == 1);
    if (!keyboard.isGrabbed && value != 2) {
        keyboard.worldDown.set(code, value == 1);
    } else if (value == 0 && keyboard.worldDown.test(code)) {
        fault("everybody else misses the release of " + TapBench::name(code));
    }
    move(device, EV_KEY, code, value);
    move(device, EV_SYN, SYN_REPORT, 0);
}

void FakeKeyboards::move(DeviceId device, std::uint16_t type, std::uint16_t code, std::int32_t value) {
    Keyboard& keyboard = keyboards.at(device);
    if (!keyboard.isOpen) return;
    if (!keyboard.isHeardInFull) {
        const bool isFn = type == EV_KEY && roleOf(code) == KeyRole::fn;
        // The kernel drops a report of nothing.
        const bool isReport = type == EV_SYN && !keyboard.unread.empty() && keyboard.unread.back().type != EV_SYN;
        if (!isFn && !isReport) return;
    }
    ++keyboard.heard;
    keyboard.unread.push_back({type, code, value, now});
}

// The owner

void FakeOwner::write(const std::string& word) {
    append(log, word);
}

bool FakeOwner::tell(const KeyEvent& event) {
    if (!reads) return false;
    events.push_back(event);
    if (event.sequence != 0) lastQuestion = event.sequence;
    const std::string key = flagNames(event.flags) + TapBench::name(event.code);
    switch (event.kind) {
        case KeyEventKind::press:
            write((event.sequence != 0 ? "ask:" : "press:") + key);
            break;
        case KeyEventKind::repeat:
            write("repeat:" + key);
            break;
        case KeyEventKind::release:
            write("release:" + key);
            break;
        case KeyEventKind::flags:
            write("flags:" + flagNames(event.flags));
            break;
        case KeyEventKind::other:
            write("other");
            break;
    }
    return true;
}

void FakeOwner::tellDisabled(DisabledReason reason) {
    write(reason == DisabledReason::timeout ? "disabled" : "freed");
}

// The bench

TapBench::TapBench() : engine(keyboards) {}

std::uint16_t TapBench::code(const std::string& name) {
    for (const auto& [known, code] : keyNames) {
        if (name == known) return code;
    }
    return KEY_RESERVED;
}

std::string TapBench::name(std::uint16_t code) {
    for (const auto& [name, known] : keyNames) {
        if (code == known) return name;
    }
    return std::to_string(code);
}

void TapBench::plug(DeviceId device) {
    std::vector<std::string> all;
    for (const auto& [name, code] : keyNames) {
        if (code < BTN_MISC || code > BTN_GEAR_UP) all.emplace_back(name);
    }
    plug(device, all);
}

void TapBench::plug(DeviceId device, const std::vector<std::string>& keys) {
    FakeKeyboards::Keyboard& keyboard = keyboards.keyboards[device];
    keyboard = {};
    for (const std::string& key : keys)
        keyboard.keys.set(code(key));
    engine.addDevice(device, keyboard.keys, keyboards.now);
    turn();
}

void TapBench::own(const std::vector<std::string>& wishes) {
    interest = {};
    for (const std::string& wish : wishes) {
        if (wish == "fn") {
            interest.wantsFn = true;
            continue;
        }
        TapShortcut shortcut;
        std::istringstream keys(wish);
        for (std::string key; std::getline(keys, key, '+');) {
            const std::uint16_t keyCode = code(key);
            if (flagOf(keyCode) != 0) {
                shortcut.modifiers |= flagOf(keyCode);
            } else {
                shortcut.code = keyCode;
            }
        }
        interest.shortcuts.push_back(shortcut);
    }
    engine.attach(owner, interest, true, keyboards.now);
    turn();
}

void TapBench::play(const std::string& words) {
    std::istringstream line(words);
    for (std::string word; line >> word;) {
        playWord(word);
        deliver();
        turn();
        advance(std::chrono::milliseconds(1));
    }
}

void TapBench::playWord(const std::string& word) {
    const auto now = keyboards.now;
    const bool onSecond = word.front() == '2';
    const std::string action = onSecond ? word.substr(1) : word;
    const DeviceId device = onSecond ? second : first;
    if (const auto kind = std::string("-+~").find(action.front()); kind != std::string::npos) {
        keyboards.move(device, code(action.substr(1)), static_cast<std::int32_t>(kind));
    } else if (word == "swallow" || word == "pass") {
        engine.verdict(owner.lastQuestion, word == "swallow", now);
    } else if (word == "late") {
        advance(TapEngine::verdictDeadline);
    } else if (word == "enable") {
        engine.enable(now);
    } else if (word == "record" || word == "stop") {
        interest.everyKey = word == "record";
        engine.setInterest(interest, now);
    } else if (word == "leave") {
        engine.detach(now);
    } else if (word == "reopen") {
        engine.attach(owner, interest, true, now);
    } else if (word == "unplug") {
        engine.removeDevice(first, now);
    } else if (word == "wheel") {
        keyboards.move(first, EV_REL, REL_WHEEL, 1);
        keyboards.move(first, EV_SYN, SYN_REPORT, 0);
    } else {
        keyboards.faults.push_back("no such word: " + word);
    }
}

void TapBench::deliver() {
    for (auto& [device, keyboard] : keyboards.keyboards) {
        while (!keyboard.unread.empty()) {
            const InputEvent event = keyboard.unread.front();
            keyboard.unread.pop_front();
            engine.handleEvent(device, event, keyboards.now);
        }
    }
}

void TapBench::advance(Time time) {
    keyboards.now += time;
    turn();
}

void TapBench::turn() {
    // One that never came to an end would be a loop that never sleeps.
    constexpr int manyTurns = 100;
    for (int turns = 0; engine.deadline() && *engine.deadline() <= keyboards.now; ++turns) {
        if (turns == manyTurns) return keyboards.faults.push_back("the engine never comes to rest");
        engine.tick(keyboards.now);
    }
}

}  // namespace quillmere::tap
