#pragma once

#include "Quillmere/Controls/TextButton.h"

namespace quillmere {

/// How a window's main button looks: white text on the accent colour.
struct AccentButtonStyle {
    TextButton::Metrics metrics() const;
    TextButton::Colors colors() const;
};

/// A window's main button.
class AccentButton : public TextButton {
public:
    explicit AccentButton(const QString& title, QWidget* parent = nullptr);

protected:
    Colors colors() const override;
};

}  // namespace quillmere
