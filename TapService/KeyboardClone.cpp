#include "TapService/KeyboardClone.h"

#include "TapService/Clock.h"
#include "TapService/CloneOutput.h"
#include "TapService/EventHandler.h"
#include "TapService/Log.h"

#include <fcntl.h>
#include <libevdev/libevdev-uinput.h>
#include <libevdev/libevdev.h>
#include <linux/input.h>
#include <linux/uinput.h>
#include <sys/epoll.h>
#include <sys/ioctl.h>

#include <array>
#include <cerrno>
#include <utility>

namespace quillmere::tap {

namespace {

// Only as long as nobody reports a frame; no device has as many axes and keys.
constexpr std::size_t longestFrame = 1024;

input_event rawEvent(const InputEvent& event) {
    input_event raw{};
    // Kernels from 6.7 on keep the time of what happened; older ones stamp the
    // event anew.
    const auto seconds = std::chrono::floor<std::chrono::seconds>(event.time);
    raw.input_event_sec = seconds.count();
    raw.input_event_usec = std::chrono::floor<std::chrono::microseconds>(event.time - seconds).count();
    raw.type = event.type;
    raw.code = event.code;
    raw.value = event.value;
    return raw;
}

}  // namespace

void KeyboardClone::FreeDevice::operator()(libevdev_uinput* device) const {
    libevdev_uinput_destroy(device);
}

KeyboardClone::KeyboardClone(sd_event* loop, Handlers handlers)
    : loop_(loop),
      handlers_(std::move(handlers)),
      readers_(loop, {.onProbe = [this] { probe(); }, .onReady = [this] { becomeReady(); }}) {}

KeyboardClone::~KeyboardClone() = default;

std::unique_ptr<KeyboardClone> KeyboardClone::make(sd_event* loop, libevdev* original, Handlers handlers) {
    if (libevdev_has_event_type(original, EV_SW) != 0) return nullptr;
    std::unique_ptr<KeyboardClone> clone(new KeyboardClone(loop, std::move(handlers)));
    if (!clone->create(original) || !clone->watchOutput()) return nullptr;
    clone->copyRepeat(original);
    clone->readers_.begin();
    return clone;
}

bool KeyboardClone::create(libevdev* original) {
    file_ = FileDescriptor(::open("/dev/uinput", O_RDWR | O_NONBLOCK | O_CLOEXEC));
    if (!file_ || ::ioctl(file_.get(), UI_SET_PHYS, mark) < 0) {
        Log::warning("Cannot use /dev/uinput, so no key can be held back", errno);
        return false;
    }
    // uinput wants to be told how to play effects, which no keyboard has.
    libevdev_disable_event_type(original, EV_FF);
    libevdev_enable_event_code(original, EV_KEY, CloneOutput::fillerKey, nullptr);
    libevdev_enable_event_code(original, EV_MSC, MSC_SCAN, nullptr);
    libevdev_uinput* device = nullptr;
    const int status = libevdev_uinput_create_from_device(original, file_.get(), &device);
    device_.reset(device);
    if (status < 0) Log::warning("Cannot make a virtual keyboard", status);
    return status >= 0;
}

void KeyboardClone::copyRepeat(const libevdev* original) {
    int delay = 0;
    int period = 0;
    if (libevdev_get_repeat(original, &delay, &period) < 0) return;
    const Time now = monotonicNow();
    forward({EV_REP, REP_DELAY, delay, now});
    forward({EV_REP, REP_PERIOD, period, now});
    forward({EV_SYN, SYN_REPORT, 0, now});
}

std::string KeyboardClone::path() const {
    const char* path = libevdev_uinput_get_syspath(device_.get());
    return path == nullptr ? "" : path;
}

bool KeyboardClone::watchOutput() {
    const int status = EventHandler<&KeyboardClone::readOutput>::onReady(loop_, output_, file_.get(), EPOLLIN, this);
    if (status < 0) Log::warning("Cannot watch a virtual keyboard", status);
    return status >= 0;
}

void KeyboardClone::readOutput() {
    std::array<input_event, 16> events{};
    const ssize_t size = ::read(file_.get(), events.data(), sizeof events);
    if (size < 0) {
        if (errno != EAGAIN && errno != EINTR) output_.reset();
        return;
    }
    const auto count = static_cast<std::size_t>(size) / sizeof(input_event);
    for (std::size_t index = 0; index < count; ++index)
        handleOutput(events.at(index));
}

void KeyboardClone::handleOutput(const input_event& event) {
    if (event.type == EV_LED && event.code < LED_CNT) lights_.set(event.code, event.value != 0);
    if (event.type == EV_LED || event.type == EV_SND) handlers_.onOutput(event.type, event.code, event.value);
}

void KeyboardClone::appeared() {
    const char* node = libevdev_uinput_get_devnode(device_.get());
    if (node != nullptr && !isReady_) readers_.appeared(node);
}

/// The scan code of no key: a desktop reads it, and does nothing.
void KeyboardClone::probe() {
    const Time now = monotonicNow();
    forward({EV_MSC, MSC_SCAN, 0, now});
    forward({EV_SYN, SYN_REPORT, 0, now});
}

void KeyboardClone::becomeReady() {
    isReady_ = true;
    // A copy: the clone may be destroyed by what follows.
    const auto onReady = handlers_.onReady;
    onReady();
}

void KeyboardClone::tap(std::uint16_t key) {
    const Time now = monotonicNow();
    for (const std::int32_t value : {1, 0}) {
        forward({EV_KEY, key, value, now});
        forward({EV_SYN, SYN_REPORT, 0, now});
    }
}

void KeyboardClone::forward(const InputEvent& event) {
    frame_.push_back(rawEvent(event));
    const bool isReport = event.type == EV_SYN && event.code == SYN_REPORT;
    if (isReport || frame_.size() >= longestFrame) write();
}

void KeyboardClone::write() {
    // One call for a frame: half the cost of one for each event.
    const std::size_t size = frame_.size() * sizeof(input_event);
    const ssize_t written = ::write(file_.get(), frame_.data(), size);
    frame_.clear();
    if (written == static_cast<ssize_t>(size) || std::exchange(hasFailed_, true)) return;
    Log::warning("Cannot send through a virtual keyboard", written < 0 ? errno : EIO);
}

}  // namespace quillmere::tap
