#include "Quillmere/Controls/ControlButton.h"

#include "Quillmere/Controls/FocusRing.h"

#include <QKeyEvent>
#include <QKeySequence>
#include <QPainter>
#include <QPixmap>

namespace quillmere {

namespace {
constexpr double pressedOpacity = 0.7;
constexpr double disabledOpacity = 0.4;
}  // namespace

ControlButton::ControlButton(const QString& title, double radius, QWidget* parent)
    : QAbstractButton(parent), radius_(radius) {
    setFocusPolicy(Qt::TabFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setTitle(title);
}

void ControlButton::setTitle(const QString& title) {
    const bool isNamedByTitle = accessibleName() == title_;
    title_ = title;
    setText(title);
    setShortcut(QKeySequence());
    if (isNamedByTitle) setAccessibleName(title);
    updateGeometry();
    update();
}

QAccessible::Role ControlButton::accessibleRole() const {
    if (role_ != QAccessible::NoRole) return role_;
    if (!isCheckable()) return QAccessible::Button;
    return autoExclusive() ? QAccessible::RadioButton : QAccessible::CheckBox;
}

double ControlButton::opacity() const {
    if (!isEnabled()) return disabledOpacity;
    return isDown() ? pressedOpacity : 1;
}

void ControlButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (opacity() >= 1) {
        paintFace(painter);
        return;
    }
    // the parts overlap: fading each by itself would let the fill show through the text
    QPixmap face(size() * devicePixelRatioF());
    face.setDevicePixelRatio(devicePixelRatioF());
    face.fill(Qt::transparent);
    QPainter facePainter(&face);
    facePainter.setRenderHint(QPainter::Antialiasing);
    facePainter.setFont(font());
    paintFace(facePainter);
    facePainter.end();
    painter.setOpacity(opacity());
    painter.drawPixmap(0, 0, face);
}

void ControlButton::keyPressEvent(QKeyEvent* event) {
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isReturn && !event->isAutoRepeat())
        click();
    else
        QAbstractButton::keyPressEvent(event);
}

void ControlButton::focusInEvent(QFocusEvent* event) {
    QAbstractButton::focusInEvent(event);
    FocusRing::focusIn(*this, event->reason(), radius_);
}

void ControlButton::focusOutEvent(QFocusEvent* event) {
    QAbstractButton::focusOutEvent(event);
    FocusRing::focusOut(*this, event->reason());
}

}  // namespace quillmere
