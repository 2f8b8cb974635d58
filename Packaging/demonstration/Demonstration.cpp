#include "Packaging/demonstration/Demonstration.h"

#include "Tests/Support/ConfigurationText.h"
#include "Tests/Support/WaitUntil.h"

#include <array>
#include <iostream>
#include <utility>

namespace quillmere::demonstration {

namespace {

using namespace support;
using Scheme = SettingsPortal::Scheme;

struct Layout {
    const char* id;
    const char* name;
    const char* letter;  ///< what the key beside the left Shift types
};

constexpr std::array<Layout, 3> layouts{{
    {"xkb:us", "English (US)", "z"},
    {"xkb:ua", "Ukrainian", "я"},
    {"xkb:de", "German", "y"},
}};

constexpr Key letterKey = keys::z;
constexpr std::array<Key, 2> controlAlt{keys::leftControl, keys::leftAlt};
// Control and Alt among the core modifiers.
constexpr unsigned int controlAltBits = (1U << 2) | (1U << 3);

const QColor paper(250, 250, 248);

/// All layouts on ⌃⌥Space, and the first and the last on a lone Fn.
std::string configuration() {
    return configurationText({
        {.sources = {layouts[0].id, layouts[1].id, layouts[2].id}},
        {.keyCode = 63, .modifiers = 0, .sources = {layouts[0].id, layouts[2].id}},
    });
}

/// The display of the desktop, with the program's settings stored on it first.
std::string preparedDisplay(const Desktop& desktop) {
    desktop.settings().set("config", configuration());
    return desktop.display();
}

Strokes shortcut() {
    return Strokes().chord(controlAlt, keys::space);
}

}  // namespace

Demonstration::Demonstration(const std::filesystem::path& program, std::filesystem::path pictures)
    : desktop_({.hasCompositor = true}),
      application_(preparedDisplay(desktop_), Witness::Size::normal, paper),
      program_(program, desktop_),
      pictures_(std::move(pictures)) {}

bool Demonstration::play() {
    if (start()) {
        cycle();
        hold();
        letKeysPass();
        tapFn();
        followTheDark();
        turnOffAndOn();
        openSettings();
    }
    return sum();
}

bool Demonstration::start() {
    Sight::heading("A virtual desktop " + desktop_.display()
                   + " with the layouts us, ua, de, a tray, and an application that looks on:");
    const bool hasIcon = program_.waitForTrayItem();
    sight_.expect("start", "Quillmere's icon is in the tray", hasIcon);
    const bool hasShortcut = program_.waitForGrab(keys::space, controlAltBits);
    sight_.expect("", "⌃⌥Space is Quillmere's", hasShortcut);
    if (!hasIcon || !hasShortcut) Sight::remark(program_.process().output());
    return hasIcon && hasShortcut;
}

void Demonstration::cycle() {
    Sight::heading("One group on ⌃⌥Space: English (US), Ukrainian, German");
    application_.clear();
    expectSwitch("⌃⌥Space", shortcut(), 1);
    sight_.expect("", "the plate is on the screen", program_.waitForPlate());
    takePicture("plate-light.png");
    expectSwitch("⌃⌥Space", shortcut(), 2);
    expectSwitch("⌃⌥Space", shortcut(), 0, ": from the last back to the first");
    sight_.expect("", "the application got no press and no release of Space", !application_.saw(keys::space));
    sight_.expect("", "a second later the plate is gone", program_.waitForNoPlate());
    sight_.expect("", "the application never lost the focus", application_.focusLosses() == 0);
}

void Demonstration::hold() {
    Sight::heading("A held shortcut switches once");
    desktop_.server().setRepeat(200, 30);
    Typist& typist = desktop_.typist();
    typist.press(keys::a);
    const bool repeats = waitUntil([this] { return application_.presses(keys::a) > 5; });
    typist.release(keys::a);
    sight_.expect("a, held", "repeats, as any held key here", repeats);
    application_.clear();
    typist.play(Strokes().press(keys::leftControl).press(keys::leftAlt).press(keys::space));
    const auto isUkrainian = [this] { return desktop_.server().group() == 1; };
    const bool switches = waitUntil(isUkrainian);
    const bool stays = holdsFor(isUkrainian, std::chrono::milliseconds(1000));
    typist.play(Strokes().release(keys::space).release(keys::leftAlt).release(keys::leftControl));
    waitForLetter();
    sight_.expect("⌃⌥Space, held", "Ukrainian is in use", switches);
    sight_.expect("", "a second later it still is", stays);
    sight_.expect("", "the application got nothing of it", !application_.saw(keys::space));
}

void Demonstration::letKeysPass() {
    Sight::heading("Every other key passes");
    application_.clear();
    desktop_.typist().chord(std::array{keys::leftControl}, keys::space);
    desktop_.typist().chord(std::array{keys::leftControl, keys::leftAlt, keys::leftShift}, keys::space);
    waitForLetter();
    sight_.expect("⌃Space, ⌃⌥⇧Space", "the application got both", application_.presses(keys::space) == 2);
    sight_.expect("", "the layout stays Ukrainian", desktop_.server().group() == 1);
}

void Demonstration::tapFn() {
    Sight::heading("Another group on a lone tap of Fn: English (US), German");
    desktop_.server().setGroup(0);
    expectFnSwitch(2);
    expectFnSwitch(0);
    application_.clear();
    desktop_.typist().play(Strokes().press(keys::fn).tap(keys::a).release(keys::fn));
    waitForLetter();
    sight_.expect("Fn held, a, Fn up", "a is typed and the layout stays", application_.text() == "az");
}

void Demonstration::followTheDark() {
    Sight::heading("The desktop turns dark");
    program_.waitForNoPlate();
    desktop_.portal()->setScheme(Scheme::dark);
    const auto isIconWhite = [this] {
        const QImage icon = desktop_.tray()->icon(22);
        return !icon.isNull() && icon.pixelColor(icon.rect().center().x(), 3).value() > 200;
    };
    waitUntil(isIconWhite, std::chrono::seconds(2));
    expectSwitch("⌃⌥Space", shortcut(), 1);
    const auto isDark = [this] {
        const auto plate = program_.plate();
        if (!plate) return false;
        const QPoint besideTheRows = plate->frame.topLeft() + QPoint(plate->frame.width() / 2, 6);
        return desktop_.screen().color(besideTheRows).value() < 128;
    };
    sight_.expect("", "the plate is dark", waitUntil(isDark, std::chrono::seconds(5)));
    takePicture("plate-dark.png");
}

void Demonstration::turnOffAndOn() {
    Sight::heading("“Active” in the tray's menu");
    TrayPanel& tray = *desktop_.tray();
    const auto holdsShortcut = [this] { return program_.holdsGrab(keys::space, controlAltBits); };
    tray.click("Active");
    waitUntil([&] { return !holdsShortcut(); });
    application_.clear();
    desktop_.typist().play(shortcut());
    waitForLetter();
    sight_.expect("off, ⌃⌥Space", "passes to the application", application_.presses(keys::space) == 1);
    sight_.expect("", "the layout stays Ukrainian", desktop_.server().group() == 1);
    tray.click("Active");
    waitUntil(holdsShortcut);
    expectSwitch("on, ⌃⌥Space", shortcut(), 2);
}

void Demonstration::openSettings() {
    Sight::heading("“Settings…” in the tray's menu");
    // The plate of the last switch would lie over them.
    program_.waitForNoPlate();
    desktop_.tray()->click("Settings…");
    const auto isPainted = [this] {
        const auto window = desktop_.connection().visibleWindow("Quillmere");
        // The window's own colour on a dark desktop, in its margin.
        return window && desktop_.screen().color(window->frame.topLeft() + QPoint(5, 5)) == QColor(27, 29, 34);
    };
    sight_.expect("", "the settings are open, on the tab of the groups",
                  waitUntil(isPainted, std::chrono::seconds(10)));
    takePicture("settings.png");
}

bool Demonstration::sum() const {
    std::cout << '\n'
              << sight_.seen() << " of " << static_cast<std::size_t>(sight_.seen()) + sight_.missed().size()
              << " seen. Pictures are in " << pictures_.string() << ".\n";
    for (const std::string& missed : sight_.missed())
        std::cout << "Not seen: " << missed << '\n';
    return sight_.missed().empty();
}

void Demonstration::expectSwitch(const std::string& action, Strokes strokes, std::size_t layout,
                                 const std::string& remark) {
    const std::size_t before = application_.presses(letterKey);
    desktop_.typist().play(strokes.tap(letterKey));
    waitUntil([&] { return application_.presses(letterKey) > before; });
    std::string letter;
    for (const SeenKey& seen : application_.keys())
        if (seen.isPress && seen.key == letterKey) letter = seen.text;
    const bool isInUse = desktop_.server().group() == static_cast<int>(layout);
    const Layout& expected = layouts.at(layout);
    sight_.expect(action, std::string(expected.name) + ", and the next letter is " + letter + remark,
                  isInUse && letter == expected.letter);
}

// Nothing holds the keyboard up for a lone Fn, since it passes anyway: its
// switch follows the release, and a hand needs longer to the next letter.
void Demonstration::expectFnSwitch(std::size_t layout) {
    desktop_.typist().tap(keys::fn);
    waitUntil([&] { return desktop_.server().group() == static_cast<int>(layout); });
    expectSwitch("Fn", Strokes(), layout);
}

void Demonstration::waitForLetter() {
    const std::size_t before = application_.presses(letterKey);
    desktop_.typist().tap(letterKey);
    waitUntil([&] { return application_.presses(letterKey) > before; });
}

void Demonstration::takePicture(const std::string& name) {
    savePicture(desktop_.screen().shot(), pictures_ / name);
    Sight::remark("picture: " + (pictures_ / name).string());
}

}  // namespace quillmere::demonstration
