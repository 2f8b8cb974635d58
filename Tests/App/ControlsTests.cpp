#include "Quillmere/Controls/AccentButtonStyle.h"
#include "Quillmere/Controls/CardStyle.h"
#include "Quillmere/Controls/ChipButtonStyle.h"
#include "Quillmere/Controls/IconButton.h"
#include "Quillmere/Controls/MenuButton.h"
#include "Quillmere/Controls/PaletteLabel.h"
#include "Quillmere/Controls/PaletteSlider.h"
#include "Quillmere/Controls/SegmentedPicker.h"
#include "Quillmere/Controls/SwitchControl.h"
#include "Quillmere/Controls/WidgetPalette.h"
#include "Tests/App/WindowContent.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QFocusFrame>
#include <QFontMetrics>
#include <QHBoxLayout>
#include <QHelpEvent>
#include <QImage>
#include <QMenu>
#include <QSignalSpy>
#include <QTest>
#include <QToolTip>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <cmath>
#include <numbers>

namespace quillmere {
namespace {

class ControlsTest : public testing::Test {
protected:
    ~ControlsTest() override { Palette::setDark(false); }

    /// What the control paints on transparent ground, at `scale`.
    static QImage painted(QWidget& control, double scale = 1) {
        control.resize(control.sizeHint());
        QImage image(control.size() * scale, QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(scale);
        image.fill(Qt::transparent);
        control.render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
        return image;
    }
    /// The colour in the middle of the left padding, at half height.
    static QColor fillOf(TextButton& button) {
        const QImage image = painted(button);
        return image.pixelColor(4, image.height() / 2);
    }
    /// The colour of its text: of the colours on it, the one that is the
    /// farthest from its fill.
    static QColor inkOf(TextButton& button) {
        button.resize(button.sizeHint());
        const QImage image = enlarged(button);
        const QColor fill = image.pixelColor(32, image.height() / 2);
        const auto distance = [&fill](const QColor& color) {
            return std::abs(color.red() - fill.red()) + std::abs(color.green() - fill.green())
                   + std::abs(color.blue() - fill.blue());
        };
        QColor ink = fill;
        for (int x = 32; x < image.width() - 32; ++x)
            if (const QColor color = image.pixelColor(x, image.height() / 2); distance(color) > distance(ink))
                ink = color;
        return ink;
    }
    /// One translucent colour over an opaque one.
    static QColor over(const QColor& color, const QColor& ground) {
        const auto mixed = [alpha = static_cast<double>(color.alphaF())](int a, int b) {
            return static_cast<int>(std::lround(a * alpha + b * (1 - alpha)));
        };
        return {mixed(color.red(), ground.red()), mixed(color.green(), ground.green()),
                mixed(color.blue(), ground.blue())};
    }
    /// The radius of its upper left corner, in points: how far the shape begins
    /// on the corner's diagonal tells it.
    static double cornerRadius(QWidget& widget) {
        widget.resize(widget.sizeHint());
        const QImage image = enlarged(widget);
        int begin = 0;
        while (image.pixelColor(begin, begin).alpha() < 128)
            ++begin;
        return begin / image.devicePixelRatio() / (1 - std::numbers::sqrt2 / 2);
    }
    static QColor strokeOf(TextButton& button) { return painted(button).pixelColor(button.sizeHint().width() / 2, 0); }
    /// Two translucent colours over each other are rounded twice.
    static void expectNear(const QColor& actual, const QColor& expected) {
        EXPECT_NEAR(actual.red(), expected.red(), 5);
        EXPECT_NEAR(actual.green(), expected.green(), 5);
        EXPECT_NEAR(actual.blue(), expected.blue(), 5);
        EXPECT_NEAR(actual.alpha(), expected.alpha(), 2);
    }
};

TEST_F(ControlsTest, AChipIsItsTextWithTheStatedPadding) {
    ChipButton chip("Layouts");
    EXPECT_EQ(chip.font().pixelSize(), 13);
    EXPECT_EQ(chip.font().weight(), QFont::Normal);
    const double text = QFontMetricsF(chip.font()).horizontalAdvance("Layouts");
    EXPECT_EQ(chip.sizeHint(), QSize(static_cast<int>(std::ceil(text)) + 24, chip.fontMetrics().height() + 10));
    EXPECT_NEAR(cornerRadius(chip), 8, 0.5);
}

TEST_F(ControlsTest, AMonospacedChipHasEqualWidths) {
    EXPECT_EQ(ChipButton("A", {.monospaced = true}).font().pixelSize(), 13);
    const ChipButton narrow("iiii", {.monospaced = true});
    const ChipButton wide("WWWW", {.monospaced = true});
    EXPECT_EQ(narrow.sizeHint(), wide.sizeHint());
}

TEST_F(ControlsTest, AChipTakesTheChipColoursAndASelectedOneTheSelectionsInLightAndDark) {
    for (const bool isDark : {false, true}) {
        Palette::setDark(isDark);
        ChipButton chip("Layouts");
        EXPECT_EQ(fillOf(chip), Palette::chip().resolved(isDark));
        EXPECT_EQ(strokeOf(chip), Palette::border().resolved(isDark));
        chip.setSelected(true);
        expectNear(fillOf(chip), Palette::selection().resolved(isDark));
        expectNear(strokeOf(chip), Palette::accent().resolved(isDark));
    }
}

TEST_F(ControlsTest, AnAccentButtonIsFilledWithoutAnOutline) {
    AccentButton button("Done");
    EXPECT_EQ(button.font().pixelSize(), 13);
    EXPECT_EQ(button.font().weight(), QFont::Medium);
    const double text = QFontMetricsF(button.font()).horizontalAdvance("Done");
    EXPECT_EQ(button.sizeHint(), QSize(static_cast<int>(std::ceil(text)) + 24, button.fontMetrics().height() + 10));
    EXPECT_NEAR(cornerRadius(button), 8, 0.5);
    EXPECT_EQ(fillOf(button), Palette::accent().resolved(false));
    EXPECT_EQ(strokeOf(button), Palette::accent().resolved(false));
}

TEST_F(ControlsTest, AnAccentButtonWritesInWhiteAndTheOthersInTheColourOfText) {
    for (const bool isDark : {false, true}) {
        Palette::setDark(isDark);
        AccentButton accent("Hm");
        EXPECT_EQ(inkOf(accent), QColor(Qt::white));
        const QColor text = over(labelColor().resolved(isDark), Palette::chip().resolved(isDark));
        ChipButton chip("Hm");
        EXPECT_TRUE(isSame(inkOf(chip), text));
        MenuButton menu("Hm", [](QMenu&) {});
        EXPECT_TRUE(isSame(inkOf(menu), text));
    }
}

TEST_F(ControlsTest, ASwitchAndAnOpenListWriteInTheColourOfText) {
    EXPECT_EQ(textFont(TextStyle::body).pixelSize(), 13);
    for (const bool isDark : {false, true}) {
        Palette::setDark(isDark);
        SwitchControl control("Hm");
        control.resize(control.sizeHint());
        const QImage image = enlarged(control);
        QColor strongest(0, 0, 0, 0);
        for (int x = 0; x < 8 * control.fontMetrics().horizontalAdvance("Hm"); ++x)
            if (const QColor color = image.pixelColor(x, image.height() / 2); color.alpha() > strongest.alpha())
                strongest = color;
        EXPECT_TRUE(isSame(strongest, labelColor().resolved(isDark)));
        EXPECT_EQ(widgetPalette().color(QPalette::Text), labelColor().resolved(isDark));
        EXPECT_EQ(widgetPalette().color(QPalette::HighlightedText), QColor(Qt::white));
        EXPECT_EQ(widgetPalette().color(QPalette::Disabled, QPalette::Text), Palette::muted().resolved(isDark));
    }
}

TEST_F(ControlsTest, APressedButtonIsTranslucentAsAWhole) {
    AccentButton button("Done");
    button.setDown(true);
    QColor expected = Palette::accent().resolved(false);
    expected.setAlphaF(0.7F);
    expectNear(fillOf(button), expected);
    button.setDown(false);
    EXPECT_EQ(fillOf(button).alpha(), 255);
}

TEST_F(ControlsTest, ADisabledButtonIsDimmedAndSilent) {
    ChipButton chip("Layouts");
    QSignalSpy clicks(&chip, &QAbstractButton::clicked);
    chip.setEnabled(false);
    EXPECT_LT(fillOf(chip).alpha(), 150);
    QTest::mouseClick(&chip, Qt::LeftButton);
    QTest::keyClick(&chip, Qt::Key_Space);
    EXPECT_EQ(clicks.count(), 0);
}

TEST_F(ControlsTest, SpaceAndReturnPressAButtonOnce) {
    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter}) {
        ChipButton chip("Layouts");
        QSignalSpy clicks(&chip, &QAbstractButton::clicked);
        QTest::keyClick(&chip, key);
        EXPECT_EQ(clicks.count(), 1);
    }
}

TEST_F(ControlsTest, ATitleIsPlainText) {
    const ChipButton chip("Ups & <b>Downs</b>");
    EXPECT_TRUE(chip.shortcut().isEmpty());
    EXPECT_EQ(chip.accessibleName(), "Ups & <b>Downs</b>");
    const PaletteLabel label("Ups & <b>Downs</b>");
    EXPECT_EQ(label.sizeHint().width(),
              QFontMetrics(label.font()).size(0, QStringLiteral("Ups & <b>Downs</b>")).width());
}

TEST_F(ControlsTest, ANewTitleChangesTheSizeAndTheName) {
    ChipButton chip("A");
    const int before = chip.sizeHint().width();
    chip.setTitle("A longer title");
    EXPECT_GT(chip.sizeHint().width(), before);
    EXPECT_EQ(chip.accessibleName(), "A longer title");
    chip.setAccessibleName("Name of its own");
    chip.setTitle("B");
    EXPECT_EQ(chip.accessibleName(), "Name of its own");
}

TEST_F(ControlsTest, TheRingShowsTheFocusOfTheKeyboardOnly) {
    QWidget window;
    auto* const layout = new QHBoxLayout(&window);
    auto* const first = new ChipButton("First");
    auto* const second = new ChipButton("Second");
    layout->addWidget(first);
    layout->addWidget(second);
    window.show();
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window, 10000));
    const auto ringed = [&]() -> QWidget* {
        for (const QFocusFrame* const frame : window.findChildren<QFocusFrame*>())
            if (frame->isVisible()) return frame->widget();
        return nullptr;
    };
    EXPECT_EQ(window.focusWidget(), first);
    EXPECT_EQ(ringed(), nullptr) << "the window put it there";
    QTest::keyClick(first, Qt::Key_Tab);
    EXPECT_EQ(ringed(), second);
    QTest::keyClick(second, Qt::Key_Backtab);
    EXPECT_EQ(ringed(), first);
    first->clearFocus();
    EXPECT_EQ(ringed(), nullptr);
    first->setFocus(Qt::MouseFocusReason);
    EXPECT_EQ(ringed(), nullptr);
}

TEST_F(ControlsTest, AClickLeavesTheFocusWhereItIs) {
    QWidget window;
    auto* const layout = new QHBoxLayout(&window);
    auto* const first = new ChipButton("First");
    auto* const second = new ChipButton("Second");
    layout->addWidget(first);
    layout->addWidget(second);
    window.show();
    first->setFocus(Qt::TabFocusReason);
    QTest::mouseClick(second, Qt::LeftButton);
    EXPECT_EQ(window.focusWidget(), first);
}

TEST_F(ControlsTest, ASwitchIsTheAccentColourWhileOn) {
    SwitchControl control("Active");
    const auto track = [&] {
        const QImage image = painted(control);
        return image.pixelColor(image.width() - (control.isChecked() ? 30 : 4), image.height() / 2);
    };
    EXPECT_NE(track(), Palette::accent().resolved(false));
    control.setChecked(true);
    EXPECT_EQ(track(), Palette::accent().resolved(false));
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&control)->role(), QAccessible::CheckBox);
}

TEST_F(ControlsTest, IconsAreDrawnAfreshAtEachScale) {
    for (const Icon icon : {Icon::trash, Icon::chevronUp, Icon::chevronDown, Icon::minusCircle}) {
        IconButton button(icon, "Name");
        const QImage once = painted(button, 1);
        const QImage twice = painted(button, 2);
        EXPECT_NE(once.scaled(twice.size()), twice);
        int solid = 0;
        for (int y = 0; y < twice.height(); ++y)
            for (int x = 0; x < twice.width(); ++x)
                solid += twice.pixelColor(x, y).alpha() == 255;
        EXPECT_GT(solid, 10) << "no line is wholly a blur";
    }
}

TEST_F(ControlsTest, AnIconIsMuted) {
    IconButton button(Icon::minusCircle, "Remove");
    const QImage image = painted(button, 4);
    EXPECT_EQ(image.pixelColor(image.width() / 2, image.height() / 2), Palette::muted().resolved(false));
}

TEST_F(ControlsTest, ACardPadsItsContentBy14Points) {
    Card card;
    auto* const content = new QWidget;
    content->setFixedSize(100, 30);
    card.makeColumn(6)->addWidget(content);
    EXPECT_EQ(card.sizeHint(), QSize(128, 58));
    EXPECT_EQ(card.radius(), 12);
    EXPECT_EQ(card.fill(), Palette::card());
    EXPECT_EQ(card.stroke(), Palette::border());
}

TEST_F(ControlsTest, ASegmentedPickerIsOneStopWithRadioButtons) {
    SegmentedPicker picker({"Solid", "Glass"});
    picker.show();
    QAbstractButton& solid = button(picker, "Solid");
    QAbstractButton& glass = button(picker, "Glass");
    picker.setCurrentIndex(0);
    QSignalSpy chosen(&picker, &SegmentedPicker::chosen);
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&solid)->role(), QAccessible::RadioButton);
    picker.setCurrentIndex(1);
    EXPECT_EQ(chosen.count(), 0);
    EXPECT_TRUE(glass.isChecked());
    EXPECT_FALSE(solid.focusPolicy() & Qt::TabFocus);
    EXPECT_TRUE(glass.focusPolicy() & Qt::TabFocus);
}

TEST_F(ControlsTest, ASliderIsContinuousAndIgnoresTheWheel) {
    PaletteSlider slider;
    slider.resize(200, 20);
    slider.setValue(0.123456789);
    EXPECT_EQ(slider.value(), 0.123456789);
    slider.setValue(7);
    EXPECT_EQ(slider.value(), 1);
    QWheelEvent wheel(QPointF(5, 5), QPointF(5, 5), {}, QPoint(0, 120), Qt::NoButton, {}, Qt::NoScrollPhase, false);
    QApplication::sendEvent(&slider, &wheel);
    EXPECT_FALSE(wheel.isAccepted());
    EXPECT_EQ(slider.value(), 1);
}

TEST_F(ControlsTest, AHeldKnobDoesNotJumpToTheMouse) {
    PaletteSlider slider;
    slider.resize(200, 20);
    slider.setValue(0.5);
    QSignalSpy moved(&slider, &PaletteSlider::moved);
    const int x = 100 + 5;  // the knob's middle is at 100
    QTest::mousePress(&slider, Qt::LeftButton, {}, QPoint(x, 10));
    EXPECT_NEAR(slider.value(), 0.5, 0.005);
    QTest::mouseMove(&slider, QPoint(x + 18, 10));
    EXPECT_NEAR(slider.value(), 0.5 + 18.0 / 184, 0.005);
    QTest::mouseMove(&slider, QPoint(5000, 10));
    EXPECT_EQ(slider.value(), 1);
}

TEST_F(ControlsTest, AnElidedLabelTellsItsWholeTextInATooltip) {
    PaletteLabel label("A name that is far too long for its column");
    label.setElided(true);
    label.resize(60, 20);
    label.show();
    QHelpEvent help(QEvent::ToolTip, QPoint(5, 5), label.mapToGlobal(QPoint(5, 5)));
    QApplication::sendEvent(&label, &help);
    EXPECT_EQ(QToolTip::text(), label.text());
    label.resize(label.sizeHint());
    QApplication::sendEvent(&label, &help);
    QToolTip::hideText();
}

TEST_F(ControlsTest, ARightToLeftNameStartsAtTheColumnsLeftEdge) {
    PaletteLabel label("עברית");
    label.resize(200, 20);
    const QImage image = label.grab().toImage();
    const auto isInked = [&](int from, int to) {
        const QColor ground = image.pixelColor(199, 0);
        for (int x = from; x < to; ++x)
            for (int y = 0; y < image.height(); ++y)
                if (image.pixelColor(x, y) != ground) return true;
        return false;
    };
    EXPECT_TRUE(isInked(0, 60));
    EXPECT_FALSE(isInked(100, 200));
}

TEST_F(ControlsTest, AMenuButtonFillsItsMenuAnewEachTime) {
    int filled = 0;
    MenuButton button("Add source ▾", [&](QMenu& menu) { menu.addAction(QString::number(++filled)); });
    button.show();
    EXPECT_EQ(button.sizeHint().height(), button.fontMetrics().height() + 8);
    EXPECT_NEAR(cornerRadius(button), 7, 0.5);
    QTest::mouseClick(&button, Qt::LeftButton);
    QMenu* const menu = button.findChild<QMenu*>();
    ASSERT_NE(menu, nullptr);
    EXPECT_TRUE(menu->isVisible());
    EXPECT_EQ(menu->palette().color(QPalette::Window), Palette::card().resolved(false));
    menu->close();
    EXPECT_FALSE(button.isDown());
    QTest::keyClick(&button, Qt::Key_Space);
    EXPECT_EQ(filled, 2);
}

TEST_F(ControlsTest, MenusTakeTheColoursOfTheMoment) {
    EXPECT_EQ(widgetPalette().color(QPalette::Base), Palette::card().light);
    Palette::setDark(true);
    EXPECT_EQ(widgetPalette().color(QPalette::Base), Palette::card().dark);
    EXPECT_EQ(widgetPalette().color(QPalette::Text), labelColor().dark);
}

}  // namespace
}  // namespace quillmere
