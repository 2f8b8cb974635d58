#pragma once

#include "Quillmere/Controls/ControlButton.h"

namespace quillmere {

/// A text with a sliding switch after it, in the accent colour while on.
/// `clicked` tells the user's change; `setChecked` is silent towards it.
class SwitchControl : public ControlButton {
public:
    explicit SwitchControl(const QString& title, QWidget* parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintFace(QPainter& painter) override;
};

}  // namespace quillmere
