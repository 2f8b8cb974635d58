#include "Tests/X11Tap/FakeVerdicts.h"

#include "Quillmere/Platform/Linux/Tap/KeyCodes.h"

#include <utility>

namespace quillmere::support {

namespace {

std::string flagNames(std::uint64_t flags) {
    std::string text;
    for (const auto& [flag, name] :
         {std::pair(KeyEventFlags::command, "super+"), std::pair(KeyEventFlags::shift, "shift+"),
          std::pair(KeyEventFlags::option, "alt+"), std::pair(KeyEventFlags::control, "ctrl+"),
          std::pair(KeyEventFlags::capsLock, "caps+"), std::pair(KeyEventFlags::secondaryFn, "fn+")}) {
        if ((flags & flag) != 0) text += name;
    }
    return text;
}

}  // namespace

void FakeVerdicts::write(const char* what, const KeyEventFields& event) {
    if (!log.empty()) log += ' ';
    log += what + flagNames(event.flags);
    const bool hasKey = event.type == KeyEventType::keyDown || event.type == KeyEventType::keyUp;
    if (hasKey) log += FakeX11Keyboard::name(KeyCodes::evdevCodes(event.keyCode).front() + KeyCodes::x11Offset);
}

InterceptDecision FakeVerdicts::ask(const KeyEventFields& event) {
    const unsigned long pressTime = event.timestamp / 1'000'000;
    pressed_.insert(event.keyCode);
    if (!enabled) {
        keyboard_.noteVerdict(pressTime, InterceptDecision::pass);
        return InterceptDecision::pass;
    }
    write("ask:", event);
    const Answer given = answer();
    const auto verdict = given == Answer::swallow ? InterceptDecision::swallow : InterceptDecision::pass;
    keyboard_.noteVerdict(pressTime, verdict);
    if (given == Answer::late) {
        enabled = false;
        log += " disabled";
    }
    return verdict;
}

bool FakeVerdicts::tell(const KeyEventFields& event) {
    if (event.type == KeyEventType::keyUp) {
        write("release:", event);
        if (pressed_.erase(event.keyCode) == 0) keyboard_.faults.emplace_back("told of a release without its press");
        return true;
    }
    if (!enabled) return false;
    if (event.type == KeyEventType::keyDown) {
        write("repeat:", event);
        if (!pressed_.contains(event.keyCode)) keyboard_.faults.emplace_back("told of a repeat without its press");
    } else if (event.type == KeyEventType::flagsChanged) {
        write("flags:", event);
    } else {
        log += log.empty() ? "other" : " other";
    }
    return true;
}

}  // namespace quillmere::support
