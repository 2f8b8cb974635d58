#include "Quillmere/Platform/Linux/Wayland/WaylandConnection.h"

#include "Quillmere/Platform/Linux/Wayland/BlurProtocol.h"
#include "Quillmere/Platform/Linux/Wayland/LayerShellProtocol.h"
#include "Quillmere/Platform/Linux/Wayland/ShortcutsInhibitProtocol.h"

#include <algorithm>
#include <cerrno>

#include <poll.h>

namespace quillmere {

namespace {

// The first with a scale for surfaces, and more than any compositor with a
// layer shell lacks.
constexpr std::uint32_t compositorVersion = 3;

// One for the list of what there is, and one for what the outputs tell.
constexpr int neededAnswers = 2;

}  // namespace

const wl_registry_listener WaylandConnection::registryListener{
    .global = [](void* self, wl_registry*, std::uint32_t name, const char* interface,
                 std::uint32_t version) { static_cast<WaylandConnection*>(self)->bind(name, interface, version); },
    .global_remove = [](void* self, wl_registry*,
                        std::uint32_t name) { static_cast<WaylandConnection*>(self)->outputs_.remove(name); },
};

const wl_callback_listener WaylandConnection::answerListener{
    .done = [](void* self, wl_callback*, std::uint32_t) { static_cast<WaylandConnection*>(self)->noteAnswer(); },
};

const wl_seat_listener WaylandConnection::seatListener{
    .capabilities =
        [](void* self, wl_seat*, std::uint32_t capabilities) {
            static_cast<WaylandConnection*>(self)->hasKeyboard_ = (capabilities & WL_SEAT_CAPABILITY_KEYBOARD) != 0;
        },
    // Of a later version than the one in use.
    .name = nullptr,
};

std::unique_ptr<WaylandConnection> WaylandConnection::open() {
    wl_display* display = wl_display_connect(nullptr);
    if (display == nullptr) return nullptr;
    return std::unique_ptr<WaylandConnection>(new WaylandConnection(display));
}

WaylandConnection::WaylandConnection(wl_display* display)
    : display_(display),
      registry_(wl_display_get_registry(display)),
      readable_(wl_display_get_fd(display), QSocketNotifier::Read),
      writable_(wl_display_get_fd(display), QSocketNotifier::Write) {
    wl_registry_add_listener(registry_, &registryListener, this);
    askForAnswer();
    QObject::connect(&readable_, &QSocketNotifier::activated, &readable_, [this] { serve(); });
    QObject::connect(&writable_, &QSocketNotifier::activated, &writable_, [this] { flush(); });
    flush();
}

WaylandConnection::~WaylandConnection() {
    if (answer_ != nullptr) wl_callback_destroy(answer_);
    if (shortcutsInhibit_ != nullptr) wl_proxy_destroy(shortcutsInhibit_);
    if (seat_ != nullptr) wl_seat_destroy(seat_);
    if (blur_ != nullptr) wl_proxy_destroy(blur_);
    if (shell_ != nullptr) wl_proxy_destroy(shell_);
    if (shm_ != nullptr) wl_shm_destroy(shm_);
    if (compositor_ != nullptr) wl_compositor_destroy(compositor_);
    wl_registry_destroy(registry_);
    outputs_.clear();
    wl_display_disconnect(display_);
}

void WaylandConnection::bind(std::uint32_t name, std::string_view interface, std::uint32_t version) {
    const auto take = [&](const wl_interface& wanted, std::uint32_t wantedVersion) {
        return wl_registry_bind(registry_, name, &wanted, wantedVersion);
    };
    if (interface == wl_output_interface.name) outputs_.add(registry_, name, version);
    if (interface == wl_compositor_interface.name && compositor_ == nullptr && version >= compositorVersion)
        compositor_ = static_cast<wl_compositor*>(take(wl_compositor_interface, compositorVersion));
    if (interface == wl_shm_interface.name && shm_ == nullptr) shm_ = static_cast<wl_shm*>(take(wl_shm_interface, 1));
    if (interface == layershell::shellInterface.name && shell_ == nullptr)
        shell_ = static_cast<wl_proxy*>(take(layershell::shellInterface, 1));
    if (interface == blur::managerInterface.name && blur_ == nullptr)
        blur_ = static_cast<wl_proxy*>(take(blur::managerInterface, 1));
    if (interface == shortcutsinhibit::managerInterface.name && shortcutsInhibit_ == nullptr)
        shortcutsInhibit_ = static_cast<wl_proxy*>(take(shortcutsinhibit::managerInterface, 1));
    if (interface == wl_seat_interface.name && seat_ == nullptr) {
        seat_ = static_cast<wl_seat*>(take(wl_seat_interface, 1));
        wl_seat_add_listener(seat_, &seatListener, this);
    }
}

void WaylandConnection::askForAnswer() {
    answer_ = wl_display_sync(display_);
    wl_callback_add_listener(answer_, &answerListener, this);
}

void WaylandConnection::noteAnswer() {
    wl_callback_destroy(answer_);
    answer_ = nullptr;
    ++answers_;
    isReady_ = answers_ == neededAnswers;
    if (!isReady_) askForAnswer();
}

bool WaylandConnection::waitUntilReady(std::chrono::milliseconds limit) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!isReady_) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
        if (left.count() <= 0 || !read(left)) return false;
    }
    return true;
}

/// Waits at most so long for something to read, and acts on it. False when the
/// connection is lost.
bool WaylandConnection::read(std::chrono::milliseconds limit) {
    while (wl_display_prepare_read(display_) != 0)
        if (wl_display_dispatch_pending(display_) < 0) return false;
    wl_display_flush(display_);
    pollfd readable{.fd = wl_display_get_fd(display_), .events = POLLIN};
    if (poll(&readable, 1, static_cast<int>(limit.count())) <= 0)
        wl_display_cancel_read(display_);
    else if (wl_display_read_events(display_) < 0)
        return false;
    return wl_display_dispatch_pending(display_) >= 0;
}

void WaylandConnection::serve() {
    const bool wasReady = isReady_;
    if (!read(std::chrono::milliseconds(0))) {
        setLost();
        return;
    }
    flush();
    if (!wasReady && isReady_ && onReady) onReady();
}

void WaylandConnection::flush() {
    if (isLost_) return;
    const bool isSent = wl_display_flush(display_) >= 0;
    if (!isSent && errno != EAGAIN)
        setLost();
    else
        writable_.setEnabled(!isSent);
}

/// Or the event loop would be woken for ever.
void WaylandConnection::setLost() {
    isLost_ = true;
    readable_.setEnabled(false);
    writable_.setEnabled(false);
}

}  // namespace quillmere
