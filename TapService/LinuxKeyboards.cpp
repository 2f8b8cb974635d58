#include "TapService/LinuxKeyboards.h"

#include "TapService/Clock.h"
#include "TapService/EventHandler.h"
#include "TapService/Log.h"

#include <systemd/sd-daemon.h>

#include <algorithm>
#include <cerrno>
#include <ranges>

namespace quillmere::tap {

namespace {

// How long a desktop takes to light what was locked.
constexpr Time lightsTake = std::chrono::milliseconds(300);

// To close or to give back a device the kernel waits for all processors, some
// ten milliseconds each time and far more on a busy machine. Many devices in a
// row must not look like a service that hangs.
void showProgress() {
    sd_notify(0, "WATCHDOG=1");
}

}  // namespace

LinuxKeyboards::LinuxKeyboards(sd_event* loop)
    : loop_(loop),
      monitor_({
          .onFound = [this](const std::string& path, const std::string& node) { found(path, node); },
          .onRemoved = [this](const std::string& path) { removed(path); },
          .onClone = [this](const std::string& path) { cloneAppeared(path); },
      }) {}

bool LinuxKeyboards::start(KeyboardSink& sink) {
    sink_ = &sink;
    return monitor_.start(loop_);
}

void LinuxKeyboards::found(const std::string& path, const std::string& node) {
    const std::optional<KeySet> keys = Keyboard::keysOf(node, path);
    if (!keys) {
        Log::warning("Cannot ask " + node + " for its keys", errno);
        return;
    }
    for (const auto& [id, entry] : entries_) {
        if (entry.path != path || entry.isRemoved) continue;
        if (entry.keys == *keys) return;
        // Its keys were renamed, as udev does on request: a new device.
        remove(id);
        break;
    }
    const DeviceId id = ++lastId_;
    Keyboard::Handlers handlers{
        .onEvent = [this, id](const InputEvent& event) { sink_->deviceEvent(id, event); },
        .onGone = [this, id] { remove(id); },
    };
    Entry& entry = entries_[id];
    entry.path = path;
    entry.keys = *keys;
    entry.keyboard = std::make_unique<Keyboard>(loop_, node, path, std::move(handlers));
    sink_->deviceAdded(id, *keys);
}

void LinuxKeyboards::removed(const std::string& path) {
    const auto entry = std::ranges::find_if(entries_, [&path](const auto& candidate) {
        return candidate.second.path == path && !candidate.second.isRemoved;
    });
    if (entry != entries_.end()) remove(entry->first);
}

void LinuxKeyboards::remove(DeviceId device) {
    const auto entry = entries_.find(device);
    if (entry == entries_.end() || entry->second.isRemoved) return;
    entry->second.isRemoved = true;
    sink_->deviceRemoved(device);
}

void LinuxKeyboards::cloneAppeared(const std::string& path) {
    for (const Entry& entry : entries_ | std::views::values) {
        if (entry.clone && entry.clone->path() == path) entry.clone->appeared();
    }
}

void LinuxKeyboards::dropClones() {
    bool isAny = false;
    for (Entry& entry : entries_ | std::views::values) {
        entry.cloneIsUnneeded = entry.clone && !entry.keyboard->isGrabbed();
        isAny = isAny || entry.cloneIsUnneeded;
    }
    if (!isAny || dropping_) return;
    sd_event_source* source = nullptr;
    const auto handler = [](sd_event_source*, void* data) {
        static_cast<LinuxKeyboards*>(data)->dropOneClone();
        return 0;
    };
    if (sd_event_add_defer(loop_, &source, handler, this) < 0) return;
    dropping_.reset(source);
    sd_event_source_set_enabled(source, SD_EVENT_ON);
}

// One in each turn of the loop, since the kernel takes its time.
void LinuxKeyboards::dropOneClone() {
    const auto entries = entries_ | std::views::values;
    const auto entry = std::ranges::find_if(entries, &Entry::cloneIsUnneeded);
    if (entry == entries.end()) {
        dropping_.reset();
        return;
    }
    (*entry).cloneIsUnneeded = false;
    (*entry).lockCheck.reset();
    (*entry).clone.reset();
    showProgress();
}

std::optional<KeySet> LinuxKeyboards::open(DeviceId device) {
    return entries_.at(device).keyboard->open();
}

void LinuxKeyboards::close(DeviceId device) {
    entries_.at(device).keyboard->close();
    showProgress();
}

void LinuxKeyboards::hearFnOnly(DeviceId device) {
    entries_.at(device).keyboard->hearFnOnly();
}

KeySet LinuxKeyboards::hearAll(DeviceId device) {
    return entries_.at(device).keyboard->hearAll();
}

CloneState LinuxKeyboards::prepareClone(DeviceId device) {
    Entry& entry = entries_.at(device);
    entry.cloneIsUnneeded = false;
    if (!entry.clone && !makeClone(device, entry)) return CloneState::failed;
    return entry.clone->isReady() ? CloneState::ready : CloneState::making;
}

bool LinuxKeyboards::makeClone(DeviceId device, Entry& entry) {
    KeyboardClone::Handlers handlers{
        .onReady = [this, device] { sink_->cloneMade(device, true); },
        .onOutput = [keyboard = entry.keyboard.get()](std::uint16_t type, std::uint16_t code,
                                                      std::int32_t value) { keyboard->set(type, code, value); },
    };
    entry.clone = KeyboardClone::make(loop_, entry.keyboard->description(), std::move(handlers));
    entry.locks = std::make_unique<LockCarrier>([clone = entry.clone.get()](std::uint16_t key) { clone->tap(key); });
    return entry.clone != nullptr;
}

std::optional<Time> LinuxKeyboards::grab(DeviceId device) {
    Entry& entry = entries_.at(device);
    const std::optional<Time> since = entry.keyboard->grab();
    if (since) takeLocksOver(entry);
    return since;
}

void LinuxKeyboards::Entry::checkLocks() {
    if (keyboard->isGrabbed() && clone) locks->check(keyboard->lights());
}

void LinuxKeyboards::takeLocksOver(Entry& entry) {
    if (!entry.locks->takeOver(entry.keyboard->lights(), entry.clone->lights())) return;
    constexpr Time accuracy = std::chrono::milliseconds(1);
    EventHandler<&Entry::checkLocks>::at(loop_, entry.lockCheck, monotonicNow() + lightsTake, accuracy, &entry);
}

std::optional<Time> LinuxKeyboards::ungrab(DeviceId device, bool force) {
    const auto until = entries_.at(device).keyboard->ungrab(force);
    showProgress();
    return until;
}

void LinuxKeyboards::forward(DeviceId device, const InputEvent& event) {
    Entry& entry = entries_.at(device);
    if (!entry.clone) return;
    if (event.type == EV_KEY) entry.locks->pressed(event.code);
    entry.clone->forward(event);
}

void LinuxKeyboards::forget(DeviceId device) {
    entries_.erase(device);
    showProgress();
}

}  // namespace quillmere::tap
