#include "Quillmere/Controls/SwitchControl.h"

#include "Quillmere/Controls/TextStyle.h"
#include "Quillmere/Palette.h"

#include <QPainter>

namespace quillmere {

namespace {

constexpr double trackWidth = 34;
constexpr double trackHeight = 20;
constexpr double knobInset = 2;
constexpr int gap = 8;
constexpr int margin = 2;
constexpr double offAlpha = 0.65;  // three to one against a card, light and dark

}  // namespace

SwitchControl::SwitchControl(const QString& title, QWidget* parent) : ControlButton(title, 6, parent) {
    setCheckable(true);
    setFont(textFont(TextStyle::body));
}

QSize SwitchControl::sizeHint() const {
    const int height = qMax(fontMetrics().height(), static_cast<int>(trackHeight));
    return {fontMetrics().horizontalAdvance(title()) + gap + static_cast<int>(trackWidth), height + 2 * margin};
}

void SwitchControl::paintFace(QPainter& painter) {
    const bool isDark = Palette::isDark();
    const QRectF track(width() - trackWidth, (height() - trackHeight) / 2, trackWidth, trackHeight);

    painter.setPen(labelColor().resolved(isDark));
    const QRect line = rect().adjusted(0, 0, -static_cast<int>(trackWidth) - gap, 0);
    painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, title());

    painter.setPen(Qt::NoPen);
    painter.setBrush((isChecked() ? Palette::accent() : Palette::muted().withAlpha(offAlpha)).resolved(isDark));
    painter.drawRoundedRect(track, trackHeight / 2, trackHeight / 2);
    const double knob = trackHeight - 2 * knobInset;
    const double x = isChecked() ? track.right() - knobInset - knob : track.left() + knobInset;
    painter.setBrush(Qt::white);
    painter.drawEllipse(QRectF(x, track.top() + knobInset, knob, knob));
}

}  // namespace quillmere
