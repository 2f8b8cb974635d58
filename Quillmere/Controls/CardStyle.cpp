#include "Quillmere/Controls/CardStyle.h"

namespace quillmere {

namespace {
constexpr double cornerRadius = 12;
constexpr int padding = 14;
}  // namespace

Card::Card(QWidget* parent) : PlateView(Palette::card(), Palette::border(), cornerRadius, parent) {
    setContentsMargins(padding, padding, padding, padding);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

}  // namespace quillmere
