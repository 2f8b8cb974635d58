#include "Quillmere/Controls/AccentButtonStyle.h"

namespace quillmere {

TextButton::Metrics AccentButtonStyle::metrics() const {
    return {.text = TextStyle::button};
}

TextButton::Colors AccentButtonStyle::colors() const {
    return {Palette::accent(), Palette::clear(), {Qt::white, Qt::white}};
}

AccentButton::AccentButton(const QString& title, QWidget* parent)
    : TextButton(title, AccentButtonStyle().metrics(), parent) {}

TextButton::Colors AccentButton::colors() const {
    return AccentButtonStyle().colors();
}

}  // namespace quillmere
