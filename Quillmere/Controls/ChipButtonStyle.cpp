#include "Quillmere/Controls/ChipButtonStyle.h"

namespace quillmere {

TextButton::Metrics ChipButtonStyle::metrics() const {
    return {.text = monospaced ? TextStyle::monospaced : TextStyle::body};
}

TextButton::Colors ChipButtonStyle::colors() const {
    if (selected) return {Palette::selection(), Palette::accent(), labelColor()};
    return {Palette::chip(), Palette::border(), labelColor()};
}

ChipButton::ChipButton(const QString& title, ChipButtonStyle style, QWidget* parent)
    : TextButton(title, style.metrics(), parent), style_(style) {}

void ChipButton::setSelected(bool selected) {
    if (style_.selected == selected) return;
    style_.selected = selected;
    update();
}

TextButton::Colors ChipButton::colors() const {
    return style_.colors();
}

}  // namespace quillmere
