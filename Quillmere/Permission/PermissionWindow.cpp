#include "Quillmere/Permission/PermissionWindow.h"

#include "Quillmere/Palette.h"
#include "Quillmere/Permission/PermissionView.h"

#include <QCoreApplication>

#include <utility>

namespace quillmere {

namespace {
/// How long the good news stays, in seconds.
constexpr double readyDuration = 3.0;
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
    window_ = new Window(Window::Kind::fixed, QStringLiteral("Quillmere needs permission"),
                         new PermissionView(model_, request_.directions(), actions));
    workspace_.blendTitleBar(*window_, Palette::window().light, Palette::window().dark);
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
