#include "Quillmere/Updates/UpdateWindow.h"

#include "Quillmere/Icons/AppIcon.h"
#include "Quillmere/Updates/UpdateView.h"

#include <QEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QUrl>
#include <QVBoxLayout>

namespace quillmere {

namespace {

/// Titled and closable, nothing else.
constexpr Qt::WindowFlags windowFlags =
    Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint;

/// What a window manager's title bar and borders take, generously, in points.
constexpr int decoration = 60;

QWidget* makeWindow(UpdateView* view, const QString& title) {
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    view->fit(screen.height() - decoration);

    auto* const window = new QWidget(nullptr, windowFlags);
    window->setWindowTitle(title);
    window->setWindowIcon(AppIcon::make());
    auto* const layout = new QVBoxLayout(window);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(view);
    window->setFixedSize(view->size());
    QRect frame(QPoint(), view->size());
    frame.moveCenter(screen.center());
    window->move(frame.topLeft());
    // The first button would take the focus otherwise, without showing it.
    view->setFocus();
    return window;
}

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
                workspace_.open(QUrl::fromEncoded(QByteArray::fromStdString(url.text())));
                close();
            },
        .onSkip =
            [this, version = offer.version] {
                store_.setSkipped(version);
                close();
            },
        .onLater = [this] { close(); },
    };
    window_ = makeWindow(new UpdateView(offer, actions), updateTitle(offer.version));
    window_->installEventFilter(this);
    window_->show();
    workspace_.bringToFront(*window_);
}

bool UpdateWindow::eventFilter(QObject* watched, QEvent* event) {
    if (watched == window_ && event->type() == QEvent::Close) forget();
    return QObject::eventFilter(watched, event);
}

void UpdateWindow::close() {
    if (window_) window_->close();
}

void UpdateWindow::forget() {
    // Later, because one of its buttons may be what closes it.
    window_->deleteLater();
    window_ = nullptr;
}

}  // namespace quillmere
