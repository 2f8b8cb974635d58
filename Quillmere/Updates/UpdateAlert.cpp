#include "Quillmere/Updates/UpdateAlert.h"

#include "Quillmere/Controls/AccentButtonStyle.h"
#include "Quillmere/Controls/WrappedLabel.h"

#include <QAccessibleWidget>
#include <QKeyEvent>
#include <QVBoxLayout>

namespace quillmere {

namespace {

// In points; the same as in the program's other messages.
constexpr int alertWidth = 320;
constexpr int padding = 24;
constexpr int spacing = 14;

/// The message, the text under it, and the button that has read them.
QWidget* makeContent(const QString& message, const QString& informativeText, QAbstractButton* button) {
    auto* const content = new QWidget;
    auto* const column = new QVBoxLayout(content);
    column->setContentsMargins(padding, padding, padding, padding);
    column->setSpacing(spacing);
    column->addWidget(new WrappedLabel(message, TextStyle::title));
    column->addWidget(new WrappedLabel(informativeText, TextStyle::body, Palette::muted()));
    column->addWidget(button, 0, Qt::AlignLeading);
    content->setFixedSize(alertWidth, column->heightForWidth(alertWidth));
    return content;
}

/// Not the desktop's message box, which takes its colours from the desktop's
/// theme and not from the palette.
class Alert : public Window {
public:
    Alert(const QString& message, const QString& informativeText)
        : Alert(message, informativeText, new AccentButton(QStringLiteral("OK"))) {}

protected:
    void keyPressEvent(QKeyEvent* event) override {
        if (event->matches(QKeySequence::Cancel))
            close();
        else
            Window::keyPressEvent(event);
    }

    void showEvent(QShowEvent* event) override {
        Window::showEvent(event);
        QAccessibleEvent alert(this, QAccessible::Alert);
        QAccessible::updateAccessibility(&alert);
    }

private:
    Alert(const QString& message, const QString& informativeText, AccentButton* button)
        : Window(Kind::alert, QStringLiteral("Quillmere"), makeContent(message, informativeText, button)) {
        setAttribute(Qt::WA_DeleteOnClose);
        // Modal without an event loop of its own, so that quitting stays possible.
        setWindowModality(Qt::ApplicationModal);
        setAccessibleName(message);
        setAccessibleDescription(informativeText);
        connect(button, &QAbstractButton::clicked, this, &QWidget::close);
        button->setFocus();
    }
};

/// Else it would be a window like any other to assistive programs. Some versions
/// of Qt ask while the window is still being made, and is no Alert yet.
QAccessibleInterface* accessibleInterface(const QString&, QObject* object) {
    auto* const window = dynamic_cast<Window*>(object);
    const bool isAlert = window != nullptr && window->windowType() == Qt::Dialog;
    return isAlert ? new QAccessibleWidget(window, QAccessible::Dialog) : nullptr;
}

}  // namespace

UpdateAlert::UpdateAlert(Workspace& workspace) : workspace_(workspace) {
    static const bool isInstalled = (QAccessible::installFactory(accessibleInterface), true);
    Q_UNUSED(isInstalled);
}

UpdateAlert::~UpdateAlert() {
    delete window_;
}

void UpdateAlert::show(const std::string& message, const std::string& informativeText) {
    delete window_;
    window_ = new Alert(QString::fromStdString(message), QString::fromStdString(informativeText));
    window_->show();
    workspace_.bringToFront(*window_);
}

}  // namespace quillmere
