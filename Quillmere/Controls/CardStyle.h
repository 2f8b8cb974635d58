#pragma once

#include "Quillmere/Palette.h"

namespace quillmere {

/// A card: its content, 14 points from the edge of an outlined rectangle with
/// a corner radius of 12 points.
class Card : public PlateView {
public:
    explicit Card(QWidget* parent = nullptr);
};

}  // namespace quillmere
