#pragma once

#include "Quillmere/Controls/TextButton.h"

namespace quillmere {

/// A window's main button: white text on the accent colour.
class AccentButton : public TextButton {
public:
    explicit AccentButton(const QString& title, QWidget* parent = nullptr);

protected:
    Colors colors() const override;
};

}  // namespace quillmere
