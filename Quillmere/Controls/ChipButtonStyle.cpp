#include "Quillmere/Controls/ChipButtonStyle.h"

namespace quillmere {

ChipButton::ChipButton(const QString& title, ChipButtonStyle style, QWidget* parent)
    : TextButton(title, {.text = style.monospaced ? TextStyle::monospaced : TextStyle::body}, parent), style_(style) {}

void ChipButton::setSelected(bool selected) {
    if (style_.selected == selected) return;
    style_.selected = selected;
    update();
}

TextButton::Colors ChipButton::colors() const {
    if (style_.selected) return {Palette::selection(), Palette::accent(), labelColor()};
    return {Palette::chip(), Palette::border(), labelColor()};
}

}  // namespace quillmere
