#include "Tests/X11Tap/X11TapBench.h"

#include "Quillmere/Platform/Linux/Tap/KeyCodes.h"

#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <utility>

namespace quillmere::support {

namespace {

bool isAnswer(const std::string& word) {
    return word == "swallow" || word == "pass" || word == "late" || word == "done";
}

std::int64_t modifierNamed(const std::string& name) {
    if (name == "ctrl") return Modifiers(Modifiers::control).rawValue;
    if (name == "alt") return Modifiers(Modifiers::option).rawValue;
    if (name == "shift") return Modifiers(Modifiers::shift).rawValue;
    if (name == "super") return Modifiers(Modifiers::command).rawValue;
    return 0;
}

}  // namespace

Shortcut X11TapBench::shortcut(const std::string& text) {
    if (text == "fn") return Shortcut::fn;
    Shortcut result{};
    std::istringstream names(text);
    for (std::string each; std::getline(names, each, '+');) {
        const std::int64_t modifier = modifierNamed(each);
        result.modifiers.rawValue |= modifier;
        if (modifier == 0)
            result.keyCode = KeyCodes::virtualKey(FakeX11Keyboard::code(each) - KeyCodes::x11Offset).value_or(-1);
    }
    return result;
}

X11TapBench::X11TapBench(const std::vector<std::string>& wishes) {
    verdicts.answer = [this] {
        if (answers_.empty()) {
            keyboard.faults.emplace_back("asked without an answer in the line");
            return FakeVerdicts::Answer::pass;
        }
        const std::string given = answers_.front();
        answers_.pop_front();
        if (given == "late") return FakeVerdicts::Answer::late;
        isDone_ = given == "done";
        return isDone_ || given == "swallow" ? FakeVerdicts::Answer::swallow : FakeVerdicts::Answer::pass;
    };
    for (const std::string& wish : wishes)
        interest.shortcuts.push_back(shortcut(wish));
    setInterest();
}

X11TapBench::~X11TapBench() {
    const std::vector<std::string> breaches = finish();
    for (const std::string& each : breaches)
        std::fprintf(stderr, "Broken: %s\n", each.c_str());
    // A test or a fuzzer that nobody tells goes on as if nothing were wrong.
    if (!breaches.empty()) std::abort();
}

std::vector<std::string> X11TapBench::finish() {
    if (isFinished_) return {};
    isFinished_ = true;
    verdicts.answer = [] { return FakeVerdicts::Answer::pass; };
    keyboard.closeMenu();
    takeAgain();
    deliver();
    for (const unsigned int code : FakeX11Keyboard::codes()) {
        if (keyboard.held()[code]) keyboard.release(code);
        deliver();
    }
    interest = {};
    verdicts.enabled = true;
    setInterest();
    deliver();
    std::vector<std::string>& breaches = keyboard.faults;
    if (keyboard.isStandingStill()) breaches.emplace_back("the keyboard stands still");
    if (keyboard.isOursActive()) breaches.emplace_back("a grab has the keyboard with all keys up");
    if (!keyboard.ours().empty()) breaches.emplace_back("a combination is grabbed that is of no interest");
    if (keyboard.isListening() || keyboard.isListeningToKeys())
        breaches.emplace_back("listens with nothing of interest");
    if (verdicts.awaitsRelease()) breaches.emplace_back("a press that was told is never told as released");
    for (const unsigned int code : FakeX11Keyboard::codes())
        if (keyboard.isPressSeen(code) && !FakeX11Keyboard::isFlagKey(code))
            breaches.push_back("others wait for the release of " + FakeX11Keyboard::name(code));
    return std::move(breaches);
}

void X11TapBench::play(const std::string& words) {
    std::istringstream line(words);
    bool isBurst = false;
    std::vector<std::string> all;
    for (std::string word; line >> word;)
        all.push_back(word);
    for (auto word = all.begin(); word != all.end();) {
        const std::string current = *word++;
        if (current == "(" || current == ")") {
            isBurst = current == "(";
        } else if (!playMovement(current) && !playWish(current) && !playClient(current) && !playOther(current)) {
            keyboard.faults.push_back("no such word here: " + current);
        }
        if (isBurst) continue;
        for (; word != all.end() && isAnswer(*word); ++word)
            answers_.push_back(*word);
        deliver();
        if (!answers_.empty()) keyboard.faults.push_back("nobody asked after " + current);
        answers_.clear();
    }
}

bool X11TapBench::playMovement(const std::string& word) {
    const unsigned int code = FakeX11Keyboard::code(word.substr(1));
    if (code == 0) return false;
    if (word.front() == '+') {
        keyboard.press(code);
    } else if (word.front() == '-') {
        keyboard.release(code);
    } else if (word.front() == '~') {
        keyboard.repeat(code);
    } else {
        return false;
    }
    return true;
}

bool X11TapBench::playWish(const std::string& word) {
    if (word.starts_with("want:")) {
        interest.shortcuts.push_back(shortcut(word.substr(5)));
    } else if (word == "forget") {
        interest.shortcuts.clear();
    } else if (word == "record" || word == "stop") {
        interest.everyKey = word == "record";
    } else {
        return false;
    }
    setInterest();
    return true;
}

bool X11TapBench::playClient(const std::string& word) {
    if (word == "menu") return keyboard.openMenu();
    if (word == "close") {
        keyboard.closeMenu();
    } else if (word.starts_with("theirs:")) {
        keyboard.theirs.insert(FakeX11Keyboard::combination(word.substr(7)));
    } else if (word.starts_with("free:")) {
        keyboard.theirs.erase(FakeX11Keyboard::combination(word.substr(5)));
    } else if (word == "swap") {
        keyboard.swapAltAndSuper();
    } else {
        return false;
    }
    return true;
}

bool X11TapBench::playOther(const std::string& word) {
    if (word == "enable") {
        enable();
    } else if (word == "wait") {
        advance(std::chrono::milliseconds(100));
    } else if (word == "away") {
        giveBack();
    } else if (word == "back") {
        takeAgain();
    } else {
        return false;
    }
    return true;
}

void X11TapBench::setInterest() {
    deliver();
    engine.setInterest(interest, now);
}

void X11TapBench::enable() {
    deliver();
    verdicts.enabled = true;
    engine.resynchronize(now);
}

void X11TapBench::giveBack() {
    deliver();
    engine.giveBack(now);
    deliver();
    engine.stopListening();
    keyboard.excuseHeldKeys();
    isAway_ = true;
}

void X11TapBench::takeAgain() {
    isAway_ = false;
    setInterest();
}

void X11TapBench::deliver() {
    if (isAway_) return;
    while (!keyboard.inbox.empty()) {
        const FakeX11Keyboard::Message message = keyboard.inbox.front();
        keyboard.inbox.pop_front();
        dispatch(message);
        if (!std::exchange(isDone_, false)) continue;
        interest.everyKey = false;
        engine.setInterest(interest, now);
    }
    engine.settle();
}

void X11TapBench::dispatch(const FakeX11Keyboard::Message& message) {
    using enum FakeX11Keyboard::Message::Kind;
    const X11GrabbedKey& key = message.key;
    switch (message.kind) {
        case rawPress:
            return engine.rawPress(key.keyCode, key.time);
        case rawRelease:
            return engine.rawRelease(key.keyCode, key.time);
        case grabbedPress:
            return engine.grabbedPress(key, now);
        case grabbedRelease:
            return engine.grabbedRelease(key, now);
        case newModifiers:
            return engine.modifiersChanged(key.modifiers, key.time);
        case newKeymap:
            return engine.keymapChanged(key.time, now);
    }
}

void X11TapBench::advance(std::chrono::milliseconds time) {
    deliver();
    now += time;
    if (const auto deadline = engine.deadline(); deadline && *deadline <= now) engine.tick(now);
    deliver();
}

}  // namespace quillmere::support
