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

/// Return presses the button as Space does: on the release, so that a key
/// still held when the press has an effect does not go into that effect.
QKeyEvent withReturnAsSpace(const QKeyEvent& event) {
    const bool isReturn = event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
    return {event.type(),         isReturn ? static_cast<int>(Qt::Key_Space) : event.key(),
            event.modifiers(),    event.text(),
            event.isAutoRepeat(), static_cast<quint16>(event.count())};
}

}  // namespace

ControlButton::ControlButton(const QString& title, double radius, QWidget* parent)
    : QAbstractButton(parent), radius_(radius) {
    setFocusPolicy(Qt::TabFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setTitle(title);
}

void ControlButton::setTitle(const QString& title) {
    if (title == title_) return;
    const bool isNamedByTitle = accessibleName() == title_;
    title_ = title;
    setText(title);
    setShortcut(QKeySequence());
    if (isNamedByTitle) setAccessibleName(title);
    updateGeometry();
    update();
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
    QKeyEvent key = withReturnAsSpace(*event);
    QAbstractButton::keyPressEvent(&key);
    event->setAccepted(key.isAccepted());
}

void ControlButton::keyReleaseEvent(QKeyEvent* event) {
    QKeyEvent key = withReturnAsSpace(*event);
    QAbstractButton::keyReleaseEvent(&key);
    event->setAccepted(key.isAccepted());
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
