#include "Tests/Support/Witness.h"

#include "Tests/Support/SupportError.h"
#include "Tests/Support/WaitUntil.h"

#include <X11/XKBlib.h>
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <xkbcommon/xkbcommon.h>

#include <algorithm>
#include <array>

namespace quillmere::support {

namespace {

constexpr unsigned int groupBits = 0x3U << 13;

std::string textOf(KeySym symbol) {
    std::array<char, 16> buffer{};
    const int size = xkb_keysym_to_utf8(static_cast<xkb_keysym_t>(symbol), buffer.data(), buffer.size());
    // The size counts the final zero; 0 and less say that there is no text.
    const bool isControlCharacter = size == 2 && static_cast<unsigned char>(buffer[0]) < ' ';
    return size > 1 && !isControlCharacter ? std::string(buffer.data()) : std::string{};
}

unsigned long pixel(QColor color) {
    return color.rgb() & 0xFFFFFFU;
}

}  // namespace

Witness::Witness(const std::string& display, Size size, QColor background) : connection_(display) {
    int ignored = 0;
    if (XkbQueryExtension(connection_.display(), &ignored, &xkbEvent_, &ignored, &ignored, &ignored) == 0)
        throw SupportError("the X server has no XKB");
    XkbSelectEventDetails(connection_.display(), XkbUseCoreKbd, XkbStateNotify, XkbGroupStateMask, XkbGroupStateMask);
    const unsigned long mappingEvents = XkbNewKeyboardNotifyMask | XkbMapNotifyMask;
    XkbSelectEvents(connection_.display(), XkbUseCoreKbd, mappingEvents, mappingEvents);
    openWindow(size, background);
    const auto isFocused = [this] {
        readEvents();
        return hasFocus_;
    };
    if (!waitUntil(isFocused)) throw SupportError("the witness gets no keyboard focus");
    clear();
}

Witness::~Witness() {
    XDestroyWindow(connection_.display(), window_);
}

void Witness::openWindow(Size size, QColor background) {
    Display* display = connection_.display();
    const QSize screen = connection_.screenSize();
    const QRect frame = size == Size::fullScreen ? QRect(QPoint(0, 0), screen) : QRect(40, 40, 400, 300);
    window_ =
        XCreateSimpleWindow(display, connection_.root(), frame.x(), frame.y(), static_cast<unsigned int>(frame.width()),
                            static_cast<unsigned int>(frame.height()), 0, 0, pixel(background));
    XStoreName(display, window_, "witness");
    XSelectInput(display, window_, KeyPressMask | KeyReleaseMask | FocusChangeMask | ButtonPressMask | ExposureMask);
    if (size == Size::fullScreen) {
        const Atom fullScreen = connection_.atom("_NET_WM_STATE_FULLSCREEN");
        XChangeProperty(display, window_, connection_.atom("_NET_WM_STATE"), XA_ATOM, 32, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(&fullScreen), 1);
    }
    XMapRaised(display, window_);
    connection_.synchronize();
}

void Witness::moveTo(QPoint origin) {
    XMoveWindow(connection_.display(), window_, origin.x(), origin.y());
    const auto isThere = [&] {
        int x = 0;
        int y = 0;
        Window ignored = 0;
        XTranslateCoordinates(connection_.display(), window_, connection_.root(), 0, 0, &x, &y, &ignored);
        // Its window manager's frame lies around it.
        return QRect(origin, QSize(100, 100)).contains(x, y);
    };
    if (!waitUntil(isThere)) throw SupportError("the witness does not move");
}

void Witness::readEvents() {
    connection_.synchronize();
    while (XPending(connection_.display()) > 0) {
        XEvent event;
        XNextEvent(connection_.display(), &event);
        note(event);
    }
}

void Witness::note(_XEvent& event) {
    switch (event.type) {
        case KeyPress:
        case KeyRelease:
            noteKey(event);
            break;
        case ButtonPress:
            clicks_.emplace_back(event.xbutton.x_root, event.xbutton.y_root);
            break;
        case FocusIn:
        case FocusOut:
            noteFocus(event);
            break;
        case MappingNotify:
            XRefreshKeyboardMapping(&event.xmapping);
            break;
        default:
            noteLayout(event);
    }
}

void Witness::noteFocus(const _XEvent& event) {
    // The pointer's own focus says nothing about the keyboard, and a keyboard
    // grab lends the focus away without taking it.
    const bool isPointers = event.xfocus.detail == NotifyPointer;
    const bool isGrabs = event.xfocus.mode == NotifyGrab || event.xfocus.mode == NotifyUngrab;
    if (isPointers || isGrabs) return;
    if (hasFocus_ && event.type == FocusOut) ++focusLosses_;
    hasFocus_ = event.type == FocusIn;
}

void Witness::noteLayout(_XEvent& event) {
    if (event.type != xkbEvent_) return;
    auto& xkb = reinterpret_cast<XkbEvent&>(event);
    if (xkb.any.xkb_type == XkbStateNotify) groups_.push_back(xkb.state.group);
    if (xkb.any.xkb_type == XkbMapNotify) XkbRefreshKeyboardMapping(&xkb.map);
}

void Witness::noteKey(_XEvent& event) {
    const unsigned int state = event.xkey.state;
    KeySym symbol = NoSymbol;
    unsigned int consumed = 0;
    XkbLookupKeySym(connection_.display(), static_cast<KeyCode>(event.xkey.keycode), state, &consumed, &symbol);
    keys_.push_back({
        .isPress = event.type == KeyPress,
        .key = event.xkey.keycode,
        .modifiers = state & ~groupBits,
        .group = XkbGroupForCoreState(static_cast<int>(state)),
        .text = textOf(symbol),
    });
}

const std::vector<SeenKey>& Witness::keys() {
    readEvents();
    return keys_;
}

std::size_t Witness::presses(Key key) {
    return static_cast<std::size_t>(
        std::ranges::count_if(keys(), [key](const SeenKey& seen) { return seen.isPress && seen.key == key; }));
}

std::string Witness::text() {
    std::string result;
    for (const SeenKey& seen : keys())
        if (seen.isPress) result += seen.text;
    return result;
}

bool Witness::saw(Key key) {
    return std::ranges::any_of(keys(), [key](const SeenKey& seen) { return seen.key == key; });
}

const std::vector<int>& Witness::groups() {
    readEvents();
    return groups_;
}

int Witness::focusLosses() {
    readEvents();
    return focusLosses_;
}

const std::vector<QPoint>& Witness::clicks() {
    readEvents();
    return clicks_;
}

void Witness::clear() {
    readEvents();
    keys_.clear();
    groups_.clear();
    clicks_.clear();
    focusLosses_ = 0;
}

bool Witness::grabKeyboard() {
    return XGrabKeyboard(connection_.display(), window_, False, GrabModeAsync, GrabModeAsync, CurrentTime)
           == GrabSuccess;
}

void Witness::ungrabKeyboard() {
    XUngrabKeyboard(connection_.display(), CurrentTime);
    connection_.synchronize();
}

bool Witness::grabKey(Key key, unsigned int modifiers) {
    connection_.takeError();
    XGrabKey(connection_.display(), static_cast<int>(key), modifiers, connection_.root(), False, GrabModeAsync,
             GrabModeAsync);
    return connection_.takeError() == 0;
}

}  // namespace quillmere::support
