// What the application object, the appearance, the title bars, the login item
// and the allocator are asked for.
#include "Quillmere/Palette.h"
#include "Quillmere/Platform/Mac/MacWorkspace.h"
#include "Quillmere/Platform/Mac/NativeColor.h"
#include "Quillmere/Platform/Mac/ServiceLoginItem.h"
#include "Quillmere/Platform/Mac/SettingsPermissionRequest.h"
#include "Quillmere/Platform/Mac/SystemAppearance.h"
#include "Quillmere/Platform/Memory.h"
#include "Tests/Mac/Doubles/AppKit.h"
#include "Tests/Mac/Doubles/Foundation.h"
#include "Tests/Mac/Doubles/LoginItems.h"
#include "Tests/Mac/Doubles/Memory.h"
#include "Tests/Support/FakeWorkspace.h"

#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QWidget>

namespace quillmere {
namespace {

class MacApplicationTest : public testing::Test {
protected:
    ~MacApplicationTest() override {
        appkit::reset();
        loginitems::reset();
        macversion::major = 26;
    }
};

TEST_F(MacApplicationTest, TheProgramHasNoPlaceInTheDock) {
    EXPECT_EQ(appkit::policy(), NSApplicationActivationPolicyAccessory);
}

TEST_F(MacApplicationTest, ItIsAsDarkAsTheApplicationsAppearanceAndHearsOfChanges) {
    SystemAppearance appearance;
    QSignalSpy changes(&appearance, &Appearance::changed);
    EXPECT_FALSE(appearance.isDark());
    appkit::setDark(true);
    EXPECT_TRUE(appearance.isDark());
    EXPECT_EQ(changes.count(), 1);
    appkit::setDark(false);
    EXPECT_FALSE(appearance.isDark());
    EXPECT_EQ(changes.count(), 2);
}

TEST_F(MacApplicationTest, AnAppearanceOfAnotherKindIsLight) {
    EXPECT_FALSE(NativeColor::isDark(appkit::unknownAppearance()));
}

TEST_F(MacApplicationTest, AnAppearanceThatIsGoneHearsNothing) {
    {
        const SystemAppearance appearance;
    }
    appkit::setDark(true);
}

TEST_F(MacApplicationTest, ThereIsGlassFromVersion26On) {
    const SystemAppearance appearance;
    EXPECT_TRUE(appearance.hasGlass());
    macversion::major = 15;
    EXPECT_FALSE(appearance.hasGlass());
}

TEST_F(MacApplicationTest, TheTitleBarIsOneWithTheWindowInLightAndDark) {
    MacWorkspace workspace;
    QWidget window;
    // The colours are gone when the system asks for them.
    workspace.blendTitleBar(window, QColor(Palette::window().light), QColor(Palette::window().dark));
    NSWindow* const native = appkit::windowOf(window);
    EXPECT_TRUE(native.titlebarAppearsTransparent);
    for (const bool isDark : {false, true}) {
        const auto drawn = appkit::resolved(native.backgroundColor, isDark);
        const QColor expected = Palette::window().resolved(isDark);
        EXPECT_NEAR(drawn[0], expected.redF(), 1e-4);
        EXPECT_NEAR(drawn[1], expected.greenF(), 1e-4);
        EXPECT_NEAR(drawn[2], expected.blueF(), 1e-4);
        EXPECT_EQ(drawn[3], 1);
    }
}

TEST_F(MacApplicationTest, AWindowComesToTheFrontWithTheProgramBeforeAllOthers) {
    MacWorkspace workspace;
    QWidget window;
    workspace.bringToFront(window);
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(appkit::activations(), 1);
}

TEST_F(MacApplicationTest, ThePermissionIsGrantedInTheSystemsSettings) {
    FakeWorkspace workspace;
    SettingsPermissionRequest request(workspace);
    EXPECT_EQ(request.directions(),
              "Open System Settings, go to Privacy & Security › Accessibility and switch Quillmere on.");
    request.open();
    ASSERT_EQ(workspace.opened.size(), 1U);
    EXPECT_EQ(workspace.opened[0].toString(),
              "x-apple.systempreferences:com.apple.preference.security?Privacy_Accessibility");
}

TEST_F(MacApplicationTest, TheLoginItemTellsTheRealState) {
    ServiceLoginItem item;
    EXPECT_TRUE(item.isAvailable());
    EXPECT_FALSE(item.isEnabled());
    EXPECT_TRUE(item.setEnabled(true));
    EXPECT_TRUE(item.isEnabled());
    loginitems::needsApproval = true;
    EXPECT_FALSE(item.isEnabled()) << "registered, but turned off in the system's settings";
    loginitems::needsApproval = false;
    loginitems::refuses = true;
    EXPECT_FALSE(item.setEnabled(false));
    EXPECT_TRUE(item.isEnabled());
    loginitems::refuses = false;
    EXPECT_TRUE(item.setEnabled(false));
    EXPECT_FALSE(item.isEnabled());
}

TEST_F(MacApplicationTest, BeforeVersion13ThereIsNoLoginItem) {
    macversion::major = 12;
    ServiceLoginItem item;
    EXPECT_FALSE(item.isAvailable());
    EXPECT_FALSE(item.isEnabled());
    EXPECT_FALSE(item.setEnabled(true));
    macversion::major = 13;
    EXPECT_TRUE(item.isAvailable());
}

TEST_F(MacApplicationTest, MemoryIsGivenBackFromEveryZone) {
    const int before = memory::reliefs();
    giveBackMemory();
    EXPECT_EQ(memory::reliefs(), before + 1);
}

}  // namespace
}  // namespace quillmere
