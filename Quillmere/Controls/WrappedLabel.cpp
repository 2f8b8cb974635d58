#include "Quillmere/Controls/WrappedLabel.h"

#include <QPainter>
#include <QTextLayout>

#include <cmath>

namespace quillmere {

namespace {

// Neither QLabel nor QPainter's flags can break a word only where it must be.
QTextOption option() {
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    option.setTextDirection(Qt::LayoutDirectionAuto);
    return option;
}

/// Breaks the text into lines; their height in all.
qreal layOut(QTextLayout& layout, int width) {
    layout.setTextOption(option());
    qreal height = 0;
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        line.setPosition({0, height});
        height += line.height();
    }
    layout.endLayout();
    return height;
}

/// What a layout takes for the end of a line.
QString withLineSeparators(QString text) {
    return text.replace(QLatin1Char('\n'), QChar::LineSeparator);
}

}  // namespace

WrappedLabel::WrappedLabel(const QString& text, TextStyle style, const DynamicColor& color, QWidget* parent)
    : PaletteLabel(text, style, color, parent) {
    setWordWrap(true);
}

QSize WrappedLabel::minimumSizeHint() const {
    return {0, fontMetrics().height()};
}

int WrappedLabel::heightForWidth(int width) const {
    QTextLayout layout(withLineSeparators(text()), font());
    return static_cast<int>(std::ceil(layOut(layout, width)));
}

void WrappedLabel::paintEvent(QPaintEvent* /*event*/) {
    QTextLayout layout(withLineSeparators(text()), font());
    layOut(layout, width());
    QPainter painter(this);
    painter.setPen(color().resolved(Palette::isDark()));
    layout.draw(&painter, {});
}

}  // namespace quillmere
