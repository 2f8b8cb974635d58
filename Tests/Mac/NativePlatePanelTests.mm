#include "Quillmere/Palette.h"
#include "Quillmere/Plate/SwitchHUD.h"
#include "Quillmere/Platform/Mac/NativeColor.h"
#include "Quillmere/Platform/Mac/NativePlatePanel.h"
#include "Tests/Mac/Doubles/AppKit.h"
#include "Tests/Mac/Doubles/Graphics.h"
#include "Tests/Support/ManualQueue.h"

#include <gtest/gtest.h>

#include <QWidget>

namespace quillmere {
namespace {

class NativePlatePanelTest : public testing::Test {
protected:
    NativePlatePanelTest() { appkit::calls().clear(); }
    ~NativePlatePanelTest() override {
        appkit::reset();
        Palette::setDark(false);
    }

    static NSWindow* window() { return appkit::windows().back(); }
    /// A content of 100 by 50 points that is red all over.
    static QWidget* redContent() {
        auto* const content = new QWidget;
        content->resize(100, 50);
        auto* const fill = new PlateView(Palette::dynamic(Qt::red, Qt::red), Palette::clear(), 0, content);
        fill->setGeometry(content->rect());
        return content;
    }

    NativePlatePanel panel;
};

TEST_F(NativePlatePanelTest, ThePanelIsAboveAllOnEverySpaceAndNeverActiveOrClicked) {
    EXPECT_TRUE([window() isKindOfClass:[NSPanel class]]);
    EXPECT_EQ(window().frame.size.width, 200);
    EXPECT_EQ(window().frame.size.height, 60);
    EXPECT_EQ(window().styleMask, 128U);
    EXPECT_EQ(window().level, 101);
    EXPECT_EQ(window().collectionBehavior, 273U);
    EXPECT_TRUE(window().ignoresMouseEvents);
    EXPECT_TRUE(window().hasShadow);
    EXPECT_FALSE(window().opaque);
    EXPECT_EQ(appkit::resolved(window().backgroundColor, false)[3], 0);
    EXPECT_FALSE(window().hidesOnDeactivate);
    EXPECT_FALSE(window().releasedWhenClosed);
    EXPECT_FALSE(window().visible);
}

TEST_F(NativePlatePanelTest, TheContentIsAPictureAtTheScreensOwnScale) {
    for (const double scale : {1.0, 2.0}) {
        appkit::screens[0].scale = scale;
        panel.setContent(redContent(), {});
        NSView* const view = window().contentView;
        EXPECT_EQ(view.frame.size.width, 100);
        EXPECT_EQ(view.frame.size.height, 50);
        EXPECT_EQ(view.layer.contentsScale, scale);
        const void* const picture = view.layer.contents;
        EXPECT_EQ(graphics::sizeOf(picture).width, 100 * scale);
        EXPECT_EQ(graphics::sizeOf(picture).height, 50 * scale);
        EXPECT_EQ(graphics::pixelOf(picture, 50, 25), (std::array{255, 0, 0, 255}));
    }
}

TEST_F(NativePlatePanelTest, ABlurLiesBehindTheContentAndIsCutToThePlatesCorners) {
    panel.setContent(redContent(), {.kind = PlateMaterial::Kind::blur, .cornerRadius = 26});
    NSArray<NSView*>* const views = window().contentView.subviews;
    ASSERT_EQ(views.count, 2U);
    ASSERT_TRUE([[views objectAtIndex:0] isKindOfClass:[NSVisualEffectView class]]);
    auto* const effect = static_cast<NSVisualEffectView*>([views objectAtIndex:0]);
    EXPECT_EQ(effect.material, 13);
    EXPECT_EQ(effect.blendingMode, 0);
    EXPECT_EQ(effect.state, 1);
    EXPECT_EQ(effect.layer.cornerRadius, 26);
    EXPECT_TRUE(effect.layer.masksToBounds);
    EXPECT_EQ(effect.frame.size.width, 100);
    EXPECT_TRUE([views objectAtIndex:1].layer.contents != nil);
}

TEST_F(NativePlatePanelTest, GlassCarriesTheContentAndTheTint) {
    panel.setContent(redContent(),
                     {.kind = PlateMaterial::Kind::glass, .cornerRadius = 26, .tint = QColor(51, 102, 153, 204)});
    ASSERT_TRUE([window().contentView isKindOfClass:[NSGlassEffectView class]]);
    auto* const glass = static_cast<NSGlassEffectView*>(window().contentView);
    EXPECT_EQ(glass.cornerRadius, 26);
    EXPECT_EQ(glass.style, 0);
    EXPECT_EQ(glass.frame.size.width, 100);
    EXPECT_TRUE(glass.contentView.layer.contents != nil);
    const auto tint = appkit::resolved(glass.tintColor, false);
    EXPECT_NEAR(tint[0], 0.2, 1e-4);
    EXPECT_NEAR(tint[1], 0.4, 1e-4);
    EXPECT_NEAR(tint[2], 0.6, 1e-4);
    EXPECT_NEAR(tint[3], 0.8, 1e-4);
}

TEST_F(NativePlatePanelTest, FramesAreTurnedFromYDownwardsToYUpwards) {
    EXPECT_EQ(panel.visibleFrame(), QRectF(0, 25, 1440, 805));
    panel.setFrame(QRectF(100, 25, 244, 76));
    EXPECT_EQ(window().frame.origin.x, 100);
    EXPECT_EQ(window().frame.origin.y, 900 - 25 - 76);
}

TEST_F(NativePlatePanelTest, OnASecondScreenTheOneWithTheMenuBarStillCounts) {
    appkit::screens.push_back({.frame = {{1440, -180}, {1920, 1080}}, .visibleFrame = {{1440, -180}, {1920, 1055}}});
    appkit::mainScreen = 1;
    const QRectF visible = panel.visibleFrame();
    EXPECT_EQ(visible, QRectF(1440, 25, 1920, 1055));
    panel.setFrame(visible);
    EXPECT_EQ(window().frame.origin.x, 1440);
    EXPECT_EQ(window().frame.origin.y, -180);
}

TEST_F(NativePlatePanelTest, WithoutAScreenInFocusTheFirstIsTakenAndWithoutAnyNothingIsShown) {
    appkit::mainScreen.reset();
    EXPECT_EQ(panel.visibleFrame(), QRectF(0, 25, 1440, 805));
    appkit::screens.clear();
    EXPECT_TRUE(panel.visibleFrame().isEmpty());
    panel.setContent(redContent(), {});
    EXPECT_EQ(window().contentView.layer.contentsScale, 1);
}

TEST_F(NativePlatePanelTest, ItComesToTheFrontWithTheShadowOfItsNewShape) {
    panel.orderFront();
    EXPECT_TRUE(window().visible);
    EXPECT_EQ(appkit::calls(), (std::vector<std::string>{"orderFrontRegardless", "invalidateShadow"}));
    panel.orderOut();
    EXPECT_FALSE(window().visible);
}

TEST_F(NativePlatePanelTest, ThatIsGivenUpWhileShownIsGoneFromTheScreen) {
    {
        NativePlatePanel shown;
        shown.orderFront();
    }
    EXPECT_EQ(appkit::calls().back(), "orderOut");
}

TEST_F(NativePlatePanelTest, AColourOutlivesWhatItWasMadeOf) {
    const auto made = [] {
        const QColor light(10, 20, 30);
        const QColor dark(200, 210, 220);
        return NativeColor::makeDynamic(light, dark);
    };
    NSColor* const color = made();
    EXPECT_NEAR(appkit::resolved(color, false)[0], 10 / 255.0, 0.001);
    EXPECT_NEAR(appkit::resolved(color, true)[2], 220 / 255.0, 0.001);
}

TEST_F(NativePlatePanelTest, AFadeIsOvertakenByANewAlphaAndStillTellsItsEnd) {
    int ends = 0;
    panel.fade(0, 0.25, [&] { ++ends; });
    EXPECT_EQ(appkit::lastDuration(), 0.25);
    EXPECT_LT(panel.alpha(), 1);
    EXPECT_GT(panel.alpha(), 0) << "it takes its time";
    panel.setAlpha(1);
    EXPECT_EQ(appkit::lastDuration(), 0);
    EXPECT_EQ(panel.alpha(), 1);
    appkit::finishAnimation();
    EXPECT_EQ(ends, 1);
    EXPECT_EQ(panel.alpha(), 1);
    panel.fade(0, 0.25, nullptr);
    appkit::finishAnimation();
    EXPECT_EQ(panel.alpha(), 0);
}

class ShownPlateTest : public NativePlatePanelTest {
protected:
    static const void* picture() { return window().contentView.layer.contents; }

    ManualQueue queue;
    SwitchHUD hud{panel, queue, false};
};

TEST_F(ShownPlateTest, ASwitchIsShownInTheMiddleForASecondAndFades) {
    hud.show({"English", "Українська"}, 0, PlateSettings{});
    EXPECT_EQ(window().frame.size.width, 244);
    EXPECT_EQ(window().frame.size.height, 134);
    EXPECT_EQ(window().frame.origin.x, (1440 - 244) / 2);
    EXPECT_NEAR(window().frame.origin.y, 70 + (805 - 134) / 2.0, 0.51);
    EXPECT_TRUE(window().visible);
    EXPECT_EQ(graphics::sizeOf(picture()).width, 488U);
    EXPECT_EQ(graphics::pixelOf(picture(), 0, 0)[3], 0) << "the corner is round";
    EXPECT_NEAR(graphics::pixelOf(picture(), 244, 10)[3], 0.8 * 255, 1) << "the card's own opacity";
    queue.advance(1.0);
    EXPECT_EQ(appkit::runningAnimations(), 1U);
    appkit::finishAnimation();
    EXPECT_FALSE(window().visible);
}

TEST_F(ShownPlateTest, AShowDuringTheFadeKeepsThePlate) {
    hud.show({"a"}, 0, PlateSettings{});
    queue.advance(1.0);
    hud.show({"b"}, 0, PlateSettings{});
    EXPECT_EQ(panel.alpha(), 1);
    appkit::finishAnimation();
    EXPECT_TRUE(window().visible);
    EXPECT_EQ(panel.alpha(), 1);
}

TEST_F(ShownPlateTest, UnderGlassOnlyTheSelectedRowIsPainted) {
    SwitchHUD onGlass(panel, queue, true);
    onGlass.show({"a", "b"}, 1, PlateSettings{});
    ASSERT_TRUE([window().contentView isKindOfClass:[NSGlassEffectView class]]);
    auto* const glass = static_cast<NSGlassEffectView*>(window().contentView);
    const void* const rows = glass.contentView.layer.contents;
    EXPECT_EQ(graphics::pixelOf(rows, 244, 6)[3], 0);
    EXPECT_GT(graphics::pixelOf(rows, 40, 2 * (70 + 26))[3], 0);
    EXPECT_NEAR(appkit::resolved(glass.tintColor, false)[3], 0.7, 0.01);
}

}  // namespace
}  // namespace quillmere
