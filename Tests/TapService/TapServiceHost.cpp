#include "Tests/TapService/TapServiceHost.h"

#include "TapService/Handles.h"

#include <fcntl.h>
#include <sys/epoll.h>
#include <unistd.h>

#include <cstdint>
#include <future>
#include <stdexcept>
#include <utility>

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
    Service(const std::string& busAddress, const std::filesystem::path& state, tap::Time recordingLimit)
        : loop(makeLoop()),
          bus(connect(loop.get(), busAddress)),
          grants(state / "grants"),
          server(loop.get(), machine, sessions, recordingLimit) {
        sessions.sessions = {{"a", {getuid(), true, false}}, {"b", {getuid() + 1, false, false}}};
        grants.onRevoked = [this] { access.enforce(); };
        if (!grants.start(loop.get()) || !server.start() || !object.start())
            throw std::runtime_error("the service does not start");
        machine.plug(keyboard);
    }

    tap::Event loop;
    tap::Bus bus;
    tap::GrantStore grants;
    tap::FakeSessions sessions;
    tap::FakeMachine machine;
    tap::TapServer server;
    tap::TapAccess access{grants, sessions, server};
    tap::KeyTapObject object{bus.get(), access};
};

TapServiceHost::TapServiceHost(const std::string& busAddress, const std::filesystem::path& state,
                               tap::Time recordingLimit)
    : busAddress_(busAddress), state_(state), recordingLimit_(recordingLimit) {
    check(pipe2(wake_, O_CLOEXEC), "no pipe");
    thread_ = std::thread([this] { run(); });
    // The name is on the bus once the first job is done.
    perform([](Service&) {});
}

TapServiceHost::~TapServiceHost() {
    close(wake_[1]);
    thread_.join();
    close(wake_[0]);
}

void TapServiceHost::run() {
    Service service(busAddress_, state_, recordingLimit_);
    struct Context {
        TapServiceHost& host;
        Service& service;
    } context{*this, service};
    const auto handler = [](sd_event_source* source, int pipe, std::uint32_t, void* data) {
        auto* const here = static_cast<Context*>(data);
        char byte = 0;
        if (read(pipe, &byte, 1) != 1) return sd_event_exit(sd_event_source_get_event(source), 0);
        here->host.takeJob()(here->service);
        return 0;
    };
    check(sd_event_add_io(service.loop.get(), nullptr, wake_[0], EPOLLIN, handler, &context), "no jobs");
    check(sd_event_loop(service.loop.get()), "the loop broke");
}

std::function<void(TapServiceHost::Service&)> TapServiceHost::takeJob() {
    const std::lock_guard lock(mutex_);
    auto job = std::move(jobs_.front());
    jobs_.pop_front();
    return job;
}

void TapServiceHost::post(std::function<void(Service&)> job) {
    {
        const std::lock_guard lock(mutex_);
        jobs_.push_back(std::move(job));
    }
    check(write(wake_[1], "j", 1) == 1 ? 0 : -1, "the service has ended");
}

void TapServiceHost::perform(const std::function<void(Service&)>& job) {
    std::promise<void> done;
    post([&](Service& service) {
        job(service);
        done.set_value();
    });
    done.get_future().wait();
}

std::shared_ptr<void> TapServiceHost::stall() {
    auto end = std::make_unique<std::promise<void>>();
    std::promise<void> begun;
    post([&begun, ended = end->get_future().share()](Service&) {
        begun.set_value();
        ended.wait();
    });
    begun.get_future().wait();
    return {end.release(), [](std::promise<void>* promise) {
                promise->set_value();
                delete promise;
            }};
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
