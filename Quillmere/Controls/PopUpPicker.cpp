#include "Quillmere/Controls/PopUpPicker.h"

#include "Quillmere/Controls/FocusRing.h"
#include "Quillmere/Controls/TextStyle.h"
#include "Quillmere/Controls/WidgetPalette.h"
#include "Quillmere/Palette.h"

#include <QAbstractItemView>
#include <QFocusEvent>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>

namespace quillmere {

namespace {
constexpr double cornerRadius = 8;
constexpr int verticalPadding = 5;
constexpr int horizontalPadding = 12;
constexpr int arrows = 18;
}  // namespace

PopUpPicker::PopUpPicker(const QStringList& titles, QWidget* parent) : QComboBox(parent) {
    setFont(textFont(TextStyle::body));
    setFocusPolicy(Qt::TabFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    addItems(titles);
}

QSize PopUpPicker::sizeHint() const {
    int text = 0;
    for (int i = 0; i < count(); ++i)
        text = std::max(text, fontMetrics().horizontalAdvance(itemText(i)));
    return {text + 2 * horizontalPadding + arrows, fontMetrics().height() + 2 * verticalPadding};
}

void PopUpPicker::showPopup() {
    view()->setPalette(widgetPalette());
    view()->window()->setPalette(widgetPalette());
    QComboBox::showPopup();
}

void PopUpPicker::paintEvent(QPaintEvent*) {
    const bool isDark = Palette::isDark();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Palette::border().resolved(isDark), 1));
    painter.setBrush(Palette::chip().resolved(isDark));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), cornerRadius - 0.5, cornerRadius - 0.5);

    painter.setPen(labelColor().resolved(isDark));
    const QRect line = rect().adjusted(horizontalPadding, 0, -horizontalPadding - arrows, 0);
    painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, currentText());

    painter.setPen(QPen(Palette::muted().resolved(isDark), 1.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.setBrush(Qt::NoBrush);
    const QPointF middle(width() - horizontalPadding - 3.0, height() / 2.0);
    for (const double up : {-1.0, 1.0})
        painter.drawPolyline(
            QPolygonF{middle + QPointF(-3, up * 2.5), middle + QPointF(0, up * 5.5), middle + QPointF(3, up * 2.5)});
}

void PopUpPicker::wheelEvent(QWheelEvent* event) {
    event->ignore();
}

void PopUpPicker::keyPressEvent(QKeyEvent* event) {
    const bool opens = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (opens)
        showPopup();
    else
        QComboBox::keyPressEvent(event);
}

void PopUpPicker::focusInEvent(QFocusEvent* event) {
    QComboBox::focusInEvent(event);
    FocusRing::focusIn(*this, event->reason(), cornerRadius);
}

void PopUpPicker::focusOutEvent(QFocusEvent* event) {
    QComboBox::focusOutEvent(event);
    FocusRing::focusOut(*this, event->reason());
}

}  // namespace quillmere
