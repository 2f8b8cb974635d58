#include "Quillmere/Controls/CardStyle.h"

#include <QVBoxLayout>

namespace quillmere {

Card::Card(QWidget* parent) : PlateView(Palette::card(), Palette::border(), CardStyle::cornerRadius, parent) {
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

QVBoxLayout* Card::makeColumn(int spacing) {
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(CardStyle::padding, CardStyle::padding, CardStyle::padding, CardStyle::padding);
    column->setSpacing(spacing);
    return column;
}

}  // namespace quillmere
