#pragma once

#include "Quillmere/Controls/ControlButton.h"

namespace quillmere {

/// The pictures on buttons without text, drawn as lines.
enum class Icon { trash, chevronUp, chevronDown, minusCircle };

/// A borderless button that shows a picture in the muted colour, on a tint
/// under the mouse.
class IconButton : public ControlButton {
public:
    /// `name` is what the button does: for assistive programs.
    IconButton(Icon icon, const QString& name, QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintFace(QPainter& painter) override;
    double opacity() const override;

private:
    Icon icon_;
};

}  // namespace quillmere
