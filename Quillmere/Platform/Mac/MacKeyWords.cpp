#include "Quillmere/Platform/KeyWords.h"

namespace quillmere {

namespace {

std::string_view word(std::int64_t keyCode) {
    switch (keyCode) {
        case 51:
            return "Delete";
        case 53:
            return "Escape";
        case 114:
            return "Help";
        case 115:
            return "Home";
        case 116:
            return "Page Up";
        case 117:
            return "Forward Delete";
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
    return {.control = "Control", .option = "Option", .shift = "Shift", .command = "Command", .key = &word};
}

}  // namespace quillmere
