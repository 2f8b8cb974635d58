#include "Benchmarks/EventClock.h"

#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace quillmere::bench {

namespace {

constexpr std::chrono::seconds patience{5};

std::int64_t now() {
    return std::chrono::nanoseconds(Clock::now().time_since_epoch()).count();
}

Window openFocusedWindow(Display* display) {
    const Window window = XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, 120, 80, 0, 0, 0);
    XSelectInput(display, window, KeyPressMask | FocusChangeMask | StructureNotifyMask);
    XMapWindow(display, window);
    XEvent event;
    do {
        XNextEvent(display, &event);
    } while (event.type != MapNotify);
    XSetInputFocus(display, window, RevertToParent, CurrentTime);
    XSync(display, False);
    return window;
}

}  // namespace

EventClock::EventClock(const std::string& display) : stopPipe_{-1, -1} {
    if (pipe(stopPipe_) != 0) throw std::system_error(errno, std::generic_category());
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

void EventClock::reset() {
    layoutChange_ = 0;
    keyPress_ = 0;
}

void EventClock::run(const std::string& name) {
    Display* display = XOpenDisplay(name.c_str());
    if (display == nullptr) return;
    int xkbEvent = 0;
    XkbQueryExtension(display, nullptr, &xkbEvent, nullptr, nullptr, nullptr);
    XkbSelectEventDetails(display, XkbUseCoreKbd, XkbStateNotify, XkbGroupStateMask, XkbGroupStateMask);
    openFocusedWindow(display);
    isReady_ = true;
    std::array<pollfd, 2> sources{{{ConnectionNumber(display), POLLIN, 0}, {stopPipe_[0], POLLIN, 0}}};
    while (sources[1].revents == 0) {
        while (XPending(display) > 0) {
            XEvent event;
            XNextEvent(display, &event);
            if (event.type == KeyPress) keyPress_ = now();
            if (event.type == xkbEvent) layoutChange_ = now();
        }
        poll(sources.data(), sources.size(), -1);
    }
    XCloseDisplay(display);
}

double EventClock::await(const std::atomic<std::int64_t>& moment, Clock::time_point start) {
    // Asleep meanwhile: a spinning typist would take the processor from those
    // who are being measured.
    while (moment == 0) {
        if (Clock::now() - start > patience) return -1;
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    const std::chrono::nanoseconds began = start.time_since_epoch();
    return static_cast<double>(moment - began.count()) / 1000;
}

}  // namespace quillmere::bench
