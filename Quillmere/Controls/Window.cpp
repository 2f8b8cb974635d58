#include "Quillmere/Controls/Window.h"

#include "Quillmere/Icons/AppIcon.h"
#include "Quillmere/Palette.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QPainter>
#include <QScreen>
#include <QScrollArea>
#include <QVBoxLayout>

#include <algorithm>
#include <vector>

namespace quillmere {

namespace {

Qt::WindowFlags flags(Window::Kind kind) {
    const Qt::WindowFlags common =
        Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint;
    switch (kind) {
        case Window::Kind::resizable:
            return Qt::Window | common | Qt::WindowMaximizeButtonHint;
        case Window::Kind::fixed:
            return Qt::Window | common;
        case Window::Kind::alert:
            return Qt::Dialog | common;
    }
    return common;
}

bool takesFocus(const QWidget& widget) {
    return widget.isEnabled() && widget.isVisible() && (widget.focusPolicy() & Qt::TabFocus);
}

/// The layout of what a widget contains; null when it contains nothing.
QLayout* contents(const QWidget& widget) {
    const auto* const area = qobject_cast<const QScrollArea*>(&widget);
    return area ? area->widget()->layout() : widget.layout();
}

/// Adds the controls of a layout in the order in which they lie there.
void collect(const QLayout& layout, std::vector<QWidget*>& controls) {
    for (int i = 0; i < layout.count(); ++i) {
        QLayoutItem& item = *layout.itemAt(i);
        QWidget* const widget = item.widget();
        if (widget && takesFocus(*widget)) controls.push_back(widget);
        if (const QLayout* const inner = widget ? contents(*widget) : item.layout()) collect(*inner, controls);
    }
}

}  // namespace

Window::Window(Kind kind, const QString& title, QWidget* content) : QWidget(nullptr, flags(kind)) {
    setWindowTitle(title);
    setWindowIcon(AppIcon::make());
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(content);
    if (kind != Kind::resizable) layout->setSizeConstraint(QLayout::SetFixedSize);

    QRect frame(QPoint(), content->minimumSize());
    frame.moveCenter(QGuiApplication::primaryScreen()->availableGeometry().center());
    setGeometry(frame);
    // else the first control would take the focus, without showing it
    setFocusProxy(content);
    content->setFocus();
}

void Window::closeEvent(QCloseEvent* event) {
    event->accept();
    if (windowWillClose) windowWillClose();
}

void Window::paintEvent(QPaintEvent* /*event*/) {
    QPainter(this).fillRect(rect(), Palette::window().resolved(Palette::isDark()));
}

bool Window::focusNextPrevChild(bool next) {
    std::vector<QWidget*> controls;
    collect(*layout(), controls);
    if (controls.empty()) return false;
    if (!next) std::ranges::reverse(controls);
    const auto current = std::ranges::find(controls, focusWidget());
    const bool isLast = current == controls.end() || current + 1 == controls.end();
    (isLast ? controls.front() : *(current + 1))->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    return true;
}

}  // namespace quillmere
