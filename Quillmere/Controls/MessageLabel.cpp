#include "Quillmere/Controls/MessageLabel.h"

#include <QAccessibleWidget>

namespace quillmere {

namespace {

/// As plain text it would be read out only to who goes looking for it.
class AccessibleMessage : public QAccessibleWidget {
public:
    explicit AccessibleMessage(MessageLabel* label) : QAccessibleWidget(label, QAccessible::AlertMessage) {}

    QString text(QAccessible::Text kind) const override {
        if (kind == QAccessible::Name) return static_cast<MessageLabel*>(widget())->text();
        return QAccessibleWidget::text(kind);
    }
};

QAccessibleInterface* accessibleInterface(const QString&, QObject* object) {
    auto* const label = qobject_cast<MessageLabel*>(object);
    return label ? new AccessibleMessage(label) : nullptr;
}

/// Dark enough on a light card, light enough on a dark one, for small text.
const DynamicColor& red() {
    static const DynamicColor color{QColor(200, 30, 20), QColor(255, 105, 97)};
    return color;
}

}  // namespace

MessageLabel::MessageLabel(QWidget* parent) : PaletteLabel({}, TextStyle::caption, red(), parent) {
    static const bool isInstalled = (QAccessible::installFactory(accessibleInterface), true);
    Q_UNUSED(isInstalled);
    hide();
}

void MessageLabel::setMessage(const QString& message) {
    const bool isAnotherText = text() != message && isVisible();
    setText(message);
    setVisible(!message.isEmpty());
    if (message.isEmpty()) return;
    if (isAnotherText) {
        QAccessibleEvent renamed(this, QAccessible::NameChanged);
        QAccessible::updateAccessibility(&renamed);
    }
    QAccessibleEvent alert(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}

}  // namespace quillmere
