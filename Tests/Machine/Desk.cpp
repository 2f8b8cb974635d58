#include "Tests/Machine/Desk.h"

#include "Tests/Machine/InputNode.h"
#include "Tests/Support/SupportError.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <sstream>

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace quillmere::machine {

using support::SupportError;

namespace {

constexpr const char* folder = "/dev/input";

}  // namespace

Desk::Desk() : watch_(inotify_init1(IN_CLOEXEC | IN_NONBLOCK)), stop_(eventfd(0, EFD_CLOEXEC)) {
    if (watch_ < 0 || stop_ < 0 || inotify_add_watch(watch_, folder, IN_CREATE | IN_ATTRIB) < 0)
        throw SupportError("cannot watch the input devices", errno);
    openNewDevices();
    thread_ = std::thread([this] { run(); });
}

Desk::~Desk() {
    eventfd_write(stop_, 1);
    thread_.join();
    for (const auto& [descriptor, device] : devices_)
        close(descriptor);
    close(watch_);
    close(stop_);
}

void Desk::leaveNewDevices() {
    const std::lock_guard lock(mutex_);
    opensNewDevices_ = false;
}

void Desk::clear() {
    const std::lock_guard lock(mutex_);
    events_.clear();
    hasLostEvents_ = false;
}

std::vector<DeskEvent> Desk::events() const {
    const std::lock_guard lock(mutex_);
    return events_;
}

std::vector<KeyStroke> Desk::strokes() const {
    const std::lock_guard lock(mutex_);
    std::vector<KeyStroke> result;
    for (const DeskEvent& event : events_)
        if (event.type == EV_KEY && event.value != 2) result.push_back({event.code, event.value == 1});
    return result;
}

std::size_t Desk::repeats(std::uint16_t code) const {
    const std::lock_guard lock(mutex_);
    return static_cast<std::size_t>(std::ranges::count_if(events_, [code](const DeskEvent& event) {
        return event.type == EV_KEY && event.code == code && event.value == 2;
    }));
}

std::set<std::uint16_t> Desk::keysDown() const {
    const std::lock_guard lock(mutex_);
    std::set<std::uint16_t> result;
    for (const auto& [descriptor, device] : devices_)
        result.insert(device.down.begin(), device.down.end());
    return result;
}

std::multiset<std::string> Desk::names(bool ofClones) const {
    const std::lock_guard lock(mutex_);
    std::multiset<std::string> result;
    for (const auto& [descriptor, device] : devices_)
        if (device.isClone == ofClones) result.insert(device.name);
    return result;
}

bool Desk::hasLostEvents() const {
    const std::lock_guard lock(mutex_);
    return hasLostEvents_;
}

void Desk::setLedOfClone(const std::string& device, std::uint16_t led, bool isOn) {
    const std::lock_guard lock(mutex_);
    const auto found = std::ranges::find_if(
        devices_, [&](const auto& entry) { return entry.second.isClone && entry.second.name == device; });
    const std::array events{input_event{.type = EV_LED, .code = led, .value = isOn ? 1 : 0},
                            input_event{.type = EV_SYN, .code = SYN_REPORT}};
    if (found == devices_.end() || write(found->first, events.data(), sizeof events) != ssize_t{sizeof events})
        throw SupportError("cannot set an LED of " + device, errno);
}

std::string Desk::describe() const {
    const std::lock_guard lock(mutex_);
    std::ostringstream text;
    for (const DeskEvent& event : events_) {
        if (event.type == EV_SYN || event.type == EV_MSC) continue;
        text << event.time.count() / 1'000'000 << " ms  type " << event.type << " code " << event.code << " value "
             << event.value << "  " << event.device << (event.isFromClone ? " (clone)" : "") << '\n';
    }
    std::string all = text.str();
    constexpr std::size_t shown = 4000;
    if (all.size() > shown) all = "...\n" + all.substr(all.find('\n', all.size() - shown) + 1);
    text.str({});
    text << all;
    for (const auto& [descriptor, device] : devices_)
        text << device.node << ' ' << device.name << (device.isClone ? " (clone)" : "") << ", " << device.down.size()
             << " keys down\n";
    return text.str();
}

void Desk::run() {
    for (;;) {
        std::vector<pollfd> waits{{stop_, POLLIN, 0}, {watch_, POLLIN, 0}};
        for (const auto& [descriptor, device] : devices_)
            waits.push_back({descriptor, POLLIN, 0});
        if (poll(waits.data(), waits.size(), -1) < 0 && errno != EINTR) return;
        if (waits[0].revents != 0) return;
        const std::lock_guard lock(mutex_);
        if (waits[1].revents != 0) openNewDevices();
        for (std::size_t i = 2; i < waits.size(); ++i)
            if (waits[i].revents != 0) readDevice(waits[i].fd);
    }
}

void Desk::openNewDevices() {
    std::array<char, 4096> news{};
    while (read(watch_, news.data(), news.size()) > 0) {
    }
    if (!opensNewDevices_) return;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        if (entry.path().filename().string().starts_with("event")) openDevice(entry.path());
}

void Desk::openDevice(const std::string& node) {
    const bool isOpen = std::ranges::any_of(devices_, [&](const auto& entry) { return entry.second.node == node; });
    if (isOpen) return;
    const int descriptor = open(node.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) return;  // gone again, or the next news will tell
    const int clock = CLOCK_MONOTONIC;
    ioctl(descriptor, EVIOCSCLOCKID, &clock);
    devices_.emplace(descriptor, Device{deviceName(descriptor), node, isClone(descriptor), {}});
}

void Desk::readDevice(int descriptor) {
    const auto found = devices_.find(descriptor);
    if (found == devices_.end()) return;
    std::array<input_event, 64> events{};
    for (;;) {
        const ssize_t size = read(descriptor, events.data(), sizeof events);
        if (size < 0 && errno == EAGAIN) return;
        if (size <= 0) break;
        for (std::size_t i = 0; i < static_cast<std::size_t>(size) / sizeof(input_event); ++i)
            take(found->second, events.at(i));
    }
    close(descriptor);
    devices_.erase(found);
    // Its number may have been given to another device by now.
    openNewDevices();
}

void Desk::take(Device& device, const input_event& event) {
    if (event.type == EV_SYN && event.code == SYN_DROPPED) hasLostEvents_ = true;
    if (event.type == EV_KEY && event.value == 1) device.down.insert(event.code);
    if (event.type == EV_KEY && event.value == 0) device.down.erase(event.code);
    const std::chrono::nanoseconds time =
        std::chrono::seconds(event.input_event_sec) + std::chrono::microseconds(event.input_event_usec);
    // Of two devices with news the one that happens to be read first need not
    // be the one that was first.
    events_.insert(std::ranges::upper_bound(events_, time, {}, &DeskEvent::time),
                   {device.name, device.isClone, event.type, event.code, event.value, time});
}

}  // namespace quillmere::machine
