// What people do with the program and around it, on a Mac.
#include "Quillmere/Menu/StatusItem.h"
#include "Quillmere/Settings/GroupView.h"
#include "Tests/App/WindowContent.h"
#include "Tests/Mac/Doubles/AppKit.h"
#include "Tests/Mac/Doubles/Foundation.h"
#include "Tests/Mac/Doubles/Graphics.h"
#include "Tests/Mac/Doubles/Preferences.h"
#include "Tests/Mac/Doubles/TextInput.h"
#include "Tests/Mac/OpenedAddresses.h"
#include "Tests/Mac/WholeApplicationTest.h"
#include "Tests/Support/HttpServer.h"
#include "Tests/Support/Settle.h"
#include "Tests/Support/WaitUntil.h"

#include <QAction>
#include <QMenu>
#include <QSystemTrayIcon>

#include <algorithm>
#include <stdexcept>

namespace quillmere {
namespace {

using namespace support;
using windowserver::Fate;

class EverydayTest : public WholeApplicationTest {
protected:
    /// The button that shows the first group's shortcut and records another.
    QAbstractButton& recorder(QWidget& settings) {
        settle();
        return *shown<QAbstractButton>(*shown<GroupView>(settings).front()).front();
    }
    const Config& config() const { return delegate->model().config(); }
    /// What is written in the settings on the General tab.
    QStringList generalTexts() {
        QWidget& settings = openSettings();
        delegate->settings().setTab(SettingsTab::general);
        settle();
        return texts(settings);
    }
};

TEST_F(EverydayTest, AShortcutIsRecordedInTheSettingsAndWorksAtOnceAndAfterARestart) {
    store(threeOnCommandK());
    launch();
    QWidget& settings = openSettings();
    EXPECT_EQ(recorder(settings).text(), "⌘K");
    recorder(settings).click();
    EXPECT_EQ(down(0), Fate::swallowed) << "a plain letter is no shortcut, and types nothing meanwhile";
    EXPECT_EQ(up(0), Fate::swallowed);
    EXPECT_EQ(down(49, KeyEventFlags::option), Fate::swallowed);
    EXPECT_EQ(up(49, KeyEventFlags::option), Fate::swallowed);
    EXPECT_EQ(recorder(settings).text(), "⌥Space");
    EXPECT_EQ(currentSource(), english) << "what is recorded does not switch";
    EXPECT_TRUE(preferences::areOnDisk());
    delegate.reset();
    launch();
    EXPECT_EQ(down(49, KeyEventFlags::option), Fate::swallowed);
    EXPECT_EQ(currentSource(), ukrainian);
}

TEST_F(EverydayTest, FnAloneIsRecordedAsAShortcut) {
    store(threeOnCommandK());
    launch();
    QWidget& settings = openSettings();
    recorder(settings).click();
    tapFn(0.1);
    EXPECT_EQ(config().groups.at(0).shortcut, Shortcut::fn);
    tapFn(0.1);
    EXPECT_EQ(currentSource(), ukrainian);
}

TEST_F(EverydayTest, ARecordingEndsWithItsWindow) {
    store(threeOnCommandK());
    launch();
    QWidget& settings = openSettings();
    recorder(settings).click();
    settings.close();
    EXPECT_EQ(down(0), Fate::delivered);
    EXPECT_EQ(pressCommandK(), Fate::swallowed);
    EXPECT_EQ(currentSource(), ukrainian);
}

TEST_F(EverydayTest, FnWithAnotherKeyOrWhileAnotherModifierIsHeldIsNoTap) {
    launch();
    changeFlags(KeyEventFlags::secondaryFn);
    EXPECT_EQ(down(123, KeyEventFlags::secondaryFn), Fate::delivered);
    EXPECT_EQ(up(123, KeyEventFlags::secondaryFn), Fate::delivered);
    changeFlags(0);
    changeFlags(command);
    changeFlags(command | KeyEventFlags::secondaryFn);
    changeFlags(command);
    changeFlags(0);
    EXPECT_EQ(currentSource(), english);
    tapFn(0.59);
    EXPECT_EQ(currentSource(), ukrainian);
}

TEST_F(EverydayTest, CapsLockAndTheKeypadDoNotMatter) {
    constexpr std::uint64_t capsLockAndKeypad = KeyEventFlags::capsLock | 0x200000;
    store(threeOnCommandK());
    launch();
    EXPECT_EQ(down(keyK, command | capsLockAndKeypad), Fate::swallowed);
    EXPECT_EQ(up(keyK, capsLockAndKeypad), Fate::swallowed) << "the modifier was let go first";
    EXPECT_EQ(down(keyK, command | KeyEventFlags::shift), Fate::delivered);
    EXPECT_EQ(textinput::selections(), 1);
}

TEST_F(EverydayTest, AfterTheSystemsOwnMenuWasUsedItGoesOnFromThere) {
    store(threeOnCommandK());
    launch();
    textinput::current = 2;
    EXPECT_EQ(pressCommandK(), Fate::swallowed);
    EXPECT_EQ(currentSource(), english);
}

TEST_F(EverydayTest, ASourceThatWasRemovedIsNotReachedAndTheKeyIsSwallowedAllTheSame) {
    store(threeOnCommandK());
    launch();
    textinput::installed[1].isEnabled = false;
    EXPECT_EQ(pressCommandK(), Fate::swallowed);
    EXPECT_EQ(currentSource(), english);
    EXPECT_FALSE(plate().visible);
}

TEST_F(EverydayTest, ASourceThatWasAddedIsOfferedWhenTheSettingsAreOpenedAgain) {
    store(threeOnCommandK());
    launch();
    openSettings().close();
    textinput::installed.push_back({.id = "com.apple.keylayout.Greek", .name = "Ελληνικά", .languages = {"el"}});
    openSettings();
    ASSERT_EQ(delegate->model().available().size(), 4U);
    EXPECT_EQ(delegate->model().available().back().name, "Ελληνικά");
}

TEST_F(EverydayTest, WithoutAnySourceItStartsAndLeavesEveryKeyAlone) {
    textinput::answers = false;
    textinput::current.reset();
    launch();
    tapFn(0.1);
    EXPECT_EQ(down(keyK, command), Fate::delivered);
    openSettings();
    EXPECT_FALSE(plate().visible);
}

TEST_F(EverydayTest, PreferencesThatAreNoConfigurationGiveWayToTheDefaults) {
    for (const cf::Kind kind : {cf::Kind::data, cf::Kind::string}) {
        preferences::store("config", cf::make(kind, "no configuration"));
        launch();
        ASSERT_EQ(config().groups.size(), 1U);
        EXPECT_EQ(config().groups[0].shortcut, Shortcut::fn);
        EXPECT_EQ(preferences::stored("config")->bytes, "no configuration") << "and are kept until something changes";
        delegate.reset();
    }
}

TEST_F(EverydayTest, APlateForManyOnlyStaysAwayFromTwo) {
    Config two = threeOnCommandK();
    two.plate.visibility = PlateVisibility::manyOnly;
    two.groups[0].sourceIDs.pop_back();
    store(two);
    launch();
    EXPECT_EQ(pressCommandK(), Fate::swallowed);
    EXPECT_EQ(currentSource(), ukrainian);
    EXPECT_FALSE(plate().visible);
}

TEST_F(EverydayTest, AGlassThatTheSystemDoesNotHaveIsABlur) {
    macversion::major = 15;
    Config config = threeOnCommandK();
    config.plate.background = PlateBackground::glass;
    store(config);
    launch();
    pressCommandK();
    NSArray<NSView*>* const views = plate().contentView.subviews;
    ASSERT_EQ(views.count, 2U);
    EXPECT_TRUE([[views objectAtIndex:0] isKindOfClass:[NSVisualEffectView class]]);
    const void* const card = [views objectAtIndex:1].layer.contents;
    EXPECT_NEAR(graphics::pixelOf(card, 244, 10)[3], 0.7 * 255, 1) << "a card, through which the blur is seen";
}

TEST_F(EverydayTest, ThePlateIsOnTheScreenWithTheFocusWhenItIsPressed) {
    store(threeOnCommandK());
    launch();
    appkit::screens.push_back({.frame = {{1440, 0}, {1920, 1080}}, .visibleFrame = {{1440, 0}, {1920, 1055}}});
    pressCommandK();
    EXPECT_LT(plate().frame.origin.x, 1440);
    appkit::mainScreen = 1;
    pressCommandK();
    EXPECT_NEAR(plate().frame.origin.x + plate().frame.size.width / 2, 1440 + 960, 0.5);
    appkit::mainScreen.reset();
    appkit::screens.clear();
    EXPECT_EQ(pressCommandK(), Fate::swallowed) << "the last screen was unplugged";
    EXPECT_EQ(currentSource(), english);
}

TEST_F(EverydayTest, ThePreviewOfThePlateIsShownFromTheSettings) {
    launch();
    openSettings();
    delegate->model().onPreview();
    EXPECT_TRUE(plate().visible);
    EXPECT_EQ(plate().frame.size.height, 134);
}

TEST_F(EverydayTest, TheIconIsDimmedAndTheCheckMarkGoneWhileItIsTurnedOff) {
    const auto strongest = [this] {
        const QImage icon = delegate->statusItem()->trayIcon()->icon().pixmap(QSize(18, 18), 1.0).toImage();
        int alpha = 0;
        for (int y = 0; y < icon.height(); ++y)
            for (int x = 0; x < icon.width(); ++x)
                alpha = std::max(alpha, qAlpha(icon.pixel(x, y)));
        return alpha;
    };
    launch();
    const int before = strongest();
    entry(0)->trigger();
    emit delegate->statusItem()->menu().aboutToShow();
    EXPECT_FALSE(entry(0)->isChecked());
    EXPECT_LT(strongest(), before / 2 + 1);
    tapFn(0.1);
    EXPECT_EQ(currentSource(), english);
    delegate.reset();
    launch();
    EXPECT_FALSE(config().active) << "it is remembered";
}

TEST_F(EverydayTest, BeforeVersion13TheLoginItemsPlaceSaysWhatItNeeds) {
    macversion::major = 12;
    launch();
    EXPECT_TRUE(generalTexts().contains("Needs macOS 13 or later"));
    delegate.reset();
    macversion::major = 13;
    launch();
    EXPECT_FALSE(generalTexts().contains("Needs macOS 13 or later"));
}

TEST_F(EverydayTest, WithoutAFeedNobodyIsAskedForUpdates) {
    launch();
    EXPECT_FALSE(delegate->updatesEnabled());
    delegate->checkForUpdates();
    queue->advance(31);
    EXPECT_EQ(preferences::stored("updateLastCheck"), nullptr);
}

class OfferTest : public EverydayTest {
protected:
    OfferTest() {
        server.answer("/feed.json", HttpAnswer::with("200 OK", R"({"version": "2.0", "file": "Quillmere.dmg"})"));
        preferences::inform("QuillmereUpdateFeed", cf::string(server.url("/feed.json")));
        preferences::inform("CFBundleShortVersionString", cf::string("1.0"));
    }
    /// Of the window that offers the new version.
    QAbstractButton& offered(const QString& name) {
        if (!waitUntil([&] { return delegate->updateWindow().window() != nullptr; }))
            throw std::runtime_error("nothing is offered");
        settle();
        return button(*delegate->updateWindow().window(), name);
    }

    HttpServer server;
};

TEST_F(OfferTest, TheFirstCheckIsMadeByItselfAndADownloadIsTheBrowsersWork) {
    const OpenedAddresses opened("http");
    launch();
    queue->advance(30);
    offered("Download").click();
    ASSERT_EQ(opened.addresses().size(), 1);
    EXPECT_EQ(opened.addresses().at(0).toString().toStdString(), server.url("/downloads/Quillmere.dmg"));
}

TEST_F(OfferTest, AVersionThatIsSkippedIsRememberedInThePreferences) {
    launch();
    delegate->checkForUpdates();
    offered("Skip this version").click();
    ASSERT_NE(preferences::stored("updateSkipped"), nullptr);
    EXPECT_EQ(preferences::stored("updateSkipped")->kind, cf::Kind::string);
    EXPECT_EQ(preferences::stored("updateSkipped")->bytes, "2.0");
}

}  // namespace
}  // namespace quillmere
