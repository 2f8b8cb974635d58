#include "Quillmere/Controls/PaletteScrollArea.h"

#include "Quillmere/Controls/PaletteScrollBar.h"

#include <QVBoxLayout>

namespace quillmere {

PaletteScrollArea::PaletteScrollArea(int spacing, QWidget* parent) : QScrollArea(parent) {
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setFocusPolicy(Qt::NoFocus);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBar(new PaletteScrollBar(this));
    viewport()->setAutoFillBackground(false);

    auto* const content = new QWidget;
    column_ = new QVBoxLayout(content);
    column_->setContentsMargins(0, 0, 0, 0);
    column_->setSpacing(spacing);
    column_->setAlignment(Qt::AlignTop);
    setWidget(content);
    content->setAutoFillBackground(false);
}

}  // namespace quillmere
