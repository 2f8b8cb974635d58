#pragma once

#include "Quillmere/Controls/TextStyle.h"
#include "Quillmere/Palette.h"

#include <QLabel>

namespace quillmere {

/// Plain text in a palette colour, which follows dark and light by itself.
class PaletteLabel : public QLabel {
public:
    explicit PaletteLabel(const QString& text, TextStyle style = TextStyle::body,
                          const DynamicColor& color = labelColor(), QWidget* parent = nullptr);

    const DynamicColor& color() const { return color_; }

    /// One line that may be squeezed: it then ends in an ellipsis and tells the
    /// whole text in a tooltip.
    void setElided(bool elided);

    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    DynamicColor color_;
    bool elided_ = false;
};

}  // namespace quillmere
