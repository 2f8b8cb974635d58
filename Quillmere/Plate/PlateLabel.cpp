#include "Quillmere/Plate/PlateLabel.h"

#include "Quillmere/Palette.h"

#include <QPainter>

namespace quillmere {

namespace {

// No screen shows as many; measuring a megabyte of text would block a key press.
constexpr qsizetype longestName = 512;

bool breaksLine(QChar character) {
    switch (character.category()) {
        case QChar::Other_Control:
        case QChar::Separator_Line:
        case QChar::Separator_Paragraph:
            return true;
        default:
            return false;
    }
}

QString singleLine(std::string_view name) {
    // A character takes at most four bytes, so this cut never shortens the result.
    const auto head = name.substr(0, longestName * 4);
    auto text = QString::fromUtf8(head.data(), static_cast<qsizetype>(head.size())).left(longestName);
    for (QChar& character : text) {
        if (breaksLine(character)) character = QLatin1Char(' ');
    }
    return text;
}

}  // namespace

PlateLabel::PlateLabel(std::string_view name, const QFont& font, QWidget* parent) : QLabel(parent) {
    setTextFormat(Qt::PlainText);
    setFont(font);
    setText(singleLine(name));
    // QLabel's own accessible name drops what looks like a mnemonic.
    setAccessibleName(text());
    // Not adjustSize, which keeps a parentless widget to two thirds of the screen.
    resize(sizeHint());
}

void PlateLabel::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setPen(labelColor().resolved(Palette::isDark()));
    const bool fits = sizeHint().width() <= width();
    const auto shown = fits ? text() : fontMetrics().elidedText(text(), Qt::ElideRight, width());
    painter.drawText(rect(), Qt::AlignCenter | Qt::TextSingleLine, shown);
}

}  // namespace quillmere
