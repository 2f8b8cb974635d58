#include "Quillmere/Controls/CardStyle.h"

#include <QVBoxLayout>

namespace quillmere {

namespace {
constexpr double cornerRadius = 12;
constexpr int padding = 14;
}  // namespace

Card::Card(QWidget* parent) : PlateView(Palette::card(), Palette::border(), cornerRadius, parent) {
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

QVBoxLayout* Card::makeColumn(int spacing) {
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(padding, padding, padding, padding);
    column->setSpacing(spacing);
    return column;
}

}  // namespace quillmere
