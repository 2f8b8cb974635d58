#include "Quillmere/Platform/Linux/Tap/KeyCodes.h"

#include "TapService/KeyRole.h"

#include <linux/input-event-codes.h>

#include <array>

namespace quillmere::KeyCodes {

namespace {

struct Entry {
    EvdevCode code;
    std::int64_t virtualKey;
};

// The grave key is the ANSI one on every board and the extra key beside the
// left Shift is the ISO section key: a board does not tell which kind it is.
// Of a Japanese PC board, the keys beside the space bar do what Eisu and Kana
// do on a Mac's. The PC keys without a place on a Mac's board are what macOS
// makes of them: Print Screen, Scroll Lock and Pause are F13 to F15, Insert is
// Help, Num Lock is Clear.
constexpr auto table = std::to_array<Entry>({
    {KEY_A, 0},
    {KEY_S, 1},
    {KEY_D, 2},
    {KEY_F, 3},
    {KEY_H, 4},
    {KEY_G, 5},
    {KEY_Z, 6},
    {KEY_X, 7},
    {KEY_C, 8},
    {KEY_V, 9},
    {KEY_102ND, 10},
    {KEY_B, 11},
    {KEY_Q, 12},
    {KEY_W, 13},
    {KEY_E, 14},
    {KEY_R, 15},
    {KEY_Y, 16},
    {KEY_T, 17},
    {KEY_1, 18},
    {KEY_2, 19},
    {KEY_3, 20},
    {KEY_4, 21},
    {KEY_6, 22},
    {KEY_5, 23},
    {KEY_EQUAL, 24},
    {KEY_9, 25},
    {KEY_7, 26},
    {KEY_MINUS, 27},
    {KEY_8, 28},
    {KEY_0, 29},
    {KEY_RIGHTBRACE, 30},
    {KEY_O, 31},
    {KEY_U, 32},
    {KEY_LEFTBRACE, 33},
    {KEY_I, 34},
    {KEY_P, 35},
    {KEY_ENTER, 36},
    {KEY_L, 37},
    {KEY_J, 38},
    {KEY_APOSTROPHE, 39},
    {KEY_K, 40},
    {KEY_SEMICOLON, 41},
    {KEY_BACKSLASH, 42},
    {KEY_COMMA, 43},
    {KEY_SLASH, 44},
    {KEY_N, 45},
    {KEY_M, 46},
    {KEY_DOT, 47},
    {KEY_TAB, 48},
    {KEY_SPACE, 49},
    {KEY_GRAVE, 50},
    {KEY_BACKSPACE, 51},
    {KEY_ESC, 53},
    {KEY_RIGHTMETA, 54},
    {KEY_LEFTMETA, 55},
    {KEY_LEFTSHIFT, 56},
    {KEY_CAPSLOCK, 57},
    {KEY_LEFTALT, 58},
    {KEY_LEFTCTRL, 59},
    {KEY_RIGHTSHIFT, 60},
    {KEY_RIGHTALT, 61},
    {KEY_RIGHTCTRL, 62},
    {KEY_FN, 63},
    {KEY_KBD_LAYOUT_NEXT, 63},
    {KEY_WAKEUP, 63},
    {KEY_F17, 64},
    {KEY_KPDOT, 65},
    {KEY_KPASTERISK, 67},
    {KEY_KPPLUS, 69},
    {KEY_NUMLOCK, 71},
    {KEY_KPSLASH, 75},
    {KEY_KPENTER, 76},
    {KEY_KPMINUS, 78},
    {KEY_F18, 79},
    {KEY_F19, 80},
    {KEY_KPEQUAL, 81},
    {KEY_KP0, 82},
    {KEY_KP1, 83},
    {KEY_KP2, 84},
    {KEY_KP3, 85},
    {KEY_KP4, 86},
    {KEY_KP5, 87},
    {KEY_KP6, 88},
    {KEY_KP7, 89},
    {KEY_F20, 90},
    {KEY_KP8, 91},
    {KEY_KP9, 92},
    {KEY_YEN, 93},
    {KEY_RO, 94},
    {KEY_KPJPCOMMA, 95},
    {KEY_KPCOMMA, 95},
    {KEY_F5, 96},
    {KEY_F6, 97},
    {KEY_F7, 98},
    {KEY_F3, 99},
    {KEY_F8, 100},
    {KEY_F9, 101},
    {KEY_HANJA, 102},
    {KEY_MUHENKAN, 102},
    {KEY_F11, 103},
    {KEY_HANGEUL, 104},
    {KEY_HENKAN, 104},
    {KEY_KATAKANAHIRAGANA, 104},
    {KEY_F13, 105},
    {KEY_SYSRQ, 105},
    {KEY_F16, 106},
    {KEY_F14, 107},
    {KEY_SCROLLLOCK, 107},
    {KEY_F10, 109},
    {KEY_COMPOSE, 110},
    {KEY_F12, 111},
    {KEY_F15, 113},
    {KEY_PAUSE, 113},
    {KEY_INSERT, 114},
    {KEY_HELP, 114},
    {KEY_HOME, 115},
    {KEY_PAGEUP, 116},
    {KEY_DELETE, 117},
    {KEY_F4, 118},
    {KEY_END, 119},
    {KEY_F2, 120},
    {KEY_PAGEDOWN, 121},
    {KEY_F1, 122},
    {KEY_LEFT, 123},
    {KEY_RIGHT, 124},
    {KEY_DOWN, 125},
    {KEY_UP, 126},
});

constexpr std::int8_t noVirtualKey = -1;

// The table by evdev code, since every key press looks one up.
constexpr auto byCode = [] {
    std::array<std::int8_t, KEY_CNT> result{};
    result.fill(noVirtualKey);
    for (const Entry& entry : table)
        result[entry.code] = static_cast<std::int8_t>(entry.virtualKey);
    return result;
}();

constexpr std::int64_t firstModifier = 54;
constexpr std::int64_t lastModifier = 62;
constexpr std::int64_t fnVirtualKey = 63;

constexpr std::int64_t lookUp(EvdevCode code) {
    return code < byCode.size() ? byCode[code] : noVirtualKey;
}

constexpr bool isModifierKey(std::int64_t virtualKey) {
    return virtualKey >= firstModifier && virtualKey <= lastModifier;
}

// What Fn and the modifiers are is also said by the tap service, which knows no
// virtual keys.
static_assert([] {
    for (EvdevCode code = 0; code < byCode.size(); ++code) {
        const tap::KeyRole role = tap::roleOf(static_cast<std::uint16_t>(code));
        if ((role == tap::KeyRole::fn) != (byCode[code] == fnVirtualKey)) return false;
        if ((role == tap::KeyRole::modifier) != isModifierKey(byCode[code])) return false;
    }
    return true;
}());

}  // namespace

std::optional<std::int64_t> virtualKey(EvdevCode code) {
    const std::int64_t found = lookUp(code);
    return found == noVirtualKey ? std::nullopt : std::optional(found);
}

std::vector<EvdevCode> evdevCodes(std::int64_t virtualKey) {
    std::vector<EvdevCode> result;
    for (const Entry& entry : table)
        if (entry.virtualKey == virtualKey) result.push_back(entry.code);
    return result;
}

bool isFn(EvdevCode code) {
    return lookUp(code) == fnVirtualKey;
}

bool isModifier(EvdevCode code) {
    return isModifierKey(lookUp(code));
}

}  // namespace quillmere::KeyCodes
