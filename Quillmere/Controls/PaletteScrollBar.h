#pragma once

#include <QScrollBar>

namespace quillmere {

/// A slim vertical scroll bar in the muted colour, without arrows.
class PaletteScrollBar : public QScrollBar {
public:
    explicit PaletteScrollBar(QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace quillmere
