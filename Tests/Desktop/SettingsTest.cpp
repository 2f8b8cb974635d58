#include "Tests/Desktop/SettingsTest.h"

#include <algorithm>

#include <X11/Xlib.h>

namespace quillmere::support {

namespace {
constexpr const char* title = "Quillmere";
constexpr Key down = 108 + 8;
constexpr Key enter = 28 + 8;
}  // namespace

void SettingsTest::startAccessibleDesktop(const Desktop::Options& options) {
    startDesktop(options);
    accessibility_ = std::make_unique<AccessibilityBus>(desktop());
}

void SettingsTest::openSettingsOver(const std::string& configuration) {
    startAccessibleDesktop();
    storeConfiguration(configuration);
    startWitness();
    ASSERT_NO_FATAL_FAILURE(startProgramWithoutShortcut());
    ASSERT_NO_FATAL_FAILURE(openSettings());
}

void SettingsTest::openSettings() {
    Program second(programPath(), desktop());
    ASSERT_EQ(second.process().waitForExit(patience), 0) << second.process().output();
    ASSERT_TRUE(waitUntil([this] {
        const auto window = settingsWindow();
        return window && desktop().connection().focusedWindow() == window->id;
    }));
}

void SettingsTest::restartProgram() {
    killProgram();
    // else the old one's tray icon would be taken for the new one's
    ASSERT_TRUE(waitUntil([this] { return !tray().hasItem(); }));
    ASSERT_NO_FATAL_FAILURE(startProgramWithoutShortcut(options()));
}

Program::Options SettingsTest::options() const {
    return {.additions = {{"QT_SCALE_FACTOR", std::to_string(scale_)}}, .prepare = {}};
}

std::optional<WindowInfo> SettingsTest::settingsWindow() {
    return desktop().connection().visibleWindow(title);
}

void SettingsTest::closeSettings() {
    const auto window = settingsWindow();
    ASSERT_TRUE(window);
    XConnection& connection = desktop().connection();
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = window->id;
    event.xclient.message_type = connection.atom("_NET_CLOSE_WINDOW");
    event.xclient.format = 32;
    XSendEvent(connection.display(), connection.root(), False, SubstructureRedirectMask | SubstructureNotifyMask,
               &event);
    connection.synchronize();
    ASSERT_TRUE(waitUntil([this] { return !settingsWindow(); }));
}

bool SettingsTest::waitFor(const std::string& name) {
    return waitUntil([&] { return accessibility().find(name).has_value(); });
}

bool SettingsTest::waitForNone(const std::string& name) {
    return waitUntil([&] { return !accessibility().find(name).has_value(); });
}

void SettingsTest::pointAt(const std::string& name) {
    // what has just been laid out may still move
    std::optional<Accessible> target;
    ASSERT_TRUE(waitUntil([&] {
        const auto before = std::exchange(target, accessibility().find(name));
        return before && target && before->frame == target->frame;
    })) << "nothing is called "
        << name;
    // Qt 6.4 tells points where the protocol wants pixels
    typist().movePointer(target->frame.center() * scale_);
}

void SettingsTest::click(const std::string& name) {
    ASSERT_NO_FATAL_FAILURE(pointAt(name));
    typist().click();
}

void SettingsTest::openMenu(const std::string& name) {
    const auto visiblePopUps = [this] {
        return std::ranges::count_if(desktop().connection().windows(), [](const WindowInfo& window) {
            return window.isMapped && window.isOverrideRedirect && window.frame.width() > 1;
        });
    };
    const auto before = visiblePopUps();
    ASSERT_NO_FATAL_FAILURE(click(name));
    ASSERT_TRUE(waitUntil([&] { return visiblePopUps() > before; })) << "no menu";
}

void SettingsTest::addSource(int group, int entry) {
    ASSERT_NO_FATAL_FAILURE(openMenu("Add source to group " + std::to_string(group)));
    Strokes strokes;
    for (int i = 0; i <= entry; ++i)
        strokes.tap(down);
    typist().play(strokes.tap(enter));
}

void SettingsTest::startRecording(int group, const std::string& titleBefore) {
    const std::string name = "Shortcut of group " + std::to_string(group) + ": ";
    ASSERT_NO_FATAL_FAILURE(click(name + titleBefore));
    ASSERT_TRUE(waitFor(name + "Press shortcut…"));
}

std::string SettingsTest::storedConfiguration() {
    return desktop().settings().value("config").value_or("");
}

bool SettingsTest::waitForStored(const std::string& text) {
    return waitUntil([&] { return storedConfiguration().find(text) != std::string::npos; });
}

void SettingsTest::keepPicture(const std::string& name) {
    const auto window = settingsWindow();
    ASSERT_TRUE(window);
    savePicture(desktop().screen().shot().copy(window->frame), artefacts() / "settings" / (name + ".png"));
}

}  // namespace quillmere::support
