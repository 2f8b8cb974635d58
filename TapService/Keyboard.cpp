#include "TapService/Keyboard.h"

#include "TapService/Clock.h"
#include "TapService/DeviceNode.h"
#include "TapService/EventHandler.h"
#include "TapService/KeyRole.h"
#include "TapService/Log.h"

#include <libevdev/libevdev.h>
#include <linux/input.h>
#include <sys/epoll.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

namespace quillmere::tap {

namespace {

void setBit(Keyboard::Bits& bits, std::size_t code) {
    bits.at(code / 8) |= static_cast<unsigned char>(1U << (code % 8));
}

bool hasBit(const Keyboard::Bits& bits, std::size_t code) {
    return (bits.at(code / 8) & (1U << (code % 8))) != 0;
}

KeySet keysDown(const libevdev* device) {
    KeySet down;
    for (unsigned int code = 0; code < keyCodeLimit; ++code)
        down.set(code, libevdev_get_event_value(device, EV_KEY, code) != 0);
    return down;
}

Time timeOf(const input_event& event) {
    return std::chrono::seconds(event.input_event_sec) + std::chrono::microseconds(event.input_event_usec);
}

}  // namespace

void Keyboard::FreeDevice::operator()(libevdev* device) const {
    libevdev_free(device);
}

Keyboard::Keyboard(sd_event* loop, std::string node, std::string path, Handlers handlers)
    : loop_(loop), node_(std::move(node)), path_(std::move(path)), handlers_(std::move(handlers)) {}

Keyboard::~Keyboard() {
    close();
}

std::optional<KeySet> Keyboard::keysOf(const std::string& node, const std::string& path) {
    const FileDescriptor file = openDeviceNode(node, path);
    libevdev* opened = nullptr;
    if (!file || libevdev_new_from_fd(file.get(), &opened) < 0) return std::nullopt;
    const Device device(opened);
    KeySet keys;
    for (unsigned int code = 0; code < keyCodeLimit; ++code)
        keys.set(code, libevdev_has_event_code(opened, EV_KEY, code) != 0);
    return keys;
}

std::optional<KeySet> Keyboard::open() {
    file_ = openDeviceNode(node_, path_);
    libevdev* opened = nullptr;
    int status = file_ ? libevdev_new_from_fd(file_.get(), &opened) : -errno;
    device_.reset(opened);
    // To say what is down the kernel drops what is waiting to be read.
    if (status >= 0) stateFile_ = openDeviceNode(node_, path_);
    if (status >= 0 && !stateFile_) status = -errno;
    // The default is the wall clock, which jumps.
    if (status >= 0) status = libevdev_set_clock_id(opened, CLOCK_MONOTONIC);
    if (status >= 0) status = EventHandler<&Keyboard::read>::onReady(loop_, source_, file_.get(), EPOLLIN, this);
    // Before anything that a client could keep the service busy with.
    if (status >= 0) status = sd_event_source_set_priority(source_.get(), SD_EVENT_PRIORITY_IMPORTANT);
    if (status >= 0) setMask(stateFile_, EV_SYN, {});
    if (status < 0) {
        Log::warning("Cannot read " + node_, status);
        close();
        return std::nullopt;
    }
    return keysDown(opened);
}

void Keyboard::close() {
    if (isGrabbed_) ungrab(true);
    source_.reset();
    device_.reset();
    stateFile_.reset();
    file_.reset();
}

void Keyboard::read() {
    bool isResynchronizing = false;
    // An event may close this.
    while (device_ && readOne(isResynchronizing)) {
    }
}

bool Keyboard::readOne(bool& isResynchronizing) {
    input_event raw{};
    const auto flag = isResynchronizing ? LIBEVDEV_READ_FLAG_SYNC : LIBEVDEV_READ_FLAG_NORMAL;
    const int status = libevdev_next_event(device_.get(), flag, &raw);
    if (status == -EAGAIN) return std::exchange(isResynchronizing, false);
    if (status < 0) {
        gone();
        return false;
    }
    const bool isDifference = status == LIBEVDEV_READ_STATUS_SYNC;
    if (isDifference && raw.type == EV_SYN && raw.code == SYN_DROPPED) {
        // The kernel's buffer has overflown. What has changed meanwhile comes
        // as events that happen now.
        isResynchronizing = true;
        return true;
    }
    handlers_.onEvent({raw.type, raw.code, raw.value, isDifference ? monotonicNow() : timeOf(raw)});
    return true;
}

void Keyboard::gone() {
    // Or the loop would call for it without end.
    source_.reset();
    isGrabbed_ = false;
    const auto onGone = handlers_.onGone;
    onGone();
}

bool Keyboard::isQuiet() const {
    if (libevdev_has_event_pending(device_.get()) != 0) return false;
    Bits down{};
    if (::ioctl(stateFile_.get(), EVIOCGKEY(down.size()), down.data()) < 0) return false;
    return std::ranges::all_of(down, [](unsigned char byte) { return byte == 0; });
}

/// As the kernel says; what was read so far may be older.
KeySet Keyboard::keysDownNow() const {
    Bits bits{};
    KeySet down;
    if (::ioctl(stateFile_.get(), EVIOCGKEY(bits.size()), bits.data()) < 0) return down;
    for (std::size_t code = 0; code < keyCodeLimit; ++code)
        down.set(code, hasBit(bits, code));
    return down;
}

void Keyboard::hearFnOnly() {
    Bits types{};
    setBit(types, EV_KEY);
    Bits keys{};
    for (const std::uint16_t code : flagKeys)
        if (roleOf(code) == KeyRole::fn) setBit(keys, code);
    // The keys first: in between, a key more is heard and none less.
    setMask(file_, EV_KEY, keys);
    setMask(file_, EV_SYN, types);
}

KeySet Keyboard::hearAll() {
    Bits all{};
    all.fill(0xff);
    // The mask of "reports" is the one of the types of events.
    setMask(file_, EV_SYN, all);
    setMask(file_, EV_KEY, all);
    return keysDownNow();
}

void Keyboard::setMask(const FileDescriptor& file, std::uint16_t type, const Bits& bits) {
    const input_mask mask{.type = type,
                          .codes_size = static_cast<std::uint32_t>(bits.size()),
                          .codes_ptr = reinterpret_cast<std::uintptr_t>(bits.data())};
    // An old kernel knows no masks: every key wakes the service there, and is
    // dropped.
    if (::ioctl(file.get(), EVIOCSMASK, &mask) < 0) return;
}

std::optional<Time> Keyboard::grab() {
    if (!isQuiet()) return std::nullopt;
    const Time since = monotonicNow();
    if (const int status = libevdev_grab(device_.get(), LIBEVDEV_GRAB); status < 0) {
        if (!std::exchange(hasComplained_, true)) Log::notice("Cannot hold back keys of " + node_, status);
        return std::nullopt;
    }
    isGrabbed_ = true;
    // A key may just have gone down, and everybody has seen it.
    if (isQuiet()) return since;
    ungrab(true);
    return std::nullopt;
}

std::optional<Time> Keyboard::ungrab(bool force) {
    if (!force && libevdev_has_event_pending(device_.get()) != 0) return std::nullopt;
    // Everybody gets the events from the beginning of the call on, although it
    // returns some ten milliseconds later only (the kernel waits for all
    // processors).
    const Time until = monotonicNow();
    // It fails only for a device that has gone, and whose grab has gone with it.
    libevdev_grab(device_.get(), LIBEVDEV_UNGRAB);
    isGrabbed_ = false;
    return until;
}

Lights Keyboard::lights() const {
    Lights lights;
    for (unsigned int code = 0; code < LED_CNT; ++code)
        lights.set(code, libevdev_get_event_value(device_.get(), EV_LED, code) != 0);
    return lights;
}

void Keyboard::set(std::uint16_t type, std::uint16_t code, std::int32_t value) {
    std::array<input_event, 2> events{};
    events[0].type = type;
    events[0].code = code;
    events[0].value = value;
    events[1].type = EV_SYN;
    events[1].code = SYN_REPORT;
    // A light that cannot be set is no reason to do anything.
    if (file_ && ::write(file_.get(), events.data(), sizeof events) < 0) return;
}

}  // namespace quillmere::tap
