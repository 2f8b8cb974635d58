#include "Tests/App/TapServiceHost.h"

#include "TapService/Handles.h"

#include <poll.h>
#include <sys/epoll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <future>
#include <stdexcept>

namespace quillmere {

namespace {

constexpr tap::DeviceId keyboard = 1;

void check(int status, const char* what) {
    if (status < 0) throw std::runtime_error(what);
}

tap::Event makeLoop() {
    sd_event* loop = nullptr;
    check(sd_event_new(&loop), "no event loop");
    return tap::Event(loop);
}

tap::Bus connect(sd_event* loop, const std::string& address) {
    sd_bus* bus = nullptr;
    check(sd_bus_new(&bus), "no bus");
    tap::Bus owner(bus);
    check(sd_bus_set_address(bus, address.c_str()), "no bus address");
    check(sd_bus_set_bus_client(bus, 1), "no bus client");
    check(sd_bus_start(bus), "no connection to the bus");
    check(sd_bus_attach_event(bus, loop, SD_EVENT_PRIORITY_NORMAL), "no loop for the bus");
    return owner;
}

}  // namespace

struct TapServiceHost::Service {
    Service(const std::string& busAddress, const std::filesystem::path& state)
        : loop(makeLoop()), bus(connect(loop.get(), busAddress)), grants(state / "grants") {
        sessions.sessions = {{"a", {getuid(), true, false}}, {"b", {getuid() + 1, false, false}}};
        grants.onRevoked = [this] { server.closeTaps([this](uid_t user) { return grants.isGranted(user); }); };
        if (!grants.start(loop.get()) || !server.start() || !object.start())
            throw std::runtime_error("the service does not start");
        machine.plug(keyboard);
    }

    tap::Event loop;
    tap::Bus bus;
    tap::GrantStore grants;
    tap::FakeSessions sessions;
    tap::FakeMachine machine;
    tap::TapServer server{loop.get(), machine, sessions};
    tap::KeyTapObject object{bus.get(), grants, sessions, server};
};

TapServiceHost::TapServiceHost(const std::string& busAddress, const std::filesystem::path& state)
    : busAddress_(busAddress), state_(state) {
    check(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, requests_), "no socket pair");
    thread_ = std::thread([this] { run(); });
    // The name is on the bus once the first job is done.
    perform([](Service&) {});
}

TapServiceHost::~TapServiceHost() {
    shutdown(requests_[0], SHUT_WR);
    thread_.join();
    close(requests_[0]);
    close(requests_[1]);
}

void TapServiceHost::run() {
    Service service(busAddress_, state_);
    struct Context {
        Service& service;
        int requests;
    } context{service, requests_[1]};
    const auto handler = [](sd_event_source* source, int, std::uint32_t, void* data) {
        auto* const here = static_cast<Context*>(data);
        const std::function<void(Service&)>* job = nullptr;
        if (recv(here->requests, &job, sizeof job, 0) != ssize_t{sizeof job})
            return sd_event_exit(sd_event_source_get_event(source), 0);
        (*job)(here->service);
        return 0;
    };
    check(sd_event_add_io(service.loop.get(), nullptr, requests_[1], EPOLLIN, handler, &context), "no requests");
    check(sd_event_loop(service.loop.get()), "the loop broke");
}

void TapServiceHost::perform(const std::function<void(Service&)>& job) {
    std::promise<void> done;
    const std::function<void(Service&)> whole = [&](Service& service) {
        job(service);
        done.set_value();
    };
    const std::function<void(Service&)>* const address = &whole;
    check(send(requests_[0], &address, sizeof address, 0) < 0 ? -1 : 0, "the service has ended");
    done.get_future().wait();
}

void TapServiceHost::grant() {
    perform([](Service& service) { service.grants.grant(getuid()); });
}

void TapServiceHost::revoke() {
    perform([](Service& service) { service.grants.revoke(getuid()); });
}

bool TapServiceHost::isGranted() {
    bool result = false;
    perform([&](Service& service) { result = service.grants.isGranted(getuid()); });
    return result;
}

void TapServiceHost::activate(const std::string& session) {
    perform([&](Service& service) { service.sessions.activate(session); });
}

void TapServiceHost::type(const std::string& words) {
    perform([&](Service& service) { service.machine.type(keyboard, words); });
}

std::string TapServiceHost::output() {
    std::string result;
    perform([&](Service& service) { result = service.machine.fakes.output; });
    return result;
}

bool TapServiceHost::isGrabbed() {
    bool result = false;
    perform([&](Service& service) { result = service.machine.keyboard(keyboard).isGrabbed; });
    return result;
}

std::size_t TapServiceHost::tapCount() {
    std::size_t result = 0;
    perform([&](Service& service) { result = service.server.tapCount(); });
    return result;
}

bool TapServiceHost::isBusy() {
    bool result = false;
    perform([&](Service& service) { result = service.object.isBusy(); });
    return result;
}

}  // namespace quillmere
