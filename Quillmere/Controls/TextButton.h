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

    struct Colors {
        DynamicColor fill;
        DynamicColor stroke;  ///< clear: no outline; else 1 point, inside the edge
        DynamicColor text;
    };

    TextButton(const QString& title, const Metrics& metrics, QWidget* parent);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    virtual Colors colors() const = 0;

    /// The room that the title takes, in points.
    virtual double textWidth() const;
    /// Draws the title in the middle of `line`, with the painter's pen.
    virtual void paintText(QPainter& painter, const QRectF& line) const;

    void paintFace(QPainter& painter) override;

private:
    Metrics metrics_;
};

}  // namespace quillmere
