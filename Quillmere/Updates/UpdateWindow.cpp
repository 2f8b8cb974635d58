#include "Quillmere/Updates/UpdateWindow.h"

#include "Quillmere/Palette.h"
#include "Quillmere/Updates/UpdateView.h"

#include <QGuiApplication>
#include <QScreen>
#include <QUrl>

namespace quillmere {

namespace {
/// What a window manager's title bar and borders take, generously, in points.
constexpr int decoration = 60;
}  // namespace

UpdateWindow::UpdateWindow(UpdateStore& store, Workspace& workspace) : store_(store), workspace_(workspace) {}

UpdateWindow::~UpdateWindow() {
    delete window_;
}

void UpdateWindow::show(const UpdateOffer& offer) {
    close();
    const UpdateView::Actions actions{
        .onDownload =
            [this, url = offer.downloadURL] {
                if (!workspace_.open(QUrl::fromEncoded(QByteArray::fromStdString(url.text())))) workspace_.beep();
                close();
            },
        .onSkip =
            [this, version = offer.version] {
                store_.setSkipped(version);
                close();
            },
        .onLater = [this] { close(); },
    };
    auto* const view = new UpdateView(offer, actions);
    view->fit(QGuiApplication::primaryScreen()->availableGeometry().height() - decoration);
    window_ = new Window(Window::Kind::fixed, updateTitle(offer.version), view);
    window_->windowWillClose = [this] { windowWillClose(); };
    workspace_.blendTitleBar(*window_, Palette::window().light, Palette::window().dark);
    window_->show();
    workspace_.bringToFront(*window_);
}

void UpdateWindow::close() {
    if (window_) window_->close();
}

void UpdateWindow::windowWillClose() {
    // Later, because one of its buttons may be what closes it.
    window_->deleteLater();
    window_ = nullptr;
}

}  // namespace quillmere
