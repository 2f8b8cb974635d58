#pragma once

#include "Quillmere/Platform/Linux/Wayland/WaylandOutputs.h"

#include <QSocketNotifier>

#include <chrono>
#include <functional>
#include <memory>
#include <string_view>

#include <wayland-client.h>

namespace quillmere {

/// A connection to the Wayland compositor beside Qt's, whichever display the
/// program's windows are on. It is served by the event loop and blocks nowhere
/// but in `waitUntilReady`. Main thread only.
class WaylandConnection {
public:
    /// To the compositor of the environment (WAYLAND_DISPLAY). Null without one.
    static std::unique_ptr<WaylandConnection> open();
    ~WaylandConnection();
    WaylandConnection(const WaylandConnection&) = delete;
    WaylandConnection& operator=(const WaylandConnection&) = delete;

    /// The compositor has told what it offers. Called once, from the event loop.
    std::function<void()> onReady;

    /// Waits for the compositor's first answers, at most so long. Whether they
    /// have come.
    bool waitUntilReady(std::chrono::milliseconds limit);

    /// Whether the compositor has told that it offers layer surfaces.
    bool isUsable() const { return isReady_ && compositor_ != nullptr && shm_ != nullptr && shell_ != nullptr; }

    /// The compositor is gone, or has refused something: what is asked from now
    /// on comes to nothing, harmlessly.
    bool isLost() const { return isLost_; }

    /// Usable only. What is asked of these reaches the compositor with `flush`.
    wl_compositor* compositor() const { return compositor_; }
    wl_shm* shm() const { return shm_; }
    wl_proxy* shell() const { return shell_; }
    WaylandOutputs& outputs() { return outputs_; }
    /// By which the desktop behind a surface is blurred (`blur`); null where it
    /// is not.
    wl_proxy* blur() const { return blur_; }
    /// Null while it has no keyboard.
    wl_seat* keyboardSeat() const { return hasKeyboard_ ? seat_ : nullptr; }
    /// By which a surface gets the keys that the compositor would keep
    /// (`shortcutsinhibit`); null where it gives none.
    wl_proxy* shortcutsInhibit() const { return shortcutsInhibit_; }

    /// Sends what was asked; what the compositor does not take at once follows
    /// by itself.
    void flush();

private:
    explicit WaylandConnection(wl_display* display);

    static const wl_registry_listener registryListener;
    static const wl_callback_listener answerListener;
    static const wl_seat_listener seatListener;

    void bind(std::uint32_t name, std::string_view interface, std::uint32_t version);
    void askForAnswer();
    void noteAnswer();
    bool read(std::chrono::milliseconds limit);
    void serve();
    void setLost();

    wl_display* display_;
    wl_registry* registry_;
    wl_callback* answer_ = nullptr;
    wl_compositor* compositor_ = nullptr;
    wl_shm* shm_ = nullptr;
    wl_proxy* shell_ = nullptr;
    wl_proxy* blur_ = nullptr;
    wl_seat* seat_ = nullptr;
    wl_proxy* shortcutsInhibit_ = nullptr;
    WaylandOutputs outputs_;
    int answers_ = 0;
    bool isReady_ = false;
    bool hasKeyboard_ = false;
    bool isLost_ = false;
    QSocketNotifier readable_;
    QSocketNotifier writable_;
};

}  // namespace quillmere
