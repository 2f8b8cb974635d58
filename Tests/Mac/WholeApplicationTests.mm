// What the program does on a Mac, scene by scene.
#include "Quillmere/Menu/StatusItem.h"
#include "Quillmere/Palette.h"
#include "Quillmere/Platform/SingleInstance.h"
#include "Tests/Mac/Doubles/AppKit.h"
#include "Tests/Mac/Doubles/Foundation.h"
#include "Tests/Mac/Doubles/Graphics.h"
#include "Tests/Mac/Doubles/LoginItems.h"
#include "Tests/Mac/Doubles/Preferences.h"
#include "Tests/Mac/Doubles/TextInput.h"
#include "Tests/Mac/OpenedAddresses.h"
#include "Tests/Mac/WholeApplicationTest.h"
#include "Tests/Support/HttpServer.h"
#include "Tests/Support/WaitUntil.h"

#include <QAbstractButton>
#include <QAction>
#include <QSystemTrayIcon>

namespace quillmere {
namespace {

using namespace support;
using windowserver::Fate;

TEST_F(WholeApplicationTest, AShortcutIsSwallowedSelectsTheNextSourceAndShowsThePlate) {
    macversion::major = 15;
    store(threeOnCommandK());
    launch();
    EXPECT_FALSE(plate().visible);
    EXPECT_EQ(pressCommandK(), Fate::swallowed);
    EXPECT_EQ(currentSource(), ukrainian);
    EXPECT_TRUE(plate().visible);
    const NSRect frame = plate().frame;
    EXPECT_EQ(frame.size.height, 192);
    EXPECT_NEAR(frame.origin.x + frame.size.width / 2, 720, 0.5);
    EXPECT_NEAR(frame.origin.y + frame.size.height / 2, 70 + 805 / 2.0, 0.51);
    const void* const picture = plate().contentView.layer.contents;
    EXPECT_EQ(graphics::sizeOf(picture).height, 384U);
    const auto alphaAt = [&](std::size_t y) { return graphics::pixelOf(picture, 40, 2 * y)[3]; };
    EXPECT_GT(alphaAt(70 + 26), alphaAt(12 + 26)) << "the second row is the highlighted one";
    EXPECT_EQ(alphaAt(12 + 26), alphaAt(128 + 26));
    queue->advance(1.0);
    appkit::finishAnimation();
    EXPECT_FALSE(plate().visible);
}

TEST_F(WholeApplicationTest, ManyPressesGoRoundAndKeepOnePlate) {
    store(threeOnCommandK());
    launch();
    for (const char* expected : {ukrainian, japanese, english, ukrainian}) {
        EXPECT_EQ(pressCommandK(), Fate::swallowed);
        EXPECT_EQ(currentSource(), expected);
        queue->advance(0.9);
        EXPECT_TRUE(plate().visible);
    }
    EXPECT_EQ(appkit::runningAnimations(), 0U);
}

TEST_F(WholeApplicationTest, AHeldShortcutSwitchesOnce) {
    store(threeOnCommandK());
    launch();
    down(keyK, command);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(down(keyK, command, true), Fate::swallowed);
    EXPECT_EQ(up(keyK, command), Fate::swallowed);
    EXPECT_EQ(currentSource(), ukrainian);
    EXPECT_EQ(textinput::selections(), 1);
}

TEST_F(WholeApplicationTest, WithNothingStoredALoneFnTapGoesThroughAllSources) {
    launch();
    tapFn(0.2);
    EXPECT_EQ(currentSource(), ukrainian);
    tapFn(0.7);
    EXPECT_EQ(currentSource(), ukrainian) << "held too long";
    EXPECT_EQ(preferences::stored("config"), nullptr) << "nothing is stored until the user changes something";
}

TEST_F(WholeApplicationTest, WhatIsRecordedIsSwallowedStoredAndTheShortcutFromThenOn) {
    store(threeOnCommandK());
    launch();
    const UUID group = delegate->model().config().groups.at(0).id;
    std::optional<Shortcut> recorded;
    delegate->model().startRecording(
        group, [&](std::int64_t key, Modifiers modifiers) { recorded = Shortcut{key, modifiers}; });
    EXPECT_EQ(down(1, KeyEventFlags::option), Fate::swallowed);
    EXPECT_EQ(up(1, KeyEventFlags::option), Fate::swallowed);
    delegate->model().endRecording();
    ASSERT_EQ(recorded, (Shortcut{1, Modifiers::option}));
    Config config = delegate->model().config();
    config.groups[0].shortcut = recorded;
    delegate->model().setConfig(config);
    EXPECT_EQ(pressCommandK(), Fate::delivered);
    EXPECT_EQ(down(1, KeyEventFlags::option), Fate::swallowed);
    EXPECT_EQ(currentSource(), ukrainian);
    EXPECT_TRUE(preferences::areOnDisk());
}

TEST_F(WholeApplicationTest, TheTapIsTurnedOnAgainWhoeverTurnedItOff) {
    store(threeOnCommandK());
    launch();
    windowserver::isSlow = true;
    EXPECT_EQ(down(0), Fate::delivered);
    EXPECT_TRUE(windowserver::isTapEnabled());
    windowserver::disableByUserInput();
    EXPECT_EQ(pressCommandK(), Fate::swallowed);
}

TEST_F(WholeApplicationTest, APermissionThatIsGivenLaterIsNoticedWithinASecond) {
    store(threeOnCommandK());
    windowserver::isTrusted = false;
    launch();
    QWidget* const window = delegate->permissionWindow()->window();
    ASSERT_NE(window, nullptr);
    EXPECT_EQ(window->windowTitle(), "Quillmere needs permission");
    EXPECT_TRUE(appkit::windowOf(*window).titlebarAppearsTransparent);
    EXPECT_EQ(pressCommandK(), Fate::delivered);
    queue->advance(5);
    EXPECT_FALSE(windowserver::hasTap());
    windowserver::isTrusted = true;
    queue->advance(1);
    EXPECT_TRUE(windowserver::isTapEnabled());
    EXPECT_EQ(window->windowTitle(), "Quillmere is ready");
    EXPECT_EQ(pressCommandK(), Fate::swallowed);
    queue->advance(10);
    appkit::finishAnimation();
    EXPECT_EQ(windowserver::tapsMade(), 1);
}

TEST_F(WholeApplicationTest, TheButtonOfThePermissionWindowOpensTheSystemsSettings) {
    const OpenedAddresses opened("x-apple.systempreferences");
    windowserver::isTrusted = false;
    launch();
    for (auto* const button : delegate->permissionWindow()->window()->findChildren<QAbstractButton*>())
        if (button->accessibleName() == "Open System Settings") button->click();
    ASSERT_EQ(opened.addresses().size(), 1);
    EXPECT_EQ(opened.addresses().at(0).query(), "Privacy_Accessibility");
}

TEST_F(WholeApplicationTest, TheConfigurationIsReadBackByTheNextStart) {
    launch();
    delegate->model().setConfig(threeOnCommandK());
    const Config written = delegate->model().config();
    delegate.reset();
    launch();
    EXPECT_EQ(delegate->model().config(), written);
    EXPECT_EQ(pressCommandK(), Fate::swallowed);
}

TEST_F(WholeApplicationTest, TheStatusItemIsATemplateAndItsMenuWorks) {
    store(threeOnCommandK());
    launch();
    ASSERT_NE(delegate->statusItem()->trayIcon(), nullptr);
    EXPECT_TRUE(delegate->statusItem()->trayIcon()->icon().isMask());
    entry(0)->trigger();
    EXPECT_EQ(pressCommandK(), Fate::delivered);
    entry(0)->trigger();
    EXPECT_EQ(pressCommandK(), Fate::swallowed);
    EXPECT_EQ(delegate->settingsWindow(), nullptr);
    QWidget& settings = openSettings();
    EXPECT_TRUE(settings.isVisible());
    EXPECT_TRUE(appkit::windowOf(settings).titlebarAppearsTransparent);
    EXPECT_EQ(appkit::activations(), 1);
}

TEST_F(WholeApplicationTest, TheLoginItemIsSwitchedFromTheSettings) {
    launch();
    delegate->settings().setLaunchAtLogin(true);
    EXPECT_TRUE(loginitems::isRegistered);
    EXPECT_TRUE(delegate->settings().launchAtLogin());
    loginitems::refuses = true;
    delegate->settings().setLaunchAtLogin(false);
    EXPECT_TRUE(delegate->settings().launchAtLogin());
}

TEST_F(WholeApplicationTest, ANewerVersionIsOffered) {
    HttpServer server;
    server.answer("/feed.json", HttpAnswer::with("200 OK", R"({"version": "2.0", "file": "Quillmere.dmg"})"));
    preferences::inform("QuillmereUpdateFeed", cf::string(server.url("/feed.json")));
    preferences::inform("CFBundleShortVersionString", cf::string("1.0"));
    launch();
    delegate->checkForUpdates();
    ASSERT_TRUE(waitUntil([&] { return delegate->updateWindow().window() != nullptr; }));
    QWidget* const window = delegate->updateWindow().window();
    EXPECT_EQ(window->windowTitle(), "Quillmere 2.0 is available");
    EXPECT_TRUE(appkit::windowOf(*window).titlebarAppearsTransparent);
    EXPECT_EQ(server.requests().at(0).headers.at("user-agent"), "Quillmere/1.0");
    EXPECT_EQ(preferences::stored("updateLastCheck")->kind, cf::Kind::date);
}

TEST_F(WholeApplicationTest, ItFollowsTheSystemIntoTheDark) {
    store(threeOnCommandK());
    launch();
    EXPECT_FALSE(Palette::isDark());
    appkit::setDark(true);
    EXPECT_TRUE(Palette::isDark());
    pressCommandK();
    ASSERT_TRUE([plate().contentView isKindOfClass:[NSGlassEffectView class]]) << "version 26 has glass";
    const auto tint = appkit::resolved(static_cast<NSGlassEffectView*>(plate().contentView).tintColor, true);
    EXPECT_NEAR(tint[0] * 255, 38, 0.5);
}

TEST_F(WholeApplicationTest, WhenItEndsItsTapAndItsPlateGoWithIt) {
    store(threeOnCommandK());
    launch();
    pressCommandK();
    delegate.reset();
    EXPECT_FALSE(windowserver::hasTap());
    EXPECT_EQ(plate(), nil);
    EXPECT_EQ(down(keyK, command), Fate::delivered);
}

TEST_F(WholeApplicationTest, TheSystemItselfKeepsASecondInstanceAway) {
    EXPECT_TRUE(makeSingleInstance()->claim());
}

}  // namespace
}  // namespace quillmere
