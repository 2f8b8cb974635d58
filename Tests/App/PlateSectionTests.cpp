#include "Quillmere/Controls/ChipButtonStyle.h"
#include "Quillmere/Controls/PaletteLabel.h"
#include "Quillmere/Controls/PaletteSlider.h"
#include "Quillmere/Controls/PopUpPicker.h"
#include "Quillmere/Controls/SegmentedPicker.h"
#include "Quillmere/Settings/GeneralTab.h"
#include "Quillmere/Settings/PlateSection.h"
#include "Tests/App/SettingsFixture.h"

#include <QAccessible>

namespace quillmere {
namespace {

class PlateSectionTest : public SettingsTest {
protected:
    void openPlate(PlateSettings plate = PlateSettings()) {
        open({}, plate);
        settings->setTab(SettingsTab::general);
        settle();
    }
    PlateSection& section() const { return view().generalTab().plateSection(); }
    const PlateSettings& plate() const { return model->config().plate; }
    QString background() const {
        return section().backgroundPicker().segment(section().backgroundPicker().currentIndex())->text();
    }
    bool showsOpacity() const { return section().opacityRow().isVisible(); }
    /// The plate settings that are stored at this moment.
    PlateSettings storedPlate() const { return stored().plate; }
    void pressOnSlider(double value) const {
        PaletteSlider& slider = section().opacitySlider();
        QTest::mouseClick(&slider, Qt::LeftButton, {},
                          QPoint(static_cast<int>(slider.position(value)), slider.height() / 2));
    }
};

TEST_F(PlateSectionTest, WithoutAChoiceASystemWithGlassShowsGlassAndNoOpacity) {
    glassAvailable = true;
    openPlate();
    EXPECT_EQ(background(), "Glass");
    EXPECT_FALSE(showsOpacity());
}

TEST_F(PlateSectionTest, ChoosingSolidThereIsStoredAndShowsTheDefaultOpacity) {
    glassAvailable = true;
    openPlate();
    click(*section().backgroundPicker().segment(0));
    EXPECT_EQ(storedPlate().background, PlateBackground::solid);
    EXPECT_EQ(storedPlate().opacity(), std::nullopt);
    EXPECT_EQ(writes(), 1);
    EXPECT_TRUE(showsOpacity());
    EXPECT_EQ(section().percentage().text(), "80 %");
}

TEST_F(PlateSectionTest, WithoutAChoiceASystemWithoutGlassShowsSolid) {
    openPlate();
    EXPECT_EQ(background(), "Solid");
    EXPECT_TRUE(showsOpacity());
}

TEST_F(PlateSectionTest, GlassCanBeChosenWhereThereIsNone) {
    openPlate();
    EXPECT_TRUE(section().backgroundPicker().segment(1)->isEnabled());
    click(*section().backgroundPicker().segment(1));
    EXPECT_EQ(storedPlate().background, PlateBackground::glass);
    EXPECT_FALSE(showsOpacity());
}

TEST_F(PlateSectionTest, ChoosingWhatIsShownAlreadyMakesItExplicit) {
    openPlate();
    click(*section().backgroundPicker().segment(0));
    EXPECT_EQ(storedPlate().background, PlateBackground::solid);
    EXPECT_EQ(writes(), 1);
}

TEST_F(PlateSectionTest, TheArrowsChooseTheBackground) {
    openPlate();
    section().backgroundPicker().segment(0)->setFocus(Qt::TabFocusReason);
    press(Qt::Key_Right);
    EXPECT_EQ(storedPlate().background, PlateBackground::glass);
    EXPECT_EQ(writes(), 1);
    press(Qt::Key_Left);
    EXPECT_EQ(storedPlate().background, PlateBackground::solid);
    EXPECT_EQ(writes(), 2);
}

TEST_F(PlateSectionTest, TheVisibilityIsChosenFromTwoTexts) {
    openPlate();
    PopUpPicker& picker = section().visibilityPicker();
    ASSERT_EQ(picker.count(), 2);
    EXPECT_EQ(picker.itemText(0), "Always");
    EXPECT_EQ(picker.itemText(1), "Only with more than two layouts");
    EXPECT_EQ(picker.currentIndex(), 0);
    picker.setFocus(Qt::TabFocusReason);
    press(Qt::Key_Down);
    EXPECT_EQ(storedPlate().visibility, PlateVisibility::manyOnly);
    EXPECT_EQ(writes(), 1);
}

TEST_F(PlateSectionTest, OpacityIsShownAsARoundedPercentage) {
    const std::vector<std::pair<double, const char*>> cases{
        {0.004, "0 %"}, {0.005, "1 %"}, {0.125, "13 %"}, {0.35, "35 %"}, {0.996, "100 %"}, {0, "0 %"}, {1, "100 %"}};
    for (const auto& [opacity, text] : cases) {
        openPlate();
        section().opacitySlider().slide(opacity);
        EXPECT_EQ(section().percentage().text(), text);
        EXPECT_EQ(storedPlate().opacity(), opacity);
        EXPECT_EQ(writes(), 1);
    }
}

TEST_F(PlateSectionTest, EachStepOfADragIsOneWrite) {
    openPlate();
    PaletteSlider& slider = section().opacitySlider();
    const int y = slider.height() / 2;
    const int from = static_cast<int>(slider.position(0.8));
    QTest::mousePress(&slider, Qt::LeftButton, {}, QPoint(from, y));
    const int atPress = writes();
    for (int step = 1; step <= 20; ++step)
        QTest::mouseMove(&slider, QPoint(from - step, y));
    EXPECT_EQ(writes() - atPress, 20);
    QTest::mouseRelease(&slider, Qt::LeftButton, {}, QPoint(from - 20, y));
    EXPECT_EQ(writes() - atPress, 20);
    EXPECT_LT(storedPlate().opacity().value(), 0.8);
    EXPECT_EQ(storedPlate().opacity(), slider.value());
}

TEST_F(PlateSectionTest, APressBesideTheKnobBringsItThere) {
    openPlate();
    pressOnSlider(0.25);
    EXPECT_NEAR(storedPlate().opacity().value(), 0.25, 0.01);
    EXPECT_EQ(writes(), 1);
}

TEST_F(PlateSectionTest, TheSliderStaysWithinItsEnds) {
    openPlate();
    section().opacitySlider().setFocus(Qt::TabFocusReason);
    press(Qt::Key_End);
    EXPECT_EQ(storedPlate().opacity(), 1.0);
    press(Qt::Key_Right);
    EXPECT_EQ(writes(), 1) << "nothing changed";
    press(Qt::Key_Home);
    EXPECT_EQ(storedPlate().opacity(), 0.0);
    press(Qt::Key_PageUp);
    EXPECT_EQ(section().percentage().text(), "10 %");
    press(Qt::Key_Up);
    EXPECT_EQ(section().percentage().text(), "11 %");
}

TEST_F(PlateSectionTest, AChangeMadeElsewhereIsShownAtOnceAndNotWrittenAgain) {
    openPlate();
    Config config = model->config();
    config.plate = PlateSettings(PlateVisibility::manyOnly, PlateBackground::solid, 0.5);
    model->setConfig(config);
    EXPECT_EQ(writes(), 1);
    EXPECT_EQ(section().visibilityPicker().currentIndex(), 1);
    EXPECT_EQ(section().opacitySlider().value(), 0.5);
    EXPECT_EQ(section().percentage().text(), "50 %");
    config.plate.background = PlateBackground::glass;
    model->setConfig(config);
    EXPECT_EQ(background(), "Glass");
    EXPECT_FALSE(showsOpacity());
}

TEST_F(PlateSectionTest, PreviewRunsTheModelsActionOrNothing) {
    openPlate();
    click(section().previewButton());
    int previews = 0;
    model->onPreview = [&] { ++previews; };
    click(section().previewButton());
    EXPECT_EQ(previews, 1);
    EXPECT_EQ(writes(), 0);
}

TEST_F(PlateSectionTest, TheSliderTellsAssistiveProgramsAPercentage) {
    openPlate();
    QAccessibleInterface* const slider = QAccessible::queryAccessibleInterface(&section().opacitySlider());
    EXPECT_EQ(slider->role(), QAccessible::Slider);
    EXPECT_EQ(slider->text(QAccessible::Name), "Background opacity");
    ASSERT_NE(slider->valueInterface(), nullptr);
    EXPECT_DOUBLE_EQ(slider->valueInterface()->currentValue().toDouble(), 80);
    slider->valueInterface()->setCurrentValue(40);
    EXPECT_EQ(storedPlate().opacity(), 0.4);
}

}  // namespace
}  // namespace quillmere
