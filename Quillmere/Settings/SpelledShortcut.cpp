#include "Quillmere/Settings/SpelledShortcut.h"

#include "Quillmere/Platform/KeyWords.h"

#include <string_view>
#include <utility>

namespace quillmere {

namespace {

std::string keyWord(std::int64_t keyCode, const KeyWords& words) {
    if (const std::string_view word = words.key(keyCode); !word.empty()) return std::string(word);
    switch (keyCode) {
        case Shortcut::fnKeyCode:
            return "Fn";
        case 123:
            return "Left";
        case 124:
            return "Right";
        case 125:
            return "Down";
        case 126:
            return "Up";
        default:
            return Shortcut{keyCode, {}}.displayString();
    }
}

}  // namespace

std::string spelledShortcut(const Shortcut& shortcut) {
    const KeyWords words = keyWords();
    std::string text;
    for (const auto& [modifier, word] : {std::pair(Modifiers::control, words.control),
                                         {Modifiers::option, words.option},
                                         {Modifiers::shift, words.shift},
                                         {Modifiers::command, words.command}})
        if (shortcut.modifiers.contains(modifier)) text.append(word).append("+");
    return text + keyWord(shortcut.keyCode, words);
}

}  // namespace quillmere
