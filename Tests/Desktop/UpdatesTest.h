#pragma once

#include "Tests/Desktop/DesktopTest.h"
#include "Tests/Support/HttpServer.h"
#include "Tests/Support/InstalledProgram.h"

#include <memory>
#include <optional>
#include <string>

namespace quillmere::support {

/// A desktop with the program installed by a packager who named a feed on a
/// server of the test's own. The program takes itself for version 1.0.
class UpdatesTest : public DesktopTest {
protected:
    static constexpr const char* feedPath = "/app/feed.json";
    /// How far the button "Check for Updates…" is from the General tab's chip.
    static constexpr int checkButton = 3;

    /// A feed that offers version 2.0, with more members: `, "size": 1`.
    static QByteArray newerFeed(const QByteArray& more = {});

    void answerWith(HttpAnswer answer) { server.answer(feedPath, std::move(answer)); }
    void answerWithFeed(const QByteArray& feed) { answerWith(HttpAnswer::with("200 OK", feed)); }

    /// Starts the desktop and the program on it.
    void startWithFeed(SettingsPortal::Scheme scheme = SettingsPortal::Scheme::light);
    void startUpdatable(const Program::Options& options = {}) { startUpdatable(options, server.url(feedPath)); }
    void startUpdatable(const Program::Options& options, const std::string& feed);
    /// Ends the program by its menu.
    void quit();

    /// Opens the settings' General tab, with the keyboard as a user might.
    void openGeneralTab();
    /// Opens it and presses the button "Check for Updates…".
    void checkManually();
    /// Moves the focus on `times` and presses what has it.
    void tabAndPress(int times);

    /// The update window while it is on the screen.
    std::optional<WindowInfo> updateWindow();
    /// The alert while it is on the screen; it has the settings' title, but its
    /// own width.
    std::optional<WindowInfo> alert();
    std::optional<WindowInfo> settingsWindow();
    /// Waits until the window has the keyboard.
    bool waitForFocus(const std::optional<WindowInfo>& window);

    /// Keeps a picture of the window as the person sees it.
    void keepPicture(const std::optional<WindowInfo>& window, const std::string& name);

    ChildProcess& updatable() { return running_->process(); }

    HttpServer server;

private:
    std::optional<WindowInfo> visible(const std::string& title, int leastWidth, int greatestWidth);

    std::unique_ptr<InstalledProgram> installed_;
    std::unique_ptr<Program> running_;
};

}  // namespace quillmere::support
