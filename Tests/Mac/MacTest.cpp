#include "Tests/Mac/MacTest.h"

#include "Quillmere/Platform/KeyEvent.h"
#include "Tests/Mac/Doubles/Preferences.h"
#include "Tests/Mac/Doubles/TextInput.h"

namespace quillmere {

using windowserver::Fate;

MacTest::MacTest() {
    textinput::installed = {
        {.id = english, .name = "ABC", .languages = {"en", "de"}},
        {.id = ukrainian, .name = "Українська", .languages = {"uk"}},
        {.id = japanese, .type = "TISTypeKeyboardInputMode", .name = "ひらがな", .languages = {"ja"}},
    };
    textinput::current = 0;
}

MacTest::~MacTest() {
    textinput::reset();
    windowserver::reset();
    preferences::reset();
}

Fate MacTest::down(std::int64_t key, std::uint64_t flags, bool isRepeat) {
    return windowserver::post({KeyEventType::keyDown, key, isRepeat, flags, time_});
}

Fate MacTest::up(std::int64_t key, std::uint64_t flags) {
    return windowserver::post({KeyEventType::keyUp, key, 0, flags, time_});
}

Fate MacTest::changeFlags(std::uint64_t flags) {
    return windowserver::post({KeyEventType::flagsChanged, 0, 0, flags, time_});
}

Fate MacTest::pressSpecialKey() {
    return windowserver::post({KeyEventType::systemDefined, 0, 0, 0, time_});
}

void MacTest::tapFn(double seconds) {
    changeFlags(KeyEventFlags::secondaryFn);
    wait(seconds);
    changeFlags(0);
}

void MacTest::wait(double seconds) {
    time_ += static_cast<std::uint64_t>(seconds * 1e9);
}

std::string MacTest::currentSource() {
    return textinput::current ? textinput::installed.at(*textinput::current).id.value_or("") : "";
}

}  // namespace quillmere
