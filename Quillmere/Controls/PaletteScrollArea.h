#pragma once

#include <QScrollArea>

class QVBoxLayout;

namespace quillmere {

/// A column of widgets that scrolls vertically on the window's background.
class PaletteScrollArea : public QScrollArea {
public:
    /// `spacing` in points, between the widgets.
    explicit PaletteScrollArea(int spacing, QWidget* parent = nullptr);

    /// The column; whatever is added to it is owned by the area. A stretch
    /// under the last widget keeps the column at the top.
    QVBoxLayout& column() const { return *column_; }

private:
    QVBoxLayout* column_;
};

}  // namespace quillmere
