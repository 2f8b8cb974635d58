#pragma once

#include "Quillmere/Controls/ControlButton.h"
#include "Quillmere/Controls/TextStyle.h"
#include "Quillmere/Palette.h"

namespace quillmere {

/// A button that is a line of text on a rounded rectangle. It asks for just
/// the size of both; narrower, the text ends in an ellipsis.
class TextButton : public ControlButton {
public:
    /// Lengths in points.
    struct Metrics {
        TextStyle text = TextStyle::body;
        int verticalPadding = 5;
        int horizontalPadding = 12;
        double radius = 8;
    };

    TextButton(const QString& title, const Metrics& metrics, QWidget* parent);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    struct Colors {
        DynamicColor fill;
        DynamicColor stroke;  ///< clear: no outline; else 1 point, inside the edge
        DynamicColor text;
    };
    virtual Colors colors() const = 0;
    void setMetrics(const Metrics& metrics);
    const Metrics& metrics() const { return metrics_; }

    void paintFace(QPainter& painter) override;

private:
    Metrics metrics_;
};

}  // namespace quillmere
