#include "Quillmere/Updates/UpdateAlert.h"

#include "Quillmere/Controls/AccentButtonStyle.h"
#include "Quillmere/Controls/WrappedLabel.h"
#include "Quillmere/Icons/AppIcon.h"

#include <QAccessible>
#include <QGuiApplication>
#include <QPainter>
#include <QScreen>
#include <QVBoxLayout>

namespace quillmere {

namespace {

constexpr Qt::WindowFlags alertFlags =
    Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint;

// In points; the same as in the program's other messages.
constexpr int alertWidth = 320;
constexpr int padding = 24;
constexpr int spacing = 14;

/// Not the desktop's message box, which takes its colours from the desktop's
/// theme and not from the palette.
class AlertDialog : public QDialog {
public:
    AlertDialog(const QString& message, const QString& informativeText) : QDialog(nullptr, alertFlags) {
        setWindowTitle(QStringLiteral("Quillmere"));
        setWindowIcon(AppIcon::make());
        setAttribute(Qt::WA_DeleteOnClose);
        setAccessibleName(message);
        setAccessibleDescription(informativeText);
        auto* const button = new AccentButton(QStringLiteral("OK"));
        connect(button, &QAbstractButton::clicked, this, &QDialog::accept);
        auto* const column = new QVBoxLayout(this);
        column->setContentsMargins(padding, padding, padding, padding);
        column->setSpacing(spacing);
        column->addWidget(new WrappedLabel(message, TextStyle::title));
        column->addWidget(new WrappedLabel(informativeText, TextStyle::body, Palette::muted()));
        column->addWidget(button, 0, Qt::AlignLeading);
        setFixedSize(alertWidth, column->heightForWidth(alertWidth));
        button->setFocus();
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter(this).fillRect(rect(), Palette::window().resolved(Palette::isDark()));
    }

    void showEvent(QShowEvent* event) override {
        QDialog::showEvent(event);
        QAccessibleEvent alert(this, QAccessible::Alert);
        QAccessible::updateAccessibility(&alert);
    }
};

}  // namespace

UpdateAlert::~UpdateAlert() {
    delete dialog_;
}

void UpdateAlert::show(const std::string& message, const std::string& informativeText) {
    delete dialog_;
    dialog_ = new AlertDialog(QString::fromStdString(message), QString::fromStdString(informativeText));
    QRect frame(QPoint(), dialog_->size());
    frame.moveCenter(QGuiApplication::primaryScreen()->availableGeometry().center());
    dialog_->move(frame.topLeft());
    // Modal without an event loop of its own, so that quitting stays possible.
    dialog_->setWindowModality(Qt::ApplicationModal);
    dialog_->show();
    workspace_.bringToFront(*dialog_);
}

}  // namespace quillmere
