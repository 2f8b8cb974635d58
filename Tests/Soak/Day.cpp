#include "Tests/Soak/Day.h"

#include "Tests/Support/ConfigurationText.h"
#include "Tests/Support/SupportError.h"
#include "Tests/Support/WaitUntil.h"

#include <X11/Xlib.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <fstream>
#include <iostream>
#include <utility>

namespace quillmere::soak {

namespace {

using namespace support;
namespace fs = std::filesystem;

constexpr std::array<Key, 2> controlAlt{keys::leftControl, keys::leftAlt};
// Control and Alt among the core modifiers.
constexpr unsigned int controlAltBits = (1U << 2) | (1U << 3);
// In the order of the shortcut's group.
const std::vector<std::string> groupLayouts{"us", "ua", "de"};
constexpr const char* settingsTitle = "Quillmere";
// A guard that was not asleep as well would have given the program up by then.
constexpr std::chrono::milliseconds sleepLength(2500);
constexpr std::chrono::milliseconds settling(3000);

void require(bool condition, const std::string& what) {
    if (!condition) throw SupportError(what);
}

/// The libraries that a process has open, in a folder where nobody else opens
/// them: of those that it shares with other programs its share of the memory
/// would follow their comings and goings.
void copyLibraries(pid_t process, const fs::path& folder) {
    fs::create_directory(folder);
    std::ifstream map("/proc/" + std::to_string(process) + "/maps");
    for (std::string line; std::getline(map, line);) {
        const std::size_t begin = line.find('/');
        if (begin == std::string::npos || line.find(".so") == std::string::npos) continue;
        const fs::path library = line.substr(begin);
        if (!fs::copy_file(library, folder / library.filename(), fs::copy_options::skip_existing)) continue;
        // It is asked for by its name with fewer numbers at its end.
        for (fs::path name = library.filename(); name.extension() != ".so" && name.has_extension();) {
            name.replace_extension();
            if (!fs::exists(folder / name)) fs::create_symlink(library.filename(), folder / name);
        }
    }
}

/// The display of the desktop, with the program's settings stored on it first.
std::string preparedDisplay(const Desktop& desktop) {
    desktop.settings().set("config", configurationText({{.sources = {"xkb:us", "xkb:ua", "xkb:de"}}}));
    return desktop.display();
}

}  // namespace

Day::Day(const std::filesystem::path& program)
    : path_(program),
      desktop_({.hasCompositor = true}),
      application_(preparedDisplay(desktop_), Witness::Size::normal),
      layouts_(groupLayouts) {
    start({});
    const fs::path libraries = desktop_.folder() / "libraries";
    copyLibraries(program_->process().pid(), libraries);
    program_.reset();
    require(waitUntil([this] { return !desktop_.tray()->hasItem(); }), "the icon stays without its program");
    start({{"LD_LIBRARY_PATH", libraries.string()}});
}

void Day::start(const Environment& additions) {
    program_ = std::make_unique<Program>(path_, desktop_, Program::Options{.additions = additions, .prepare = {}});
    require(program_->waitForTrayItem() && program_->waitForGrab(keys::space, controlAltBits),
            "the program does not start: " + program_->process().output());
}

/// Those that come more often are spread over it.
std::vector<Day::Event> Day::eventsOfAnHour() {
    struct Plan {
        Event event;
        int times;
    };
    constexpr int most = 5;
    constexpr std::array<Plan, 7> plans{{
        {&Day::visitSettings, most},
        {&Day::sleep, 3},
        {&Day::changeLayouts, 3},
        {&Day::plugMonitor, 3},
        {&Day::changeScheme, 2},
        {&Day::restartTray, 1},
        {&Day::turnOffAndOn, 1},
    }};
    std::vector<Event> events;
    for (int turn = 0; turn < most; ++turn)
        for (const Plan& plan : plans)
            if (turn < plan.times) events.push_back(plan.event);
    return events;
}

Hour Day::playHour(const std::string& name, std::chrono::milliseconds length) {
    const Clock::time_point start = Clock::now();
    const std::vector<Event> events = eventsOfAnHour();
    const auto share = (length - settling) / static_cast<int>(events.size());
    for (std::size_t i = 0; i < events.size(); ++i) {
        (this->*events[i])();
        do {
            type();
        } while (Clock::now() < start + share * static_cast<int>(i + 1));
        require(program_->process().isRunning(), "the program has ended: " + program_->process().output());
    }
    return rest(name);
}

void Day::visitSettings() {
    require(ChildProcess::run({.arguments = {path_.string()}, .environment = desktop_.environment()}) == 0,
            "a second start does not end well");
    const auto window = [this] { return desktop_.connection().visibleWindow(settingsTitle); };
    require(waitUntil([&] { return window() && desktop_.connection().focusedWindow() == window()->id; }),
            "the settings do not open");
    moveLayout();
    XEvent close{};
    close.xclient.type = ClientMessage;
    close.xclient.window = window()->id;
    close.xclient.message_type = desktop_.connection().atom("_NET_CLOSE_WINDOW");
    close.xclient.format = 32;
    XSendEvent(desktop_.connection().display(), desktop_.connection().root(), False,
               SubstructureRedirectMask | SubstructureNotifyMask, &close);
    require(waitUntil([&] { return !window(); }), "the settings do not close");
    focusApplication();
}

// The second of the group, to another place and back: the focus stays with it,
// also until the next visit.
void Day::moveLayout() {
    constexpr int tabsToItsButtons = 8;
    for (int i = 0; visits_ == 0 && i < tabsToItsButtons; ++i)
        desktop_.typist().tap(keys::tab);
    ++visits_;
    const auto isAsBefore = [this] {
        return storedConfiguration().find(R"("sourceIDs":["xkb:us","xkb:ua","xkb:de"])") != std::string::npos;
    };
    desktop_.typist().tap(keys::space);
    require(waitUntil([&] { return !isAsBefore(); }), "the layout does not move");
    desktop_.typist().tap(keys::space);
    require(waitUntil(isAsBefore), "the layout does not move back");
}

// As all processes do; afterwards the keyboard is a new one to the server.
void Day::sleep() {
    const std::vector<pid_t> guards = childrenOf(program_->process().pid());
    program_->process().signal(SIGSTOP);
    for (const pid_t guard : guards)
        kill(guard, SIGSTOP);
    holdsFor([] { return true; }, sleepLength);
    useLayouts(groupLayouts);
    for (const pid_t guard : guards)
        kill(guard, SIGCONT);
    program_->process().signal(SIGCONT);
}

void Day::changeLayouts() {
    useLayouts({"de", "us", "ua"});
    type();
    useLayouts({"pl", "us", "ua", "de"});
    type();
    useLayouts(groupLayouts);
}

void Day::plugMonitor() {
    desktop_.server().setMonitors({QRect(0, 0, 640, 800), QRect(640, 0, 640, 800)});
    type();
    desktop_.server().setMonitors({});
}

void Day::restartTray() {
    desktop_.stopTray();
    type();
    desktop_.startTray();
    require(program_->waitForTrayItem(), "the icon does not come back with the tray");
}

void Day::changeScheme() {
    desktop_.portal()->setScheme(SettingsPortal::Scheme::dark);
    type();
    desktop_.portal()->setScheme(SettingsPortal::Scheme::light);
}

void Day::turnOffAndOn() {
    require(desktop_.tray()->click("Active"), "there is no menu");
    require(waitUntil([this] { return !program_->holdsGrab(keys::space, controlAltBits); }), "it is not turned off");
    require(desktop_.tray()->click("Active"), "there is no menu");
    require(program_->waitForGrab(keys::space, controlAltBits), "it is not turned on");
}

// From one switch to a dozen.
void Day::type() {
    constexpr int longest = 12;
    constexpr int step = 7;  // has no divisor with the longest, so that every length comes
    const int count = 1 + bursts_++ * step % longest;
    for (int i = 0; i < count; ++i)
        press();
    require(program_->waitForPlate(), "the plate does not come");
    require(program_->waitForNoPlate(), "the plate does not go");
}

void Day::press() {
    const int wanted = layoutAfter(desktop_.server().group());
    application_.clear();
    desktop_.typist().play(Strokes().chord(controlAlt, keys::space).tap(keys::z));
    ++switches_;
    if (isSwitchedTo(wanted)) return;
    ++missed_;
    std::cout << "Missed: switch " << switches_ << " of this hour, to layout " << wanted << "; the layout in use is "
              << desktop_.server().group() << ", and typed was \"" << application_.text() << "\"\n";
}

bool Day::isSwitchedTo(int layout) {
    if (!waitUntil([this] { return application_.presses(keys::z) > 0; })) return false;
    const auto isWrongLetter = [&](const SeenKey& seen) {
        return seen.isPress && seen.key == keys::z && seen.group != layout;
    };
    return std::ranges::none_of(application_.keys(), isWrongLetter) && !application_.saw(keys::space)
           && desktop_.server().group() == layout;
}

/// The number of the layout that a press must bring: one that is not in the group
/// is followed by the group's first.
int Day::layoutAfter(int layout) const {
    auto next = std::ranges::find(groupLayouts, layouts_.at(static_cast<std::size_t>(layout)));
    if (next != groupLayouts.end()) ++next;
    const std::string& name = next != groupLayouts.end() ? *next : groupLayouts.front();
    return static_cast<int>(std::ranges::find(layouts_, name) - layouts_.begin());
}

void Day::useLayouts(const std::vector<std::string>& layouts) {
    std::string names;
    for (const std::string& layout : layouts)
        names += names.empty() ? layout : "," + layout;
    desktop_.server().setLayouts(names);
    // The one in use may be there no more.
    desktop_.server().setGroup(0);
    layouts_ = layouts;
}

void Day::focusApplication() {
    XConnection& connection = application_.connection();
    XSetInputFocus(connection.display(), application_.window(), RevertToParent, CurrentTime);
    require(waitUntil([&] { return connection.focusedWindow() == application_.window(); }),
            "the application does not get the keyboard back");
}

std::string Day::storedConfiguration() const {
    return desktop_.settings().value("config").value_or("");
}

Hour Day::playRestartOfTheBus() {
    const std::string before = storedConfiguration();
    desktop_.restartBus();
    constexpr int bursts = 20;
    for (int i = 0; i < bursts; ++i)
        type();
    require(program_->process().isRunning(), "the program has ended: " + program_->process().output());
    require(storedConfiguration() == before, "the configuration is not what it was");
    return rest("a new bus");
}

Hour Day::rest(const std::string& name) {
    holdsFor([] { return true; }, settling);
    const pid_t program = program_->process().pid();
    const std::vector<pid_t> children = childrenOf(program);
    require(children.size() == 1, "the program has not its one guard");
    return {.name = name,
            .switches = std::exchange(switches_, 0),
            .missed = std::exchange(missed_, 0),
            .program = Footprint::of(program),
            .guard = Footprint::of(children.front())};
}

}  // namespace quillmere::soak
