#include "Quillmere/Controls/AccentButtonStyle.h"

namespace quillmere {

AccentButton::AccentButton(const QString& title, QWidget* parent)
    : TextButton(title, {.text = TextStyle::button}, parent) {}

TextButton::Colors AccentButton::colors() const {
    return {Palette::accent(), Palette::clear(), {Qt::white, Qt::white}};
}

}  // namespace quillmere
