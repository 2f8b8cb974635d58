#include "Quillmere/Controls/PaletteSlider.h"

#include "Quillmere/Controls/FocusRing.h"
#include "Quillmere/Palette.h"

#include <QAccessibleValueInterface>
#include <QAccessibleWidget>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace quillmere {

namespace {

constexpr double knob = 16;
constexpr double track = 4;
constexpr int preferredHeight = 20;
constexpr double arrowStep = 0.01;
constexpr double pageStep = 0.1;

/// Tells assistive programs a percentage: of a fraction most read out only the
/// whole part.
class AccessibleSlider : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    explicit AccessibleSlider(PaletteSlider* slider) : QAccessibleWidget(slider, QAccessible::Slider) {}

    void* interface_cast(QAccessible::InterfaceType type) override {
        if (type == QAccessible::ValueInterface) return static_cast<QAccessibleValueInterface*>(this);
        return QAccessibleWidget::interface_cast(type);
    }

    QVariant currentValue() const override { return slider().value() * 100; }
    void setCurrentValue(const QVariant& value) override { slider().slide(value.toDouble() / 100); }
    QVariant maximumValue() const override { return 100.0; }
    QVariant minimumValue() const override { return 0.0; }
    QVariant minimumStepSize() const override { return arrowStep * 100; }

private:
    PaletteSlider& slider() const { return *static_cast<PaletteSlider*>(widget()); }
};

QAccessibleInterface* accessibleInterface(const QString&, QObject* object) {
    auto* const slider = qobject_cast<PaletteSlider*>(object);
    return slider ? new AccessibleSlider(slider) : nullptr;
}

}  // namespace

PaletteSlider::PaletteSlider(QWidget* parent) : QWidget(parent) {
    static const bool isInstalled = (QAccessible::installFactory(accessibleInterface), true);
    Q_UNUSED(isInstalled);
    setFocusPolicy(Qt::TabFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void PaletteSlider::setValue(double value) {
    value = std::clamp(value, 0.0, 1.0);
    if (value_ == value) return;
    value_ = value;
    QAccessibleValueChangeEvent event(this, value_ * 100);
    QAccessible::updateAccessibility(&event);
    update();
}

void PaletteSlider::slide(double value) {
    const double before = value_;
    setValue(value);
    if (value_ != before) emit moved(value_);
}

double PaletteSlider::position(double value) const {
    return knob / 2 + value * (width() - knob);
}

QSize PaletteSlider::sizeHint() const {
    return {160, preferredHeight};
}

QSize PaletteSlider::minimumSizeHint() const {
    return {80, preferredHeight};
}

void PaletteSlider::paintEvent(QPaintEvent*) {
    const bool isDark = Palette::isDark();
    const double middle = QWidget::height() / 2.0;
    const double x = position(value_);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const QRectF whole(knob / 2, middle - track / 2, width() - knob, track);
    painter.setBrush(Palette::muted().withAlpha(0.35).resolved(isDark));
    painter.drawRoundedRect(whole, track / 2, track / 2);
    painter.setBrush(Palette::accent().resolved(isDark));
    painter.drawRoundedRect(QRectF(whole.topLeft(), QPointF(x, whole.bottom())), track / 2, track / 2);
    painter.setPen(QPen(Palette::muted().resolved(isDark), 1));
    painter.setBrush(Qt::white);
    painter.drawEllipse(QPointF(x, middle), (knob - 1) / 2, (knob - 1) / 2);
}

void PaletteSlider::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    const double offset = event->position().x() - position(value_);
    // a press beside the knob brings it there, one on it must not make it jump
    grip_ = std::abs(offset) <= knob / 2 ? offset : 0;
    drag(event->position().x());
}

void PaletteSlider::mouseMoveEvent(QMouseEvent* event) {
    if (event->buttons() & Qt::LeftButton) drag(event->position().x());
}

void PaletteSlider::drag(double x) {
    slide((x - grip_ - knob / 2) / std::max(1.0, width() - knob));
}

void PaletteSlider::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
        case Qt::Key_Left:
        case Qt::Key_Down:
            slide(value_ - arrowStep);
            break;
        case Qt::Key_Right:
        case Qt::Key_Up:
            slide(value_ + arrowStep);
            break;
        case Qt::Key_PageDown:
            slide(value_ - pageStep);
            break;
        case Qt::Key_PageUp:
            slide(value_ + pageStep);
            break;
        case Qt::Key_Home:
            slide(0);
            break;
        case Qt::Key_End:
            slide(1);
            break;
        default:
            QWidget::keyPressEvent(event);
    }
}

void PaletteSlider::focusInEvent(QFocusEvent* event) {
    QWidget::focusInEvent(event);
    FocusRing::focusIn(*this, event->reason(), knob / 2);
}

void PaletteSlider::focusOutEvent(QFocusEvent* event) {
    QWidget::focusOutEvent(event);
    FocusRing::focusOut(*this, event->reason());
}

}  // namespace quillmere
