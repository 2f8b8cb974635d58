#include "Quillmere/Platform/Linux/Tap/X11/Guard/Guard.h"

#include "Quillmere/Platform/Linux/Tap/X11/Guard/GuardWords.h"

#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <span>

namespace quillmere::guard {

namespace {

/// No shortcut begins with these alone.
constexpr unsigned int harmless = ShiftMask | LockMask;

bool mayBeginShortcut(unsigned int heldModifiers) {
    return (heldModifiers & ~harmless) != 0;
}

}  // namespace

Guard::Guard(Display* display, int socket, unsigned long resource)
    : display_(display), socket_(socket), resource_(resource) {
    int opcode = 0;
    int firstError = 0;
    int major = XkbMajorVersion;
    int minor = XkbMinorVersion;
    XkbQueryExtension(display_, &opcode, &xkbEventBase_, &firstError, &major, &minor);
    const unsigned long held = XkbModifierBaseMask | XkbModifierLatchMask;
    XkbSelectEventDetails(display_, XkbUseCoreKbd, XkbStateNotify, held, held);
    XkbStateRec state{};
    if (XkbGetState(display_, XkbUseCoreKbd, &state) == Success)
        isModifierHeld_ = mayBeginShortcut(state.base_mods | state.latched_mods);
}

void Guard::run() {
    for (;;) {
        readEvents();
        if (!readSocket()) return;
        const Time now = std::chrono::steady_clock::now();
        if (askedAt_ && now - *askedAt_ >= patience) {
            XKillClient(display_, resource_);
            XSync(display_, False);
            return;
        }
        if (!askedAt_ && isNeeded() && now >= nextQuestion_) ask(now);
        wait(now);
    }
}

void Guard::readEvents() {
    while (XPending(display_) > 0) {
        XEvent event;
        XNextEvent(display_, &event);
        if (event.type != xkbEventBase_) continue;
        const auto& notice = reinterpret_cast<const XkbEvent&>(event);
        if (notice.any.xkb_type != XkbStateNotify) continue;
        isModifierHeld_ = mayBeginShortcut(notice.state.base_mods | notice.state.latched_mods);
    }
}

bool Guard::readSocket() {
    std::array<char, 64> words{};
    pollfd ready{socket_, POLLIN, 0};
    while (poll(&ready, 1, 0) == 1) {
        const ssize_t count = read(socket_, words.data(), words.size());
        if (count <= 0) return false;
        for (const char word : std::span(words).first(static_cast<std::size_t>(count))) {
            if (word == answer) askedAt_.reset();
            if (word == recording || word == recorded) isRecording_ = word == recording;
        }
    }
    return true;
}

void Guard::ask(Time now) {
    // A socket that takes nothing is one that nobody reads.
    [[maybe_unused]] const ssize_t written = send(socket_, &question, 1, MSG_NOSIGNAL);
    askedAt_ = now;
    nextQuestion_ = now + askEvery;
}

void Guard::wait(Time now) const {
    int timeout = -1;
    if (askedAt_ || isNeeded()) {
        const Time next = askedAt_ ? *askedAt_ + patience : nextQuestion_;
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(next - now);
        timeout = static_cast<int>(std::max(left.count(), decltype(left.count()){0}));
    }
    std::array<pollfd, 2> descriptors{{{ConnectionNumber(display_), POLLIN, 0}, {socket_, POLLIN, 0}}};
    poll(descriptors.data(), descriptors.size(), timeout);
}

}  // namespace quillmere::guard
