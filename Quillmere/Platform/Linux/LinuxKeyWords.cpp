#include "Quillmere/Platform/KeyWords.h"

namespace quillmere {

namespace {

// As PC keyboards say it. The codes are those that KeyCodes gives to their keys.
std::string_view word(std::int64_t keyCode) {
    switch (keyCode) {
        case 36:
            return "Enter";
        case 51:
            return "Backspace";
        case 53:
            return "Escape";
        case 105:
            return "Print";
        case 107:
            return "Scroll Lock";
        case 110:
            return "Menu";
        case 113:
            return "Pause";
        case 114:
            return "Insert";
        case 115:
            return "Home";
        case 116:
            return "Page Up";
        case 117:
            return "Delete";
        case 119:
            return "End";
        case 121:
            return "Page Down";
        default:
            return {};
    }
}

}  // namespace

KeyWords keyWords() {
    return {.control = "Ctrl", .option = "Alt", .shift = "Shift", .command = "Super", .key = &word};
}

}  // namespace quillmere
