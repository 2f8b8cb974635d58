#include "Quillmere/Platform/Linux/Plate/X11MainScreen.h"

#include "Quillmere/Platform/Linux/Plate/WorkArea.h"

#include <QGuiApplication>
#include <QScreen>

#include <algorithm>
#include <string>
#include <utility>

namespace quillmere {

namespace {

// Indices of the atoms below; all but the last are of EWMH.
enum Atom : std::size_t { activeWindow, clientList, currentDesktop, strut, strutPartial };
constexpr std::array atomNames{"_NET_ACTIVE_WINDOW", "_NET_CLIENT_LIST", "_NET_CURRENT_DESKTOP", "_NET_WM_STRUT",
                               "_NET_WM_STRUT_PARTIAL"};

int area(const QRect& rect) {
    return rect.isEmpty() ? 0 : rect.width() * rect.height();
}

/// In pixels of the X screen: Qt scales a monitor's size, and keeps its origin.
QRect nativeFrame(const QScreen& screen) {
    const QRect frame = screen.geometry();
    const QSizeF size = QSizeF(frame.size()) * screen.devicePixelRatio();
    return {frame.topLeft(), size.toSize()};
}

QRectF points(const QRect& native, const QScreen& screen) {
    const QPointF origin = screen.geometry().topLeft();
    const double scale = screen.devicePixelRatio();
    return {origin + (QPointF(native.topLeft()) - origin) / scale, QSizeF(native.size()) / scale};
}

}  // namespace

X11MainScreen::X11MainScreen(const QtX11& x11) : x11_(x11), atoms_(x11.atoms(atomNames)) {}

QRectF X11MainScreen::visibleFrame() const {
    const QScreen* screen = QGuiApplication::primaryScreen();
    if (screen == nullptr) return {};
    if (QGuiApplication::screens().size() == 1) return screen->availableGeometry();
    screen = screenWithKeyboard();
    return points(workArea(nativeFrame(*screen)), *screen);
}

const QScreen* X11MainScreen::screenWithKeyboard() const {
    const QScreen* best = QGuiApplication::primaryScreen();
    const auto window = keyboardWindowFrame();
    if (!window) return best;
    int most = 0;
    for (const QScreen* screen : QGuiApplication::screens()) {
        const int shared = area(nativeFrame(*screen) & *window);
        if (shared > std::exchange(most, std::max(most, shared))) best = screen;
    }
    return best;
}

std::optional<QRect> X11MainScreen::keyboardWindowFrame() const {
    // The focus itself may lie on a window without extent that a toolkit keeps for it.
    const auto active = x11_.numbers(x11_.root(), atoms_[activeWindow]);
    const auto frame = active.empty() ? std::nullopt : x11_.frame(active.front());
    return frame ? frame : x11_.frame(x11_.focusedWindow());
}

QRect X11MainScreen::workArea(const QRect& monitor) const {
    const QRect told = workAreaOfManager(monitor);
    return told.isEmpty() ? workAreaOfPanels(monitor) : told;
}

/// Some window managers, Mutter among them, whose own panel is no window, list
/// the work area of each monitor; the rest tell one of all monitors together.
QRect X11MainScreen::workAreaOfManager(const QRect& monitor) const {
    const auto desktop = x11_.numbers(x11_.root(), atoms_[currentDesktop]);
    const std::string name = "_GTK_WORKAREAS_D" + std::to_string(desktop.empty() ? 0 : desktop.front());
    const auto numbers = x11_.numbers(x11_.root(), x11_.atom(name.c_str()));
    QRect best;
    for (std::size_t i = 0; i + 4 <= numbers.size(); i += 4) {
        const auto at = [&](std::size_t offset) { return static_cast<int>(numbers[i + offset]); };
        const QRect shared = QRect(at(0), at(1), at(2), at(3)) & monitor;
        if (area(shared) > area(best)) best = shared;
    }
    return best;
}

QRect X11MainScreen::workAreaOfPanels(const QRect& monitor) const {
    const auto root = x11_.frame(x11_.root());
    const auto clients = x11_.numbers(x11_.root(), atoms_[clientList]);
    WorkArea workArea(monitor, root ? root->size() : monitor.size());
    const auto partial = x11_.numbers(clients, atoms_[strutPartial]);
    const auto whole = x11_.numbers(clients, atoms_[strut]);
    for (std::size_t i = 0; i < clients.size(); ++i)
        workArea.remove(partial[i].empty() ? whole[i] : partial[i]);
    return workArea.free();
}

}  // namespace quillmere
