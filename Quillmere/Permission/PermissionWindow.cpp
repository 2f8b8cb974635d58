#include "Quillmere/Permission/PermissionWindow.h"

#include "Quillmere/Icons/AppIcon.h"
#include "Quillmere/Permission/PermissionView.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QScreen>
#include <QVBoxLayout>

#include <utility>

namespace quillmere {

namespace {

/// Titled and closable, nothing else.
constexpr Qt::WindowFlags windowFlags =
    Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint;

QWidget* makeWindow(PermissionView* view) {
    auto* const window = new QWidget(nullptr, windowFlags);
    window->setWindowTitle(QStringLiteral("Quillmere needs permission"));
    window->setWindowIcon(AppIcon::make());
    auto* const layout = new QVBoxLayout(window);
    layout->setContentsMargins(0, 0, 0, 0);
    // The content decides, also when it changes.
    layout->setSizeConstraint(QLayout::SetFixedSize);
    layout->addWidget(view);
    QRect frame(QPoint(), view->size());
    frame.moveCenter(QGuiApplication::primaryScreen()->availableGeometry().center());
    window->move(frame.topLeft());
    // The first button would take the focus otherwise, without showing it.
    view->setFocus();
    return window;
}

}  // namespace

PermissionWindow::PermissionWindow(std::shared_ptr<PermissionModel> model, MainQueue& queue, Workspace& workspace,
                                   PermissionRequest& request)
    : model_(std::move(model)), queue_(queue), workspace_(workspace), request_(request) {}

PermissionWindow::~PermissionWindow() {
    delete window_;
}

void PermissionWindow::show() {
    const PermissionView::Actions actions{
        .onOpenSettings = [this] { request_.open(); },
        .onQuit = &QCoreApplication::quit,
        .onDone =
            [self = QPointer(this)] {
                if (self) self->close();
            },
    };
    delete window_;
    window_ = makeWindow(new PermissionView(model_, actions));
    workspace_.bringToFront(*window_);
}

void PermissionWindow::granted() {
    if (!window_) return;
    model_->setState(PermissionGate::State::granted);
    window_->setWindowTitle(QStringLiteral("Quillmere is ready"));
    workspace_.bringToFront(*window_);
    closeWork_ = queue_.after(readyDuration, [this] { close(); });
}

void PermissionWindow::close() {
    closeWork_.reset();
    if (!window_) return;
    window_->close();
    // Later, because its own button may be what closes it.
    window_->deleteLater();
    window_ = nullptr;
}

}  // namespace quillmere
