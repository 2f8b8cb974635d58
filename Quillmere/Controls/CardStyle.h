#pragma once

#include "Quillmere/Palette.h"

class QVBoxLayout;

namespace quillmere {

/// How a card looks: its content on an outlined rectangle. In points.
struct CardStyle {
    static constexpr double cornerRadius = 12;
    static constexpr int padding = 14;
};

/// A card, as high as its content.
class Card : public PlateView {
public:
    explicit Card(QWidget* parent = nullptr);

    /// The content: a column from the leading edge, `spacing` points apart.
    /// Called once; the card owns it.
    QVBoxLayout* makeColumn(int spacing);
};

}  // namespace quillmere
