#pragma once

#include <QScrollBar>

namespace quillmere {

/// A slim scroll bar in the muted colour, without arrows.
class PaletteScrollBar : public QScrollBar {
public:
    explicit PaletteScrollBar(Qt::Orientation orientation, QWidget* parent = nullptr);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace quillmere
