#pragma once

#include "Quillmere/Controls/PaletteLabel.h"

namespace quillmere {

/// Plain text over as many lines as its width needs. A word that is wider than
/// the label, as an address can be, is broken where it must be: it would widen
/// the window otherwise.
class WrappedLabel : public PaletteLabel {
public:
    explicit WrappedLabel(const QString& text, TextStyle style = TextStyle::body,
                          const DynamicColor& color = labelColor(), QWidget* parent = nullptr);

    QSize minimumSizeHint() const override;
    int heightForWidth(int width) const override;

protected:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace quillmere
