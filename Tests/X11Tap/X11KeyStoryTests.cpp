#include "Tests/X11Tap/X11TapBench.h"

#include <gtest/gtest.h>

#include <cctype>
#include <ostream>

namespace quillmere::support {
namespace {

/// One story: which shortcuts are of interest, what happens, what all other
/// clients see, and what the program is told.
struct Story {
    const char* title;
    std::vector<std::string> wishes;
    const char* words;
    const char* seen;
    const char* told;
};

void PrintTo(const Story& story, std::ostream* stream) {
    *stream << story.title;
}

const Story stories[] = {
    // Keys of no interest
    {"a key of no interest passes and nobody is told", {"ctrl+space"}, "+a -a", "+a -a", ""},
    {"a shortcut's key alone is of no interest", {"ctrl+space"}, "+space -space", "+space -space", ""},
    {"one modifier more is another shortcut",
     {"ctrl+space"},
     "+ctrl +shift +space -space -shift -ctrl",
     "+ctrl +shift +space -space -shift -ctrl",
     ""},
    {"a level chooser makes it another character",
     {"ctrl+space"},
     "+ctrl +altgr +space -space -altgr -ctrl",
     "+ctrl +altgr +space -space -altgr -ctrl",
     ""},

    // Verdicts
    {"a swallowed shortcut leaves only its modifier",
     {"ctrl+space"},
     "+ctrl +space swallow -space -ctrl",
     "+ctrl -ctrl",
     "ask:ctrl+space release:ctrl+space"},
    {"a passed shortcut comes out whole",
     {"ctrl+space"},
     "+ctrl +space pass -space -ctrl",
     "+ctrl +space -space -ctrl",
     "ask:ctrl+space release:ctrl+space"},
    {"in a burst without a gap a swallowed shortcut leaves its modifier as well",
     {"ctrl+space"},
     "( +ctrl +space -space -ctrl ) swallow",
     "+ctrl -ctrl",
     "ask:ctrl+space release:ctrl+space"},
    {"in a burst a passed shortcut comes out whole as well",
     {"ctrl+space"},
     "( +ctrl +space -space -ctrl ) pass",
     "+ctrl +space -space -ctrl",
     "ask:ctrl+space release:ctrl+space"},
    {"each press is asked about again",
     {"ctrl+space"},
     "+ctrl +space swallow -space +space pass -space -ctrl",
     "+ctrl +space -space -ctrl",
     "ask:ctrl+space release:ctrl+space ask:ctrl+space release:ctrl+space"},
    {"locks do not matter",
     {"ctrl+space"},
     "+caps -caps +num -num +ctrl +space swallow -space -ctrl",
     "+caps -caps +num -num +ctrl -ctrl",
     "ask:ctrl+caps+space release:ctrl+caps+space"},
    {"a shortcut without a modifier is decided when its grab delivers it",
     {"space"},
     "+space swallow -space +a -a",
     "+a -a",
     "ask:space release:space"},
    {"letters behind a shortcut in a burst are typed in their order",
     {"ctrl+space"},
     "( +ctrl +space -space -ctrl +a -a +b -b ) swallow",
     "+ctrl -ctrl +a -a +b -b",
     "ask:ctrl+space release:ctrl+space"},
    {"two shortcuts in a burst are two questions",
     {"ctrl+space"},
     "( +ctrl +space -space +space -space -ctrl ) swallow swallow",
     "+ctrl -ctrl",
     "ask:ctrl+space release:ctrl+space ask:ctrl+space release:ctrl+space"},

    // The modifiers go first
    {"a swallowed key stays swallowed when the modifier goes first",
     {"ctrl+space"},
     "+ctrl +space swallow -ctrl -space",
     "+ctrl",
     "ask:ctrl+space release:space"},
    {"a key whose modifier has gone repeats to nobody",
     {"ctrl+space"},
     "+ctrl +space swallow ~space -ctrl ~space -space",
     "+ctrl",
     "ask:ctrl+space repeat:ctrl+space release:space"},

    // Repeats
    {"a held shortcut repeats to the program only and is released once",
     {"ctrl+space"},
     "+ctrl +space swallow ~space ~space -space -ctrl",
     "+ctrl -ctrl",
     "ask:ctrl+space repeat:ctrl+space repeat:ctrl+space release:ctrl+space"},
    {"a passed shortcut repeats to the others only",
     {"ctrl+space"},
     "+ctrl +space pass ~space ~space -space -ctrl",
     "+ctrl +space ~space ~space -space -ctrl",
     "ask:ctrl+space release:ctrl+space"},
    {"a repeat of a key that others have seen pressed stays with them",
     {"ctrl+space"},
     "+space ~space +ctrl ~space ~space -space -ctrl",
     "+space ~space +ctrl ~space ~space -space -ctrl",
     ""},

    // Other keys while a shortcut is held
    {"a key held since before the shortcut is released to its application",
     {"ctrl+space"},
     "+a +ctrl +space swallow -a -space -ctrl",
     "+a +ctrl -a -ctrl",
     "ask:ctrl+space release:ctrl+space"},
    {"so are several keys, in any order",
     {"ctrl+space"},
     "+a +b +ctrl +space swallow -b ~space -a -space -ctrl",
     "+a +b +ctrl -b -a -ctrl",
     "ask:ctrl+space repeat:ctrl+space release:ctrl+space"},
    {"a letter rolled over a held shortcut is typed",
     {"ctrl+space"},
     "+ctrl +space swallow -ctrl +a -space -a",
     "+ctrl +a -a",
     "ask:ctrl+space release:space"},
    {"many letters rolled over a held shortcut are typed",
     {"ctrl+space"},
     "+ctrl +space swallow -ctrl +a +s -a +b -b -s -space +k -k",
     "+ctrl +a +s -a +b -b -s +k -k",
     "ask:ctrl+space release:space"},
    {"a letter that repeats over a held shortcut repeats to its application",
     {"ctrl+space"},
     "+ctrl +space swallow +a ~a ~a -space ~a -a -ctrl",
     "+ctrl +a ~a ~a ~a -a -ctrl",
     "ask:ctrl+space release:ctrl+space"},
    {"what comes with the shortcut's release in one burst the server itself passes",
     {"ctrl+space"},
     "+a +ctrl +space swallow ( -a -space -ctrl )",
     "+a +ctrl -a stray-space -ctrl",
     "ask:ctrl+space release:ctrl+space"},
    {"a second shortcut while the first is held is asked about too",
     {"ctrl+space", "ctrl+k"},
     "+ctrl +space swallow +k swallow -k -space -ctrl",
     "+ctrl -ctrl",
     "ask:ctrl+space ask:ctrl+k release:ctrl+k release:ctrl+space"},
    {"a second shortcut that is released last reaches nobody either",
     {"ctrl+space", "ctrl+k"},
     "+ctrl +space swallow +k swallow -space -k -ctrl",
     "+ctrl -ctrl",
     "ask:ctrl+space ask:ctrl+k release:ctrl+space release:ctrl+k"},
    {"a second shortcut that passes leaves the first swallowed",
     {"ctrl+space", "ctrl+k"},
     "+ctrl +space swallow +k pass -space -k -ctrl",
     "+ctrl +k -k -ctrl",
     "ask:ctrl+space ask:ctrl+k release:ctrl+space release:ctrl+k"},
    {"a shortcut right behind a letter over a held one is asked about",
     {"ctrl+space", "ctrl+k"},
     "+ctrl +space swallow ( +a -a +k ) pass -k -space -ctrl",
     "+ctrl +a -a +k -k -ctrl",
     "ask:ctrl+space ask:ctrl+k release:ctrl+k release:ctrl+space"},

    // The filler
    {"Alt of a swallowed shortcut is no lone tap",
     {"alt+space"},
     "+alt +space swallow -space -alt",
     "+alt +filler -filler -alt",
     "ask:alt+space release:alt+space"},
    {"nor is Super, after a letter was rolled over",
     {"super+space"},
     "+super +space swallow +a -a -space -super",
     "+super +a -a +filler -filler -super",
     "ask:super+space release:super+space"},
    {"a passed shortcut needs no filler",
     {"alt+space"},
     "+alt +space pass -space -alt",
     "+alt +space -space -alt",
     "ask:alt+space release:alt+space"},
    {"a filler that the next shortcut has overtaken is kept",
     {"alt+space"},
     "( +alt +space -space +space ) swallow swallow -space -alt",
     "+alt +filler -filler -alt",
     "ask:alt+space release:alt+space ask:alt+space release:alt+space"},

    // Fails open
    {"without a verdict in time the key passes and nothing is asked any more",
     {"ctrl+space"},
     "+ctrl +space late -space +space -space -ctrl",
     "+ctrl +space -space +space -space -ctrl",
     "ask:ctrl+space disabled release:ctrl+space release:ctrl+space"},
    {"enabled again it asks again",
     {"ctrl+space"},
     "+ctrl +space late -space enable +space swallow -space -ctrl",
     "+ctrl +space -space -ctrl",
     "ask:ctrl+space disabled release:ctrl+space ask:ctrl+space release:ctrl+space"},

    // Other clients
    {"with another client's menu open a shortcut is told of and not swallowed",
     {"ctrl+space"},
     "menu +ctrl +space swallow -space -ctrl close +ctrl +space swallow -space -ctrl",
     "+ctrl +space -space -ctrl +ctrl -ctrl",
     "ask:ctrl+space release:ctrl+space ask:ctrl+space release:ctrl+space"},
    {"a combination of another client is left to it until it lets go",
     {"ctrl+k"},
     "theirs:ctrl+space want:ctrl+space +ctrl +space swallow -space free:ctrl+space +space swallow -space "
     "+space swallow -space -ctrl",
     "+ctrl +space -space +space -space -ctrl",
     "ask:ctrl+space release:ctrl+space ask:ctrl+space release:ctrl+space ask:ctrl+space release:ctrl+space"},
    {"a combination that another client takes later is still asked about once",
     {"ctrl+space"},
     "theirs:ctrl+space +ctrl +space swallow -space -ctrl",
     "+ctrl +space -space -ctrl",
     "ask:ctrl+space release:ctrl+space"},

    // The interest changes
    {"a release is told though the interest has ended meanwhile",
     {"ctrl+space"},
     "+ctrl +space swallow forget -space -ctrl",
     "+ctrl -ctrl",
     "ask:ctrl+space release:ctrl+space"},
    {"a new shortcut is asked about at once",
     {},
     "+ctrl want:ctrl+space +space swallow -space -ctrl",
     "+ctrl -ctrl",
     "ask:ctrl+space release:ctrl+space"},
    {"the grabs follow the map when it has settled",
     {"alt+space"},
     "swap wait +alt +space swallow -space -alt",
     "+alt +filler -filler -alt",
     "ask:alt+space release:alt+space"},
    {"what was held when everything is given back is told as released later",
     {"ctrl+space"},
     "+ctrl +space swallow away -space -ctrl back +ctrl +space swallow -space -ctrl",
     "+ctrl stray-space -ctrl +ctrl -ctrl",
     "ask:ctrl+space release:space ask:ctrl+space release:ctrl+space"},

    // Recording
    {"while recording every key is asked about and reaches nobody",
     {},
     "record +a swallow -a +ctrl +k swallow -k -ctrl stop +b -b",
     "+b -b",
     "ask:a release:a ask:ctrl+k release:ctrl+k"},
    {"a recording ends when the last key is up",
     {},
     "record +ctrl +k swallow stop -k -ctrl +a -a",
     "+a -a",
     "ask:ctrl+k release:ctrl+k"},
    {"a letter typed before the last key is up is not lost",
     {},
     "record +ctrl +k swallow stop -ctrl +a -a -k",
     "+a -a",
     "ask:ctrl+k release:k"},
    {"a passed key reaches the application and the recording goes on",
     {},
     "record +a pass -a +k swallow -k stop +b -b",
     "+a -a +b -b",
     "ask:a release:a ask:k release:k"},
    {"a key that is down when it begins is released to its application",
     {},
     "+a record -a +k swallow -k stop",
     "+a -a",
     "ask:k release:k"},
    {"a key that passed is released to its application right behind the last other one",
     {},
     "record +b pass +ctrl stop ( -ctrl -b )",
     "+b -b",
     "ask:b release:b"},
    {"a key pressed again behind one that passes is released to its application",
     {},
     "record +a swallow ( +s -a +a ) pass swallow -a -s stop",
     "+s stray-a +a -a -s",
     "ask:a ask:s release:a ask:a release:a release:s"},
    {"the repeats of a key that was down when it began reach nobody", {}, "+a record ~a ~a -a stop", "+a -a", ""},
    {"it waits for another client to give the keyboard back",
     {},
     "menu record +a swallow -a close wait +k swallow -k stop",
     "+a -a",
     "ask:a release:a ask:k release:k"},
    {"a shortcut held when it begins is released to nobody",
     {"ctrl+space"},
     "+ctrl +space swallow record +a swallow -a -space -ctrl stop +b -b",
     "+ctrl +b -b",
     "ask:ctrl+space ask:ctrl+a release:ctrl+a release:ctrl+space"},
    {"so is one over which a letter was rolled",
     {"ctrl+space"},
     "+ctrl +space swallow +a record -space -a -ctrl stop +b -b",
     "+ctrl +a -a +b -b",
     "ask:ctrl+space release:ctrl+space"},
    {"after a late verdict keys pass until it is enabled again",
     {},
     "record +a late -a +b -b enable +k swallow -k stop",
     "+a -a +b -b",
     "ask:a disabled release:a release:b ask:k release:k"},

    // Fn
    {"a tap of Fn is told as flags and reaches the application", {"fn"}, "+fn -fn", "+fn -fn", "flags:fn+ flags:"},
    {"what is typed without Fn is told to nobody", {"fn"}, "+a -a +ctrl +k -k -ctrl", "+a -a +ctrl +k -k -ctrl", ""},
    {"other keys while Fn is down are told without their names",
     {"fn"},
     "+fn +a -a +shift -shift -fn",
     "+fn +a -a +shift -shift -fn",
     "flags:fn+ other flags:shift+fn+ flags:fn+ flags:"},
    {"a special key while Fn is down spoils the tap too",
     {"fn"},
     "+fn +mute -mute -fn",
     "+fn +mute -mute -fn",
     "flags:fn+ other flags:"},
    {"Fn is let go when it is no longer of interest", {"fn"}, "+fn forget -fn", "+fn -fn", "flags:fn+ other flags:"},
    {"Fn that goes up while disabled is told when enabled, as no tap",
     {"fn", "ctrl+space"},
     "+fn +ctrl +space late -space -ctrl -fn enable",
     "+fn +ctrl +space -space -ctrl -fn",
     "flags:fn+ flags:ctrl+fn+ other ask:ctrl+space disabled release:ctrl+space other flags: other"},
    {"while recording a tap of Fn is told", {}, "record +fn -fn stop +a -a", "+a -a", "flags:fn+ flags:"},
};

class X11KeyStory : public testing::TestWithParam<Story> {};

TEST_P(X11KeyStory, EndsAsItShould) {
    const Story& story = GetParam();
    X11TapBench bench(story.wishes);
    bench.play(story.words);
    EXPECT_EQ(bench.keyboard.seen, story.seen);
    EXPECT_EQ(bench.verdicts.log, story.told);
    EXPECT_EQ(bench.finish(), std::vector<std::string>{});
}

INSTANTIATE_TEST_SUITE_P(X11KeyEngine, X11KeyStory, testing::ValuesIn(stories), [](const auto& instance) {
    std::string name;
    bool capital = true;
    for (const char* letter = instance.param.title; *letter != '\0'; ++letter) {
        const bool isLetter = std::isalnum(static_cast<unsigned char>(*letter)) != 0;
        if (isLetter) name += capital ? static_cast<char>(std::toupper(*letter)) : *letter;
        capital = !isLetter;
    }
    return name;
});

}  // namespace
}  // namespace quillmere::support
