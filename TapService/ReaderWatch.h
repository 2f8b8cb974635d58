#pragma once

#include "TapService/Handles.h"
#include "TapService/TapPorts.h"

#include <functional>
#include <string>

namespace quillmere::tap {

/// Finds out when the desktop reads a new input device. Nobody says so, and
/// that its node is opened proves nothing: logind opens every keyboard to look
/// for a power button, however long the desktop takes to come that far. But
/// logind waits for power keys alone. So the device sends something that means
/// nothing to anybody, and whoever then reads from the node is a desktop.
///
/// Where nobody does (a text console needs no node) it ends the wait all the
/// same after some seconds.
class ReaderWatch {
public:
    struct Handlers {
        /// Send the event that means nothing.
        std::function<void()> onProbe;
        /// The device is read, or nobody is going to; sent once. This may be
        /// destroyed then.
        std::function<void()> onReady;
    };

    /// How long nobody may read before the wait is over.
    static constexpr Time longestWait = std::chrono::seconds(5);

    ReaderWatch(sd_event* loop, Handlers handlers);

    /// The device is made; nobody knows its node yet.
    void begin();
    /// Its node (as "/dev/input/event3") has been made known.
    void appeared(const std::string& node);

private:
    void watch(const std::string& node);
    void noticed(const inotify_event& event);
    template <auto member>
    void wakeIn(EventSource& timer, Time delay);
    void probe();
    void sendProbe();
    void finish();

    sd_event* loop_;
    Handlers handlers_;
    EventSource notices_;
    EventSource probeTimer_;
    EventSource endTimer_;
    bool isRead_ = false;
};

}  // namespace quillmere::tap
