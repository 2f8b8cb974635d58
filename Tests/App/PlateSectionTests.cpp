#include "Quillmere/Controls/PaletteSlider.h"
#include "Tests/App/SettingsFixture.h"

#include <QAccessible>
#include <QComboBox>
#include <QFontInfo>

namespace quillmere {
namespace {

class PlateSectionTest : public SettingsTest {
protected:
    void openPlate(PlateSettings plate = PlateSettings()) {
        open({}, plate);
        showTab(SettingsTab::general);
    }
    const PlateSettings& plate() const { return model->config().plate; }
    QComboBox& visibilityPicker() const { return named<QComboBox>(view(), "Show the plate"); }
    /// The title of the background that is chosen.
    QString background() const { return button("Solid").isChecked() ? button("Solid").text() : button("Glass").text(); }
    PaletteSlider& slider() const { return *shown<PaletteSlider>(view()).front(); }
    bool showsOpacity() const {
        return !shown<PaletteSlider>(view()).empty() && texts(view()).contains("Background opacity");
    }
    QString percentage() const { return texts(view()).last(); }
    /// The x of the knob's middle.
    int position(double value) const { return static_cast<int>(8 + value * (slider().width() - 16)); }
    /// The plate settings that are stored at this moment.
    PlateSettings storedPlate() const { return stored().plate; }
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
    click(button("Solid"));
    EXPECT_EQ(storedPlate().background, PlateBackground::solid);
    EXPECT_EQ(storedPlate().opacity(), std::nullopt);
    EXPECT_EQ(writes(), 1);
    EXPECT_TRUE(showsOpacity());
    EXPECT_EQ(percentage(), "80 %");
}

TEST_F(PlateSectionTest, WithoutAChoiceASystemWithoutGlassShowsSolid) {
    openPlate();
    EXPECT_EQ(background(), "Solid");
    EXPECT_TRUE(showsOpacity());
}

TEST_F(PlateSectionTest, GlassCanBeChosenWhereThereIsNone) {
    openPlate();
    EXPECT_TRUE(button("Glass").isEnabled());
    click(button("Glass"));
    EXPECT_EQ(storedPlate().background, PlateBackground::glass);
    EXPECT_FALSE(showsOpacity());
}

TEST_F(PlateSectionTest, ChoosingWhatIsShownAlreadyMakesItExplicit) {
    openPlate();
    click(button("Solid"));
    EXPECT_EQ(storedPlate().background, PlateBackground::solid);
    EXPECT_EQ(writes(), 1);
}

TEST_F(PlateSectionTest, TheArrowsChooseTheBackground) {
    openPlate();
    button("Solid").setFocus(Qt::TabFocusReason);
    press(Qt::Key_Right);
    EXPECT_EQ(storedPlate().background, PlateBackground::glass);
    EXPECT_EQ(writes(), 1);
    press(Qt::Key_Left);
    EXPECT_EQ(storedPlate().background, PlateBackground::solid);
    EXPECT_EQ(writes(), 2);
}

TEST_F(PlateSectionTest, TheVisibilityIsChosenFromTwoTexts) {
    openPlate();
    QComboBox& picker = visibilityPicker();
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
        slider().slide(opacity);
        EXPECT_EQ(percentage(), text);
        EXPECT_EQ(storedPlate().opacity(), opacity);
        EXPECT_EQ(writes(), 1);
    }
}

TEST_F(PlateSectionTest, EachStepOfADragIsOneWrite) {
    openPlate();
    PaletteSlider& slider = this->slider();
    const int y = slider.height() / 2;
    const int from = position(0.8);
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
    QTest::mouseClick(&slider(), Qt::LeftButton, {}, QPoint(position(0.25), slider().height() / 2));
    EXPECT_NEAR(storedPlate().opacity().value(), 0.25, 0.01);
    EXPECT_EQ(writes(), 1);
}

TEST_F(PlateSectionTest, TheSliderStaysWithinItsEnds) {
    openPlate();
    slider().setFocus(Qt::TabFocusReason);
    press(Qt::Key_End);
    EXPECT_EQ(storedPlate().opacity(), 1.0);
    press(Qt::Key_Right);
    EXPECT_EQ(writes(), 1) << "nothing changed";
    press(Qt::Key_Home);
    EXPECT_EQ(storedPlate().opacity(), 0.0);
    press(Qt::Key_PageUp);
    EXPECT_EQ(percentage(), "10 %");
    press(Qt::Key_Up);
    EXPECT_EQ(percentage(), "11 %");
}

TEST_F(PlateSectionTest, AChangeMadeElsewhereIsShownAtOnceAndNotWrittenAgain) {
    openPlate();
    Config config = model->config();
    config.plate = PlateSettings(PlateVisibility::manyOnly, PlateBackground::solid, 0.5);
    model->setConfig(config);
    EXPECT_EQ(writes(), 1);
    EXPECT_EQ(visibilityPicker().currentIndex(), 1);
    EXPECT_EQ(slider().value(), 0.5);
    EXPECT_EQ(percentage(), "50 %");
    config.plate.background = PlateBackground::glass;
    model->setConfig(config);
    EXPECT_EQ(background(), "Glass");
    EXPECT_FALSE(showsOpacity());
}

TEST_F(PlateSectionTest, PreviewRunsTheModelsActionOrNothing) {
    openPlate();
    click(button("Preview"));
    int previews = 0;
    model->onPreview = [&] { ++previews; };
    click(button("Preview"));
    EXPECT_EQ(previews, 1);
    EXPECT_EQ(writes(), 0);
}

TEST_F(PlateSectionTest, ThePercentageIsMutedAndHasDigitsOfEqualWidth) {
    openPlate();
    QLabel& shownPercentage = label(view(), "80 %");
    EXPECT_TRUE(QFontInfo(shownPercentage.font()).fixedPitch());
    for (const bool isDark : {false, true}) {
        Palette::setDark(isDark);
        EXPECT_TRUE(isSame(ink(shownPercentage), Palette::muted().resolved(isDark)));
    }
}

TEST_F(PlateSectionTest, ThePercentageEndsAtTheTrailingEdgeOfItsBox) {
    openPlate();
    QLabel& box = label(view(), "80 %");
    EXPECT_EQ(box.width(), 48);
    const auto inked = [&](int fromRight) {
        const QImage image = enlarged(box);
        const int x = image.width() - 1 - fromRight * image.width() / box.width();
        for (int y = 0; y < image.height(); ++y)
            if (image.pixelColor(x, y).alpha() > 0) return true;
        return false;
    };
    const auto firstInk = [&] {
        int points = 0;
        while (points < box.width() && !inked(points))
            ++points;
        return points;
    };
    const int gap = firstInk();
    EXPECT_LE(gap, 2);
    slider().slide(1);
    EXPECT_EQ(firstInk(), gap) << "the sign moves";
}

TEST_F(PlateSectionTest, ItsPartsAreInTheirOrder10PointsApart) {
    openPlate();
    const auto frame = [this](const QWidget& widget) { return QRect(widget.mapTo(&view(), QPoint()), widget.size()); };
    EXPECT_EQ(texts(view()).mid(1),
              QStringList({"Switcher plate", "Show the plate", "Background", "Background opacity", "80 %"}));
    const QRect title = frame(label(view(), "Switcher plate"));
    const QRect visibility = frame(visibilityPicker());
    const QRect background = frame(*button("Solid").parentWidget());
    const QRect opacity = frame(*slider().parentWidget());
    const QRect preview = frame(button("Preview"));
    EXPECT_EQ(label(view(), "Switcher plate").font().weight(), QFont::DemiBold);
    EXPECT_EQ(visibility.top() - title.bottom() - 1, 10);
    EXPECT_EQ(background.top() - visibility.bottom() - 1, 10);
    EXPECT_EQ(opacity.top() - background.bottom() - 1, 10);
    EXPECT_EQ(preview.top() - opacity.bottom() - 1, 10);
    EXPECT_EQ(preview.left(), title.left());
    EXPECT_EQ(frame(slider()).left() - frame(label(view(), "Background opacity")).right() - 1, 8);
    EXPECT_EQ(frame(label(view(), "80 %")).left() - frame(slider()).right() - 1, 8);
}

TEST_F(PlateSectionTest, TheSliderTellsAssistiveProgramsAPercentage) {
    openPlate();
    QAccessibleInterface* const slider = QAccessible::queryAccessibleInterface(&this->slider());
    EXPECT_EQ(slider->role(), QAccessible::Slider);
    EXPECT_EQ(slider->text(QAccessible::Name), "Background opacity");
    ASSERT_NE(slider->valueInterface(), nullptr);
    EXPECT_DOUBLE_EQ(slider->valueInterface()->currentValue().toDouble(), 80);
    slider->valueInterface()->setCurrentValue(40);
    EXPECT_EQ(storedPlate().opacity(), 0.4);
}

}  // namespace
}  // namespace quillmere
