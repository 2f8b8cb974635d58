#include "Quillmere/Platform/Linux/Tap/KeyCodes.h"

#include <gtest/gtest.h>

#include <linux/input-event-codes.h>

#include <algorithm>
#include <set>
#include <vector>

namespace quillmere {

namespace {

struct KeyCase {
    const char* name;
    KeyCodes::EvdevCode code;
    std::int64_t virtualKey;
};

class KeyCodesTest : public testing::TestWithParam<KeyCase> {};

TEST_P(KeyCodesTest, AKeyHasTheNumberThatItHasOnAMac) {
    EXPECT_EQ(KeyCodes::virtualKey(GetParam().code), GetParam().virtualKey);
    const auto codes = KeyCodes::evdevCodes(GetParam().virtualKey);
    EXPECT_NE(std::ranges::find(codes, GetParam().code), codes.end());
}

INSTANTIATE_TEST_SUITE_P(
    Keys, KeyCodesTest,
    testing::Values(KeyCase{"a", KEY_A, 0}, KeyCase{"space", KEY_SPACE, 49}, KeyCase{"five", KEY_5, 23},
                    KeyCase{"six", KEY_6, 22}, KeyCase{"grave", KEY_GRAVE, 50}, KeyCase{"isoSection", KEY_102ND, 10},
                    KeyCase{"return", KEY_ENTER, 36}, KeyCase{"backspace", KEY_BACKSPACE, 51},
                    KeyCase{"forwardDelete", KEY_DELETE, 117}, KeyCase{"escape", KEY_ESC, 53},
                    KeyCase{"yen", KEY_YEN, 93}, KeyCase{"underscore", KEY_RO, 94}, KeyCase{"eisu", KEY_HANJA, 102},
                    KeyCase{"kana", KEY_HANGEUL, 104}, KeyCase{"muhenkan", KEY_MUHENKAN, 102},
                    KeyCase{"henkan", KEY_HENKAN, 104}, KeyCase{"keypadComma", KEY_KPJPCOMMA, 95},
                    KeyCase{"keypad0", KEY_KP0, 82}, KeyCase{"keypad7", KEY_KP7, 89}, KeyCase{"keypad8", KEY_KP8, 91},
                    KeyCase{"keypadEnter", KEY_KPENTER, 76}, KeyCase{"keypadEqual", KEY_KPEQUAL, 81},
                    KeyCase{"keypadClear", KEY_NUMLOCK, 71}, KeyCase{"f1", KEY_F1, 122}, KeyCase{"f5", KEY_F5, 96},
                    KeyCase{"f12", KEY_F12, 111}, KeyCase{"f13", KEY_F13, 105}, KeyCase{"printScreen", KEY_SYSRQ, 105},
                    KeyCase{"f20", KEY_F20, 90}, KeyCase{"left", KEY_LEFT, 123}, KeyCase{"up", KEY_UP, 126},
                    KeyCase{"menu", KEY_COMPOSE, 110}, KeyCase{"fn", KEY_FN, 63},
                    KeyCase{"globe", KEY_KBD_LAYOUT_NEXT, 63}, KeyCase{"laptopFn", KEY_WAKEUP, 63},
                    KeyCase{"rightCommand", KEY_RIGHTMETA, 54}, KeyCase{"rightControl", KEY_RIGHTCTRL, 62}),
    [](const auto& info) { return info.param.name; });

TEST(KeyCodes, TheWayBackLeadsToTheSameKey) {
    for (std::int64_t key = 0; key < 128; ++key)
        for (const KeyCodes::EvdevCode code : KeyCodes::evdevCodes(key))
            EXPECT_EQ(KeyCodes::virtualKey(code), key) << code;
}

TEST(KeyCodes, EveryKeyOfAnAnsiAnIsoAndAJapaneseBoardHasANumber) {
    // The whole main block, without the few numbers that no keyboard of a PC uses.
    const std::set<KeyCodes::EvdevCode> unused{84, KEY_ZENKAKUHANKAKU, KEY_KATAKANA, KEY_HIRAGANA, KEY_LINEFEED};
    for (KeyCodes::EvdevCode code = KEY_ESC; code <= KEY_DELETE; ++code)
        EXPECT_EQ(KeyCodes::virtualKey(code).has_value(), !unused.contains(code)) << code;
}

TEST(KeyCodes, ModifiersAndFnAreToldApartFromKeys) {
    for (const KeyCodes::EvdevCode code :
         std::vector<KeyCodes::EvdevCode>{KEY_LEFTSHIFT, KEY_RIGHTSHIFT, KEY_LEFTCTRL, KEY_RIGHTCTRL, KEY_LEFTALT,
                                          KEY_RIGHTALT, KEY_LEFTMETA, KEY_RIGHTMETA, KEY_CAPSLOCK})
        EXPECT_TRUE(KeyCodes::isModifier(code) && !KeyCodes::isFn(code)) << code;
    for (const KeyCodes::EvdevCode code : std::vector<KeyCodes::EvdevCode>{KEY_FN, KEY_KBD_LAYOUT_NEXT, KEY_WAKEUP})
        EXPECT_TRUE(KeyCodes::isFn(code) && !KeyCodes::isModifier(code)) << code;
    EXPECT_FALSE(KeyCodes::isModifier(KEY_A) || KeyCodes::isFn(KEY_A));
}

TEST(KeyCodes, MediaAndPowerKeysHaveNoNumber) {
    for (const KeyCodes::EvdevCode code :
         std::vector<KeyCodes::EvdevCode>{KEY_MUTE, KEY_BRIGHTNESSUP, KEY_PLAYPAUSE, KEY_POWER, KEY_MICMUTE})
        EXPECT_FALSE(KeyCodes::virtualKey(code)) << code;
}

TEST(KeyCodes, NumbersBeyondTheKernelsAreNoKeys) {
    for (const KeyCodes::EvdevCode code : {0U, unsigned{KEY_CNT}, 0xFFFFFFFFU})
        EXPECT_FALSE(KeyCodes::virtualKey(code).has_value());
    EXPECT_TRUE(KeyCodes::evdevCodes(-1).empty());
    EXPECT_TRUE(KeyCodes::evdevCodes(1'000'000).empty());
}

}  // namespace

}  // namespace quillmere
