#include "Tests/TapService/TapBench.h"

#include <gtest/gtest.h>

#include <cctype>
#include <ostream>
#include <string>
#include <vector>

namespace quillmere::tap {
namespace {

/// One story: who wants what, what the fingers do, what comes out of the
/// clone, and what the owner is told.
struct Story {
    const char* title;
    std::vector<std::string> wishes;
    const char* words;
    const char* output;
    const char* told;
};

void PrintTo(const Story& story, std::ostream* stream) {
    *stream << story.title;
}

const Story stories[] = {
    // Keys of no interest
    {"a key of no interest passes and nobody is told", {"ctrl+space"}, "+a -a", "+a -a", ""},
    {"a key without Ctrl, Alt or Super is nobody's shortcut",
     {"a", "shift+b", "f13"},
     "+a -a +shift +b -b -shift +f13 -f13 +fn +a -a -fn",
     "",
     ""},
    {"what is typed is not told beside a shortcut either",
     {"a", "shift+b", "ctrl+a"},
     "+a -a +shift +b -b -shift +ctrl +a swallow -a -ctrl",
     "+a -a +shift +b -b -shift +ctrl -ctrl",
     "ask:ctrl+a release:ctrl+a"},
    {"a shortcut's key alone is of no interest", {"ctrl+space"}, "+space -space", "+space -space", ""},
    {"one modifier more is another shortcut",
     {"ctrl+space"},
     "+ctrl +shift +space -space -shift -ctrl",
     "+ctrl +shift +space -space -shift -ctrl",
     ""},
    {"one modifier less is another shortcut", {"ctrl+alt+k"}, "+ctrl +k -k -ctrl", "+ctrl +k -k -ctrl", ""},
    {"modifiers alone are told to nobody", {"ctrl+space"}, "+ctrl +alt -alt -ctrl", "+ctrl +alt -alt -ctrl", ""},
    {"mouse buttons of a combined device pass", {"ctrl+space"}, "+click -click", "+click -click", ""},

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
    {"a swallowed key stays swallowed when the modifier goes first",
     {"ctrl+space"},
     "+ctrl +space swallow -ctrl -space",
     "+ctrl -ctrl",
     "ask:ctrl+space release:space"},
    {"the right Ctrl key is Control too",
     {"ctrl+space"},
     "+rctrl +space swallow -space -rctrl",
     "+rctrl -rctrl",
     "ask:ctrl+space release:ctrl+space"},
    {"AltGr types characters and is no modifier of a shortcut",
     {"alt+k"},
     "+altgr +k -k -altgr +alt +k swallow -k -alt",
     "+altgr +k -k -altgr +alt +filler -filler -alt",
     "ask:alt+k release:alt+k"},
    {"Caps Lock and Fn do not keep a shortcut from matching",
     {"ctrl+space"},
     "+fn +ctrl +caps +space swallow -space -caps -ctrl -fn",
     "+fn +ctrl +caps -caps -ctrl -fn",
     "ask:ctrl+fn+space release:ctrl+fn+space"},
    {"a modifier held on another keyboard counts",
     {"ctrl+space"},
     "2+ctrl +space swallow -space 2-ctrl",
     "+ctrl -ctrl",
     "ask:ctrl+space release:ctrl+space"},
    {"each press is asked about again",
     {"ctrl+space"},
     "+ctrl +space swallow -space +space pass -space -ctrl",
     "+ctrl +space -space -ctrl",
     "ask:ctrl+space release:ctrl+space ask:ctrl+space release:ctrl+space"},
    {"a verdict that nobody waits for changes nothing",
     {"ctrl+space"},
     "+ctrl +space swallow pass swallow -space pass -ctrl",
     "+ctrl -ctrl",
     "ask:ctrl+space release:ctrl+space"},

    // What a swallowed shortcut leaves behind
    {"a swallowed shortcut with Super is no lone tap of Super",
     {"super+space"},
     "+super +space swallow -space -super",
     "+super +filler -filler -super",
     "ask:super+space release:super+space"},
    {"a swallowed shortcut with the right Super key is none either",
     {"super+space"},
     "+rsuper +space swallow -rsuper -space",
     "+rsuper +filler -filler -rsuper",
     "ask:super+space release:space"},
    {"Alt Gr beside a swallowed shortcut is not left alone",
     {"ctrl+space"},
     "+altgr +ctrl +space swallow -space -ctrl -altgr",
     "+altgr +ctrl +filler -filler -ctrl -altgr",
     "ask:ctrl+space release:ctrl+space"},
    {"each swallowed press is filled in",
     {"alt+k"},
     "+alt +k swallow -k +k swallow -k -alt",
     "+alt +filler -filler +filler -filler -alt",
     "ask:alt+k release:alt+k ask:alt+k release:alt+k"},
    {"a passed shortcut needs nothing in its place",
     {"alt+k"},
     "+alt +k pass -k -alt",
     "+alt +k -k -alt",
     "ask:alt+k release:alt+k"},
    {"Alt that is up again before the verdict is filled in before it",
     {"alt+k"},
     "+alt +k -k -alt swallow",
     "+alt +filler -filler -alt",
     "ask:alt+k release:alt+k"},
    {"Alt on another keyboard is filled in too",
     {"alt+k"},
     "2+alt +k swallow -k 2-alt",
     "+alt +filler -filler -alt",
     "ask:alt+k release:alt+k"},

    // Keys that no program gets
    {"a power key as a shortcut is of no interest",
     {"ctrl+power", "ctrl+sleep", "ctrl+suspend", "ctrl+space"},
     "+ctrl +power -power +sleep -sleep +suspend -suspend -ctrl",
     "+ctrl +power -power +sleep -sleep +suspend -suspend -ctrl",
     ""},
    {"a power key is not recorded", {}, "record +power -power +a swallow -a", "+power -power", "ask:a release:a"},
    {"a power key spoils a tap of Fn all the same", {"fn"}, "+fn +sleep -sleep -fn", "", "flags:fn+ other flags:"},
    {"a mouse button as a shortcut is of no interest",
     {"ctrl+click", "ctrl+space"},
     "+ctrl +click -click -ctrl",
     "+ctrl +click -click -ctrl",
     ""},

    // Order
    {"keys behind a question wait and keep their order",
     {"ctrl+space"},
     "+ctrl +space -space -ctrl +a -a +b -b pass",
     "+ctrl +space -space -ctrl +a -a +b -b",
     "ask:ctrl+space release:ctrl+space"},
    {"keys behind a swallowed one come out in order",
     {"ctrl+space"},
     "+ctrl +space +a -space -ctrl -a swallow",
     "+ctrl +a -ctrl -a",
     "ask:ctrl+space release:ctrl+space"},
    {"keys of another keyboard wait as well",
     {"ctrl+space"},
     "+ctrl +space 2+a 2-a pass -space -ctrl",
     "+ctrl +space +a -a -space -ctrl",
     "ask:ctrl+space release:ctrl+space"},
    {"a second shortcut is asked about when the first is settled",
     {"ctrl+space", "ctrl+k"},
     "+ctrl +space +k -k -space -ctrl swallow swallow",
     "+ctrl -ctrl",
     "ask:ctrl+space ask:ctrl+k release:ctrl+k release:ctrl+space"},
    {"a shortcut behind a question sees the modifiers of its own moment",
     {"ctrl+space", "alt+k"},
     "+ctrl +space -space -ctrl +alt +k -k -alt swallow swallow",
     "+ctrl -ctrl +alt +filler -filler -alt",
     "ask:ctrl+space release:ctrl+space ask:alt+k release:alt+k"},

    // Repeats
    {"a key of no interest repeats by the clone itself", {"ctrl+space"}, "+a ~a ~a -a", "+a -a", ""},
    {"a held shortcut's repeats go to the owner only",
     {"ctrl+space"},
     "+ctrl +space swallow ~space ~space -space -ctrl",
     "+ctrl -ctrl",
     "ask:ctrl+space repeat:ctrl+space repeat:ctrl+space release:ctrl+space"},

    // Fails open
    {"without a verdict in time the key passes and the tap is off",
     {"ctrl+space"},
     "+ctrl +space late -space -ctrl",
     "+ctrl +space -space -ctrl",
     "ask:ctrl+space disabled"},
    {"a verdict that comes too late never takes the release",
     {"ctrl+space"},
     "+ctrl +space late swallow -space -ctrl",
     "+ctrl +space -space -ctrl",
     "ask:ctrl+space disabled"},
    {"everything that waited comes out with the late key",
     {"ctrl+space"},
     "+ctrl +space +a -a -space -ctrl late",
     "+ctrl +space +a -a -space -ctrl",
     "ask:ctrl+space disabled"},
    {"only the first of several questions costs the wait",
     {"ctrl+space"},
     "+ctrl +space -space +space -space -ctrl late",
     "+ctrl +space -space +space -space -ctrl",
     "ask:ctrl+space disabled"},
    {"enabled again the tap goes on",
     {"ctrl+space"},
     "+ctrl +space late enable -space -ctrl +ctrl +space swallow -space -ctrl",
     "+ctrl +space -space -ctrl +ctrl -ctrl",
     "ask:ctrl+space disabled ask:ctrl+space release:ctrl+space"},
    {"an owner that leaves while it is asked lets the key pass",
     {"ctrl+space"},
     "+ctrl +space +a leave -a -space -ctrl",
     "+ctrl +space +a -a -space -ctrl",
     "ask:ctrl+space"},
    {"an owner that leaves after a swallow does not give the release back",
     {"ctrl+space"},
     "+ctrl +space swallow leave -space -ctrl",
     "+ctrl -ctrl",
     "ask:ctrl+space"},

    // Recording
    {"while recording every key is asked about, but no modifier",
     {},
     "record +ctrl +a swallow -a -ctrl +b pass -b",
     "+ctrl -ctrl +b -b",
     "ask:ctrl+a release:ctrl+a ask:b release:b"},
    {"when the recording ends with a key the next one passes",
     {},
     "record +ctrl +a stop swallow -a -ctrl +b -b",
     "+ctrl -ctrl",
     "ask:ctrl+a release:ctrl+a"},

    // Fn
    {"a lone tap of Fn is told, and never touched", {"fn"}, "+fn -fn", "", "flags:fn+ flags:"},
    {"the globe key is Fn", {"fn"}, "+globe -globe", "", "flags:fn+ flags:"},
    {"the wake-up key of laptops is Fn", {"fn"}, "+wakeup -wakeup", "", "flags:fn+ flags:"},
    {"what is typed without Fn is told to nobody", {"fn"}, "+a ~a -a +ctrl +c -c -ctrl +enter -enter", "", ""},
    {"a key pressed while Fn is down is told without its name", {"fn"}, "+fn +a -a -fn", "", "flags:fn+ other flags:"},
    {"a key's repeat while Fn is down is told as well", {"fn"}, "+a +fn ~a -a -fn", "", "flags:fn+ other flags:"},
    {"a special key of another device spoils a tap too", {"fn"}, "+fn 2+dim 2-dim -fn", "", "flags:fn+ other flags:"},
    {"a mouse button while Fn is down is nobody's business", {"fn"}, "+fn +click -click -fn", "", "flags:fn+ flags:"},
    {"other modifiers are told while Fn is down only",
     {"fn"},
     "+shift +fn +ctrl -ctrl -fn -shift",
     "",
     "flags:shift+fn+ flags:shift+ctrl+fn+ flags:shift+fn+ flags:shift+"},
    {"AltGr and Caps Lock are told without a flag",
     {"fn"},
     "+fn +altgr -altgr -fn",
     "",
     "flags:fn+ flags:fn+ flags:fn+ flags:"},
    {"without the wish Fn is told to nobody", {"ctrl+space"}, "+fn -fn", "+fn -fn", ""},
    {"an owner that leaves with Fn down learns that it is not its tap",
     {"fn"},
     "+fn leave -fn",
     "",
     "flags:fn+ other flags:"},
    {"Fn that goes up while the tap is off is told when it is on again",
     {"fn", "ctrl+space"},
     "+fn +ctrl +space late -space -ctrl -fn enable",
     "+fn +ctrl +space -space -ctrl -fn",
     "flags:fn+ flags:ctrl+fn+ ask:ctrl+fn+space disabled flags:"},

    // The panic chord
    {"Backspace, Escape and Enter free the keyboard",
     {"ctrl+space"},
     "+a +backspace +esc +enter -enter -esc -backspace -a +ctrl +space -space -ctrl",
     "+a +backspace +esc -esc -backspace -a",
     "freed"},
    {"the chord works while a verdict is awaited",
     {"ctrl+space"},
     "+ctrl +space +backspace +esc +enter -enter -esc -backspace -space -ctrl",
     "+ctrl +space +backspace +esc -esc -backspace -ctrl -space",
     "ask:ctrl+space freed"},
    {"the chord may be spread over two keyboards",
     {"ctrl+space"},
     "+esc 2+backspace 2+enter",
     "+esc +backspace -esc -backspace",
     "freed"},
    {"after the chord the owner cannot turn the tap on",
     {"ctrl+space"},
     "+backspace +esc +enter -enter -esc -backspace enable +ctrl +space -space -ctrl",
     "+backspace +esc -esc -backspace",
     "freed"},

    {"a tap opened after the chord is told of its shortcuts and takes no keyboard yet",
     {"ctrl+space"},
     "+backspace +esc +enter reopen -enter -esc -backspace +ctrl +space -space -ctrl",
     "+backspace +esc -esc -backspace",
     "freed press:ctrl+space release:ctrl+space"},

    // Unplugging
    {"a keyboard that is pulled out lets go of its keys", {"ctrl+space"}, "+ctrl +a unplug", "+ctrl +a -ctrl -a", ""},
    {"a keyboard pulled out behind a question first says everything",
     {"ctrl+space"},
     "+ctrl +space +a unplug pass",
     "+ctrl +space +a -ctrl -a -space",
     "ask:ctrl+space release:ctrl+space"},
    {"a swallowed key of a keyboard that is gone is told as released",
     {"ctrl+space"},
     "+ctrl +space swallow unplug",
     "+ctrl -ctrl",
     "ask:ctrl+space release:ctrl+space"},
    {"Fn goes up with its keyboard", {"fn"}, "+fn unplug", "", "flags:fn+ flags:"},
};

class TapStory : public testing::TestWithParam<Story> {};

TEST_P(TapStory, EndsAsItShould) {
    const Story& story = GetParam();
    TapBench bench;
    bench.plug(TapBench::first);
    bench.plug(TapBench::second);
    bench.own(story.wishes);
    bench.play(story.words);
    EXPECT_EQ(bench.keyboards.output, story.output);
    EXPECT_EQ(bench.owner.log, story.told);
    EXPECT_EQ(bench.keyboards.faults, std::vector<std::string>{});
}

INSTANTIATE_TEST_SUITE_P(TapEngine, TapStory, testing::ValuesIn(stories), [](const auto& instance) {
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
}  // namespace quillmere::tap
