#include "Quillmere/AppDelegate.h"
#include "Quillmere/Menu/StatusItem.h"
#include "Quillmere/Palette.h"
#include "Tests/Support/FakePlatform.h"
#include "Tests/Support/HttpServer.h"
#include "Tests/Support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QSignalSpy>
#include <QTest>

namespace quillmere {

using namespace support;

namespace {

class AppDelegateUpdateTest : public testing::Test {
protected:
    void launch(const std::string& feed) {
        if (!feed.empty()) system.bundle.values["QuillmereUpdateFeed"] = feed;
        system.bundle.values["CFBundleShortVersionString"] = "1.0";
        delegate = std::make_unique<AppDelegate>(system.take());
        delegate->applicationDidFinishLaunching();
    }

    void launchWithFeed(const QByteArray& feed) {
        server.answer("/feed.json", HttpAnswer::with("200 OK", feed));
        launch(server.url("/feed.json"));
    }

    static QWidget* alert() {
        for (QWidget* window : QApplication::topLevelWidgets())
            if (window->isVisible() && window->isModal()) return window;
        return nullptr;
    }

    HttpServer server;
    FakePlatform system;
    std::unique_ptr<AppDelegate> delegate;
};

constexpr const char* newerFeed = R"({"version": "2.0", "file": "quillmere.deb"})";

}  // namespace

TEST_F(AppDelegateUpdateTest, WithoutAFeedNothingIsEverScheduledAndAManualCheckDoesNothing) {
    for (const char* feed : {"", "ftp://127.0.0.1/feed.json"}) {
        FakePlatform other;
        other.bundle.values["QuillmereUpdateFeed"] = feed;
        AppDelegate withoutFeed(other.take());
        const auto before = other.queue.pendingCount();
        withoutFeed.applicationDidFinishLaunching();
        EXPECT_EQ(other.queue.pendingCount(), before);
        withoutFeed.checkForUpdates();
        other.queue.advance(100'000);
        EXPECT_FALSE(withoutFeed.updatesEnabled());
        EXPECT_EQ(withoutFeed.updateSchedule(), nullptr);
        EXPECT_EQ(other.defaults.date("updateLastCheck"), std::nullopt);
    }
}

TEST_F(AppDelegateUpdateTest, HalfAMinuteAfterLaunchANewerVersionIsOffered) {
    launchWithFeed(newerFeed);
    EXPECT_TRUE(delegate->updatesEnabled());
    system.queue.advance(29);
    EXPECT_FALSE(delegate->updateSchedule()->checkingUpdate());
    system.queue.advance(1);
    ASSERT_TRUE(waitUntil([&] { return delegate->updateWindow().window() != nullptr; }));
    EXPECT_EQ(delegate->updateWindow().window()->windowTitle(), "Quillmere 2.0 is available");
    EXPECT_EQ(server.requests().size(), 1U);
    EXPECT_EQ(system.defaults.date("updateLastCheck"), system.queue.now());
}

TEST_F(AppDelegateUpdateTest, AManualCheckTellsThatTheProgramIsUpToDate) {
    launchWithFeed(R"({"version": "1.0"})");
    delegate->checkForUpdates();
    ASSERT_TRUE(waitUntil([] { return alert() != nullptr; }));
    EXPECT_EQ(alert()->accessibleName(), "You're up to date.");
    EXPECT_EQ(alert()->accessibleDescription(), "Quillmere 1.0 is the latest version.");
}

TEST_F(AppDelegateUpdateTest, AManualCheckTellsWhyItFailed) {
    launch(server.url("/nothing.json"));
    delegate->checkForUpdates();
    ASSERT_TRUE(waitUntil([] { return alert() != nullptr; }));
    EXPECT_EQ(alert()->accessibleName(), "Couldn't check for updates.");
    EXPECT_EQ(alert()->accessibleDescription(), "The server answered 404.");
}

TEST_F(AppDelegateUpdateTest, TheNotesAreInTheUsersLanguage) {
    system.workspace.languages = {"uk_UA", "en"};
    launchWithFeed(R"({"version": "2.0", "file": "a", "notes": {"uk": ["Швидше."], "en": ["Faster."]}})");
    delegate->checkForUpdates();
    ASSERT_TRUE(waitUntil([&] { return delegate->updateWindow().window() != nullptr; }));
    QStringList texts;
    for (const QLabel* label : delegate->updateWindow().window()->findChildren<QLabel*>())
        texts << label->text();
    EXPECT_TRUE(texts.contains("Швидше.")) << texts.join("|").toStdString();
}

TEST_F(AppDelegateUpdateTest, TheMenusKeyEquivalentsActInTheUpdateWindowAndInTheAlert) {
    const auto pressQuit = [this](QWidget& window) {
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window, 10000));
        const QSignalSpy quits(delegate->statusItem()->menu().actions().at(3), &QAction::triggered);
        QTest::keyClick(&window, Qt::Key_Q, Qt::ControlModifier);
        return quits.count();
    };
    launchWithFeed(newerFeed);
    delegate->checkForUpdates();
    ASSERT_TRUE(waitUntil([&] { return delegate->updateWindow().window() != nullptr; }));
    EXPECT_EQ(pressQuit(*delegate->updateWindow().window()), 1);
    server.answer("/feed.json", HttpAnswer::with("500 Internal Server Error"));
    delegate->checkForUpdates();
    ASSERT_TRUE(waitUntil([] { return alert() != nullptr; }));
    EXPECT_EQ(pressQuit(*alert()), 1);
}

TEST_F(AppDelegateUpdateTest, ThereIsOneUpdateWindow) {
    launchWithFeed(newerFeed);
    EXPECT_EQ(&delegate->updateWindow(), &delegate->updateWindow());
}

TEST_F(AppDelegateUpdateTest, EndsWhileACheckIsUnderWay) {
    server.answer("/feed.json", {{HttpAnswer::Silence{}}});
    launch(server.url("/feed.json"));
    delegate->checkForUpdates();
    ASSERT_TRUE(waitUntil([&] { return !server.requests().empty(); }));
    delegate.reset();
    EXPECT_TRUE(waitUntil([&] { return server.openConnections() == 0; }));
    EXPECT_EQ(alert(), nullptr);
}

}  // namespace quillmere
