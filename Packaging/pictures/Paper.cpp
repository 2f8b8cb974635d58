#include "Packaging/pictures/Paper.h"

#include <QKeyEvent>
#include <QLinearGradient>
#include <QPainter>

namespace quillmere::pictures {

namespace {

const QColor dawn(214, 138, 92);
const QColor dusk(94, 78, 128);
const QColor desk(206, 210, 218);
const QColor sheet(252, 251, 247);
const QColor ink(38, 38, 42);

constexpr int letterSize = 36;
constexpr int margin = 36;
constexpr QRect sheetFrame(310, 130, 660, 540);

}  // namespace

Paper::Paper(Kind kind) : kind_(kind) {
    setWindowTitle(QString::fromLatin1(title));
}

void Paper::keyPressEvent(QKeyEvent* event) {
    text_ += event->text();
    update();
}

void Paper::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    if (kind_ == Kind::wallpaper) {
        QLinearGradient sky(rect().bottomLeft(), rect().topRight());
        sky.setColorAt(0, dawn);
        sky.setColorAt(1, dusk);
        painter.fillRect(rect(), sky);
        return;
    }
    painter.fillRect(rect(), desk);
    painter.fillRect(sheetFrame, sheet);
    QFont font = painter.font();
    font.setPixelSize(letterSize);
    painter.setFont(font);
    painter.setPen(ink);
    const QMargins margins(margin, margin, margin, margin);
    painter.drawText(sheetFrame.marginsRemoved(margins), Qt::AlignLeft | Qt::AlignTop, text_);
}

}  // namespace quillmere::pictures
