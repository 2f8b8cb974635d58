#include "TapService/EventHandler.h"
#include "TapService/GrantStore.h"
#include "TapService/Handles.h"
#include "TapService/KeyTapNames.h"
#include "TapService/KeyTapObject.h"
#include "TapService/LinuxKeyboards.h"
#include "TapService/Log.h"
#include "TapService/LoginSessions.h"
#include "TapService/TapAccess.h"
#include "TapService/TapServer.h"

#include <signal.h>
#include <systemd/sd-daemon.h>

#include <cerrno>
#include <chrono>
#include <optional>

namespace quillmere::tap {
namespace {

constexpr Time idle = std::chrono::seconds(30);
constexpr Time accuracy = std::chrono::milliseconds(250);
constexpr int failure = 1;
constexpr int usage = 2;

/// Ends the service when it has had nothing to do for a while; the bus starts
/// it again when it is needed.
class IdleExit {
public:
    IdleExit(sd_event* loop, sd_bus* bus, const KeyTapObject& object, const TapServer& server)
        : loop_(loop), bus_(bus), object_(object), server_(server) {}

    void arm() {
        const int status = EventHandler<&IdleExit::check>::at(loop_, timer_, monotonicNow() + idle, accuracy, this);
        if (status < 0) Log::warning("Cannot set a timer", status);
    }

    /// While there is a tap nothing ticks.
    void tapCountChanged() {
        if (server_.tapCount() > 0) {
            timer_.reset();
        } else {
            arm();
        }
    }

private:
    void check() {
        if (server_.tapCount() > 0) return;
        if (object_.isBusy()) {
            arm();
            return;
        }
        // A call that arrives from now on starts the service anew.
        sd_notify(0, "STOPPING=1");
        sd_bus_release_name(bus_, KeyTapNames::service);
        sd_event_exit(loop_, 0);
    }

    sd_event* loop_;
    sd_bus* bus_;
    const KeyTapObject& object_;
    const TapServer& server_;
    EventSource timer_;
};

/// Ends the service when it is told to, as an upgrade does while somebody types:
/// the keyboards are given back between two keys, and nobody loses one.
class Farewell {
public:
    Farewell(sd_event* loop, sd_bus* bus, TapServer& server) : loop_(loop), bus_(bus), server_(server) {}

    bool start() {
        int status = 0;
        for (const int signal : {SIGTERM, SIGINT}) {
            const auto handler = [](sd_event_source*, const signalfd_siginfo*, void* data) {
                static_cast<Farewell*>(data)->begin();
                return 0;
            };
            if (status >= 0) status = sd_event_add_signal(loop_, nullptr, signal, handler, this);
        }
        if (status < 0) Log::error("Cannot wait for signals", status);
        return status >= 0;
    }

private:
    // Far less than the service manager waits, in which everything is passed on.
    static constexpr Time longest = std::chrono::milliseconds(500);
    // What a desktop has not read of a virtual keyboard goes with it.
    static constexpr Time readingTakes = std::chrono::milliseconds(300);
    static constexpr Time glance = std::chrono::milliseconds(10);

    void begin() {
        if (by_) return;
        by_ = monotonicNow() + longest;
        sd_notify(0, "STOPPING=1");
        // Not waiting for the bus: keys go through here meanwhile.
        sd_bus_release_name_async(bus_, nullptr, KeyTapNames::service, nullptr, nullptr);
        server_.end();
        look();
    }

    void look() {
        const bool isOver = !server_.isGrabbing() || monotonicNow() >= *by_;
        const int status =
            isOver ? EventHandler<&Farewell::leave>::at(loop_, timer_, monotonicNow() + readingTakes, glance, this)
                   : EventHandler<&Farewell::look>::at(loop_, timer_, monotonicNow() + glance, glance, this);
        if (status < 0) leave();
    }

    void leave() { sd_event_exit(loop_, 0); }

    sd_event* loop_;
    sd_bus* bus_;
    TapServer& server_;
    std::optional<Time> by_;
    EventSource timer_;
};

bool prepareLoop(sd_event* loop) {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    int status = sigprocmask(SIG_BLOCK, &signals, nullptr) < 0 ? -errno : 0;
    if (status >= 0) status = sd_event_set_watchdog(loop, 1);
    if (status < 0) Log::error("Cannot set up the event loop", status);
    return status >= 0;
}

Bus connect(sd_event* loop) {
    sd_bus* opened = nullptr;
    int status = sd_bus_open_system(&opened);
    Bus bus(opened);
    if (status >= 0) status = sd_bus_attach_event(opened, loop, SD_EVENT_PRIORITY_NORMAL);
    // Without a bus nobody can open or revoke a tap; the kernel then gives
    // the keyboards back.
    if (status >= 0) status = sd_bus_set_exit_on_disconnect(opened, 1);
    if (status >= 0) return bus;
    Log::error("Cannot connect to the system bus", status);
    return {};
}

int run() {
    sd_event* created = nullptr;
    if (sd_event_new(&created) < 0) return failure;
    const Event loop(created);
    if (!prepareLoop(created)) return failure;
    const Bus bus = connect(created);
    if (!bus) return failure;

    GrantStore grants(GrantStore::standardFolder());
    LoginSessions sessions(created, bus.get());
    LinuxKeyboards keyboards(created);
    TapServer server(created, keyboards, sessions);
    TapAccess access(grants, sessions, server);
    KeyTapObject object(bus.get(), access);
    IdleExit idle(created, bus.get(), object, server);
    Farewell farewell(created, bus.get(), server);
    grants.onRevoked = [&] { access.enforce(); };
    server.onTapCountChange = [&] { idle.tapCountChanged(); };

    if (!grants.start(created) || !sessions.start() || !server.start() || !farewell.start() || !object.start())
        return failure;
    idle.arm();
    sd_notify(0, "READY=1");
    const int status = sd_event_loop(created);
    sd_notify(0, "STOPPING=1");
    return status == 0 ? 0 : failure;
}

}  // namespace
}  // namespace quillmere::tap

int main(int argc, char**) {
    if (argc > 1) {
        quillmere::tap::Log::error("quillmere-tapd takes no arguments");
        return quillmere::tap::usage;
    }
    return quillmere::tap::run();
}
