// A few looks at the layer in the system that is beneath it, whichever that is.
// Only what is declared for every system may be used here.
#include "Quillmere/Permission/PermissionWindow.h"
#include "Quillmere/Plate/SwitchHUD.h"
#include "Quillmere/Platform/Mac/NativePlatePanel.h"
#include "Quillmere/Platform/Mac/NativeWindow.h"
#include "Quillmere/Platform/Mac/SystemAppearance.h"
#include "Quillmere/Platform/Platform.h"
#include "Quillmere/Switching/InputSources.h"

#include <AppKit/AppKit.h>

#include <gtest/gtest.h>

#include <QDir>
#include <QWidget>

namespace quillmere {
namespace {

/// Keeps a picture of the window for whoever looks at the results.
void keepPicture(QWidget& window, const QString& name) {
    const QString folder = qEnvironmentVariable("QUILLMERE_ARTEFACTS");
    if (folder.isEmpty()) return;
    QDir().mkpath(folder);
    EXPECT_TRUE(window.grab().save(folder + "/" + name + ".png"));
}

NSWindow* onlyPanel() {
    NSArray<NSWindow*>* const windows = NSApplication.sharedApplication.windows;
    for (NSUInteger i = 0; i < windows.count; ++i)
        if ([[windows objectAtIndex:i] isKindOfClass:[NSPanel class]]) return [windows objectAtIndex:i];
    return nil;
}

TEST(MacSmoke, TheSystemListsItsInputSourcesAndTheCurrentOneIsAmongThem) {
    const Platform platform = makePlatform();
    const InputSources sources(*platform.inputSources);
    const auto available = sources.available();
    ASSERT_FALSE(available.empty());
    for (const SourceInfo& source : available)
        EXPECT_FALSE(source.name.empty()) << source.id;
    const auto current = sources.currentID();
    ASSERT_TRUE(current.has_value());
    EXPECT_TRUE(sources.select(*current));
    EXPECT_EQ(sources.currentID(), current);
}

TEST(MacSmoke, WhatIsStoredIsReadBack) {
    const Platform platform = makePlatform();
    UserDefaults& defaults = *platform.userDefaults;
    const std::string key = "smokeTest";
    const Date date(std::chrono::seconds(1'700'000'000));
    defaults.setData(key, "{}");
    EXPECT_EQ(defaults.data(key), "{}");
    EXPECT_EQ(defaults.boolean(key), std::nullopt);
    defaults.setBoolean(key, true);
    EXPECT_EQ(defaults.boolean(key), true);
    defaults.setDate(key, date);
    EXPECT_EQ(defaults.date(key), date);
    defaults.setString(key, "✓");
    EXPECT_EQ(defaults.string(key), "✓");
    defaults.remove(key);
    EXPECT_EQ(defaults.string(key), std::nullopt);
}

TEST(MacSmoke, ThePlatesPanelIsWhatItWasAskedToBe) {
    const Platform platform = makePlatform();
    NSWindow* const panel = onlyPanel();
    ASSERT_TRUE(panel != nil);
    EXPECT_EQ(panel.styleMask, NSWindowStyleMask{128});
    EXPECT_EQ(panel.level, 101);
    EXPECT_EQ(panel.collectionBehavior, NSWindowCollectionBehavior{273});
    EXPECT_TRUE(panel.ignoresMouseEvents);
    EXPECT_TRUE(panel.hasShadow);
    EXPECT_FALSE(panel.isOpaque);
    EXPECT_FALSE(panel.hidesOnDeactivate);
    SwitchHUD hud(*platform.platePanel, *platform.mainQueue, platform.appearance->hasGlass());
    hud.show({"English", "Українська"}, 0, PlateSettings{});
    EXPECT_TRUE(panel.isVisible);
    EXPECT_EQ(panel.frame.size.width, 244);
    EXPECT_EQ(panel.frame.size.height, 134);
    EXPECT_EQ(platform.platePanel->alpha(), 1);
    platform.platePanel->orderOut();
    EXPECT_FALSE(panel.isVisible);
}

TEST(MacSmoke, ThePermissionWindowIsShownUnderATransparentTitleBar) {
    const Platform platform = makePlatform();
    PermissionWindow window(std::make_shared<PermissionModel>(), *platform.mainQueue, *platform.workspace,
                            *platform.permissionRequest);
    window.show();
    ASSERT_NE(window.window(), nullptr);
    EXPECT_TRUE(window.window()->isVisible());
    EXPECT_TRUE(nativeWindow(*window.window()).titlebarAppearsTransparent);
    keepPicture(*window.window(), "mac-permission");
}

}  // namespace
}  // namespace quillmere
