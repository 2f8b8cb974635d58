#include "Tests/Desktop/UpdatesTest.h"

namespace quillmere::support {

namespace {

constexpr int updateWidth = 420;
constexpr int alertWidth = 320;
constexpr int leastSettingsWidth = 460;

}  // namespace

QByteArray UpdatesTest::newerFeed(const QByteArray& more) {
    return "{\"version\": \"2.0\", \"file\": \"quillmere.deb\"" + more + "}";
}

void UpdatesTest::startWithFeed(SettingsPortal::Scheme scheme) {
    startDesktop({.scheme = scheme});
    ASSERT_NO_FATAL_FAILURE(startUpdatable());
}

void UpdatesTest::startUpdatable(const Program::Options& options, const std::string& feed) {
    installed_ = std::make_unique<InstalledProgram>(desktop().folder() / "installed", programPath(), feed, "1.0");
    running_ = std::make_unique<Program>(installed_->path(), desktop(), options);
    ASSERT_TRUE(running_->waitForTrayItem());
}

void UpdatesTest::quit() {
    ASSERT_TRUE(tray().click("Quit Quillmere"));
    ASSERT_EQ(updatable().waitForExit(patience), 0);
    ASSERT_TRUE(waitUntil([&] { return !tray().hasItem(); }));
}

void UpdatesTest::openGeneralTab() {
    ASSERT_TRUE(tray().click("Settings…"));
    ASSERT_TRUE(waitUntil([&] { return settingsWindow().has_value(); }));
    ASSERT_TRUE(waitForFocus(settingsWindow()));
    constexpr int generalTab = 2;
    tabAndPress(generalTab);
}

void UpdatesTest::checkManually() {
    ASSERT_NO_FATAL_FAILURE(openGeneralTab());
    const std::size_t before = server.requests().size();
    tabAndPress(checkButton);
    ASSERT_TRUE(waitUntil([&] { return server.requests().size() > before; }));
}

void UpdatesTest::tabAndPress(int times) {
    for (int i = 0; i < times; ++i) {
        typist().tap(keys::tab);
    }
    typist().tap(keys::space);
}

std::optional<WindowInfo> UpdatesTest::visible(const std::string& title, int leastWidth, int greatestWidth) {
    for (const WindowInfo& window : desktop().connection().windows()) {
        const int width = window.frame.width();
        const bool fits = leastWidth <= width && width <= greatestWidth;
        if (window.isMapped && window.title == title && fits) return window;
    }
    return std::nullopt;
}

std::optional<WindowInfo> UpdatesTest::updateWindow() {
    return visible("Quillmere 2.0 is available", updateWidth, updateWidth);
}

std::optional<WindowInfo> UpdatesTest::alert() {
    return visible("Quillmere", alertWidth, alertWidth);
}

std::optional<WindowInfo> UpdatesTest::settingsWindow() {
    return visible("Quillmere", leastSettingsWidth, desktop().connection().screenSize().width());
}

bool UpdatesTest::waitForFocus(const std::optional<WindowInfo>& window) {
    return window && waitUntil([&] { return desktop().connection().focusedWindow() == window->id; });
}

void UpdatesTest::keepPicture(const std::optional<WindowInfo>& window, const std::string& name) {
    ASSERT_TRUE(window);
    constexpr int surroundings = 40;
    const QRect around = window->frame.adjusted(-surroundings, -surroundings, surroundings, surroundings);
    savePicture(desktop().screen().shot().copy(around), artefacts() / "updates" / (name + ".png"));
}

}  // namespace quillmere::support
