#include "Quillmere/Platform/Linux/Plate/X11PlatePanel.h"

#include <QGraphicsOpacityEffect>
#include <QGuiApplication>
#include <QScreen>

#include <array>
#include <cmath>
#include <cstdint>
#include <string_view>
#include <utility>

namespace quillmere {

namespace {

// That of Xwayland under wlroots before 0.18: it blends windows, but not by
// their opacity.
constexpr std::string_view deafWindowManager = "wlroots wm";

std::unique_ptr<QWidget> makeWindow() {
    auto window =
        std::make_unique<QWidget>(nullptr, Qt::ToolTip | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint
                                               | Qt::WindowTransparentForInput | Qt::WindowDoesNotAcceptFocus);
    window->setAttribute(Qt::WA_TranslucentBackground);
    window->setAttribute(Qt::WA_ShowWithoutActivating);
    window->setObjectName("plate");
    window->setWindowTitle("Quillmere plate");
    window->resize(200, 60);
    // The first switch should not pay for making the native window.
    window->winId();
    // Compositors' own rules draw tool tips translucent and fade them in. Qt
    // ignores the type of a window that is not there yet.
    window->setAttribute(Qt::WA_X11NetWmWindowTypeNotification);
    return window;
}

// picom draws shadows behind windows that bring their own, unless it is told
// not to by its own property.
void refuseShadow(const QtX11& x11, xcb_window_t window) {
    constexpr std::uint32_t none = 0;
    xcb_change_property(x11.connection(), XCB_PROP_MODE_REPLACE, window, x11.atom("_COMPTON_SHADOW"), XCB_ATOM_CARDINAL,
                        32, 1, &none);
}

}  // namespace

X11PlatePanel::X11PlatePanel()
    : x11_(QtX11::current()),
      window_(makeWindow()),
      shadow_(new PlateShadow(window_.get())),
      fade_([this](double alpha) { applyAlpha(alpha); }) {
    if (x11_) {
        mainScreen_.emplace(*x11_);
        frameExtents_ = x11_->atom("_GTK_FRAME_EXTENTS");
        refuseShadow(*x11_, static_cast<xcb_window_t>(window_->winId()));
        compositorSelection_ = x11_->screenSelection("_NET_WM_CM_S");
        isOpacityHeeded_ = x11_->windowManagerName() != deafWindowManager;
    }
}

X11PlatePanel::~X11PlatePanel() = default;

void X11PlatePanel::setContent(QWidget* content, const PlateMaterial& /*material*/) {
    delete std::exchange(content_, content);
    content->setParent(shadow_);
    content->show();
    // Content with a mask has no compositor that would blend a shadow, and other
    // display servers would take the shadow's room for a part of the plate.
    shadow_->setDrawn(x11_ && content->mask().isEmpty());
}

void X11PlatePanel::setFrame(const QRectF& frame) {
    const QPoint origin(static_cast<int>(std::lround(frame.x())), static_cast<int>(std::lround(frame.y())));
    const QMargins room = shadow_->isDrawn() ? PlateShadow::margins() : QMargins();
    window_->setGeometry(QRect(origin, frame.size().toSize()).marginsAdded(room));
    shadow_->resize(window_->size());
    if (content_) content_->move(room.left(), room.top());
    // The content's own mask cuts the window too: without a compositor nothing
    // else keeps its corners from showing black.
    window_->setMask(content_ ? content_->mask() : QRegion());
    tellShadow(room);
}

/// A compositor draws its own shadow, a square one, behind a window that does
/// not say how much of it is shadow already, even if that is nothing.
void X11PlatePanel::tellShadow(const QMargins& room) const {
    if (!x11_) return;
    const double scale = window_->devicePixelRatioF();
    const auto pixels = [scale](int points) { return static_cast<std::uint32_t>(std::lround(points * scale)); };
    const std::array extents{pixels(room.left()), pixels(room.right()), pixels(room.top()), pixels(room.bottom())};
    xcb_change_property(x11_->connection(), XCB_PROP_MODE_REPLACE, static_cast<xcb_window_t>(window_->winId()),
                        frameExtents_, XCB_ATOM_CARDINAL, 32, extents.size(), extents.data());
}

QRectF X11PlatePanel::visibleFrame() const {
    if (mainScreen_) return mainScreen_->visibleFrame();
    const QScreen* screen = QGuiApplication::primaryScreen();
    return screen ? QRectF(screen->availableGeometry()) : QRectF();
}

void X11PlatePanel::fade(double alpha, double seconds, std::function<void()> completion) {
    fade_.run(alpha, seconds, canFade(), std::move(completion));
}

void X11PlatePanel::orderFront() {
    window_->show();
    window_->raise();
}

void X11PlatePanel::orderOut() {
    window_->hide();
}

bool X11PlatePanel::isTranslucent() const {
    // Asked each time: a compositor may start or end at any moment, and the
    // round trip costs less than following it. Other display servers always blend.
    return !x11_ || x11_->isOwned(compositorSelection_);
}

bool X11PlatePanel::canFade() const {
    return x11_ && isTranslucent();
}

void X11PlatePanel::applyAlpha(double alpha) {
    // No other display server lets a client fade its window.
    if (!x11_) return;
    if (!isOpacityHeeded_) {
        paintAt(alpha);
        return;
    }
    window_->setWindowOpacity(alpha);
    // Qt does not flush this property, so a step would wait for the next event.
    xcb_flush(x11_->connection());
}

/// Not the way for every compositor: each step draws the plate anew.
void X11PlatePanel::paintAt(double alpha) {
    if (alpha == 1) {
        shadow_->setGraphicsEffect(nullptr);
        return;
    }
    auto* effect = qobject_cast<QGraphicsOpacityEffect*>(shadow_->graphicsEffect());
    if (effect == nullptr) shadow_->setGraphicsEffect(effect = new QGraphicsOpacityEffect);
    effect->setOpacity(alpha);
}

}  // namespace quillmere
