#include "Benchmarks/EventClock.h"

#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace quillmere::bench {

namespace {

constexpr std::chrono::seconds patience{5};

void openFocusedWindow(Display* display, bool wantsReleases) {
    const Window window = XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, 120, 80, 0, 0, 0);
    XSelectInput(display, window,
                 KeyPressMask | (wantsReleases ? KeyReleaseMask : 0) | FocusChangeMask | StructureNotifyMask);
    XMapWindow(display, window);
    XEvent event;
    do {
        XNextEvent(display, &event);
    } while (event.type != MapNotify);
    XSetInputFocus(display, window, RevertToParent, CurrentTime);
    XSync(display, False);
}

/// The number of XKB's event.
int listenToLayouts(Display* display) {
    int event = 0;
    XkbQueryExtension(display, nullptr, &event, nullptr, nullptr, nullptr);
    XkbSelectEventDetails(display, XkbUseCoreKbd, XkbStateNotify, XkbGroupStateMask, XkbGroupStateMask);
    XkbSelectEvents(display, XkbUseCoreKbd, XkbNewKeyboardNotifyMask, XkbNewKeyboardNotifyMask);
    return event;
}

WindowKey keyOf(XKeyEvent& event) {
    KeySym symbol = NoSymbol;
    unsigned int consumed = 0;
    XkbLookupKeySym(event.display, static_cast<KeyCode>(event.keycode), event.state, &consumed, &symbol);
    return {.symbol = static_cast<unsigned int>(symbol),
            .code = event.keycode,
            .state = event.state,
            .time = static_cast<unsigned int>(event.time),
            .isRelease = event.type == KeyRelease};
}

}  // namespace

EventClock::EventClock(const std::string& display, Listener listener)
    : listener_(std::move(listener)), stopPipe_{-1, -1} {
    // Not for programs that start later: in their hands it stays open.
    if (pipe2(stopPipe_, O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category());
    thread_ = std::thread([this, display] { run(display); });
    const Clock::time_point start = Clock::now();
    while (!isReady_ && Clock::now() - start < patience)
        std::this_thread::yield();
    if (!isReady_) throw std::runtime_error("the observing client does not start");
}

EventClock::~EventClock() {
    ::close(stopPipe_[1]);
    thread_.join();
    ::close(stopPipe_[0]);
}

void EventClock::run(const std::string& name) {
    Display* display = XOpenDisplay(name.c_str());
    if (display == nullptr) return;
    const int xkbEvent = listenToLayouts(display);
    openFocusedWindow(display, bool(listener_));
    isReady_ = true;
    std::array<pollfd, 2> sources{{{ConnectionNumber(display), POLLIN, 0}, {stopPipe_[0], POLLIN, 0}}};
    while (sources[1].revents == 0) {
        while (XPending(display) > 0) {
            XEvent event;
            XNextEvent(display, &event);
            if (event.type == KeyPress) keyPress_.note();
            if (event.type == xkbEvent) layoutChange_.note();
            if (listener_ && (event.type == KeyPress || event.type == KeyRelease)) listener_(keyOf(event.xkey));
        }
        poll(sources.data(), sources.size(), -1);
    }
    XCloseDisplay(display);
}

}  // namespace quillmere::bench
