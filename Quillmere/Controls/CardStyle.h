#pragma once

#include "Quillmere/Palette.h"

class QVBoxLayout;

namespace quillmere {

/// A card: its content, 14 points from the edge of an outlined rectangle with
/// a corner radius of 12 points.
class Card : public PlateView {
public:
    explicit Card(QWidget* parent = nullptr);

    /// The content: a column from the leading edge, `spacing` points apart.
    /// Called once; the card owns it.
    QVBoxLayout* makeColumn(int spacing);
};

}  // namespace quillmere
