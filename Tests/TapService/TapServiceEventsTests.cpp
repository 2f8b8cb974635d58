#include "Quillmere/Platform/Linux/Tap/Service/TapServiceEvents.h"

#include <gtest/gtest.h>

#include <linux/input-event-codes.h>

namespace quillmere {
namespace {

constexpr std::int64_t returnKey = 36;
constexpr std::int64_t isoAndJisKana = 104;

TEST(TapServiceEvents, AShortcutIsTheKeyAndItsModifiers) {
    const KeyInterest interest{.shortcuts = {{Shortcut::space, Modifiers::control | Modifiers::option}}};
    const tap::Interest expected{.shortcuts = {{KEY_SPACE, tap::Flags::control | tap::Flags::option}}};
    EXPECT_EQ(TapServiceEvents::interest(interest), expected);
}

TEST(TapServiceEvents, EveryKeyWithTheCodeCounts) {
    const tap::Interest interest = TapServiceEvents::interest({.shortcuts = {{isoAndJisKana, Modifiers::command}}});
    const std::vector<tap::TapShortcut> expected{{KEY_HANGEUL, tap::Flags::command},
                                                 {KEY_HENKAN, tap::Flags::command},
                                                 {KEY_KATAKANAHIRAGANA, tap::Flags::command}};
    EXPECT_EQ(interest.shortcuts, expected);
}

TEST(TapServiceEvents, FnAloneIsAWishAndNoShortcut) {
    EXPECT_EQ(TapServiceEvents::interest({.shortcuts = {Shortcut::fn}}), tap::Interest{.wantsFn = true});
}

TEST(TapServiceEvents, WhatIsNeverPressedIsNotAskedFor) {
    const KeyInterest interest{.shortcuts = {
                                   {Shortcut::fnKeyCode, Modifiers::control},
                                   {56, Modifiers::command},             // a Shift key
                                   {999, Modifiers::command},            // no key
                                   {Shortcut::space, Modifiers(16)},     // a bit of a later version
                                   {Shortcut::space, {}},                // typed, and told to nobody
                                   {Shortcut::space, Modifiers::shift},  // the same
                               }};
    EXPECT_EQ(TapServiceEvents::interest(interest), tap::Interest{});
}

TEST(TapServiceEvents, TheSameShortcutTwiceIsOne) {
    const Shortcut shortcut{Shortcut::space, Modifiers::control};
    EXPECT_EQ(TapServiceEvents::interest({.shortcuts = {shortcut, shortcut}}).shortcuts.size(), 1U);
}

TEST(TapServiceEvents, ARecordingWantsEveryKey) {
    EXPECT_TRUE(TapServiceEvents::interest({.everyKey = true}).everyKey);
}

TEST(TapServiceEvents, EachKindOfEventHasItsType) {
    const struct {
        const char* title;
        tap::KeyEvent event;
        KeyEventFields fields;
    } rows[] = {
        {"a press",
         {tap::KeyEventKind::press, KEY_ENTER, tap::Flags::control, 7, 42},
         {KeyEventType::keyDown, returnKey, 0, KeyEventFlags::control, 42}},
        {"a repeat",
         {tap::KeyEventKind::repeat, KEY_ENTER, tap::Flags::shift, 0, 42},
         {KeyEventType::keyDown, returnKey, 1, KeyEventFlags::shift, 42}},
        {"a release", {tap::KeyEventKind::release, KEY_ENTER, 0, 0, 42}, {KeyEventType::keyUp, returnKey, 0, 0, 42}},
        {"Fn",
         {tap::KeyEventKind::flags, 0, tap::Flags::fn | tap::Flags::command, 0, 42},
         {KeyEventType::flagsChanged, 0, 0, KeyEventFlags::secondaryFn | KeyEventFlags::command, 42}},
        {"some other key",
         {tap::KeyEventKind::other, 0, tap::Flags::fn, 0, 42},
         {KeyEventType::systemDefined, 0, 0, KeyEventFlags::secondaryFn, 42}},
        {"a special key",
         {tap::KeyEventKind::press, KEY_VOLUMEUP, tap::Flags::option, 7, 42},
         {KeyEventType::systemDefined, 0, 0, KeyEventFlags::option, 42}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.title);
        const auto fields = TapServiceEvents::fields(row.event);
        ASSERT_TRUE(fields.has_value());
        EXPECT_EQ(fields->type, row.fields.type);
        EXPECT_EQ(fields->keyCode, row.fields.keyCode);
        EXPECT_EQ(fields->autorepeat, row.fields.autorepeat);
        EXPECT_EQ(fields->flags, row.fields.flags);
        EXPECT_EQ(fields->timestamp, row.fields.timestamp);
    }
}

TEST(TapServiceEvents, TheReleaseOfASpecialKeyMeansNothing) {
    EXPECT_FALSE(TapServiceEvents::fields({tap::KeyEventKind::release, KEY_VOLUMEUP, 0, 0, 1}).has_value());
}

}  // namespace
}  // namespace quillmere
