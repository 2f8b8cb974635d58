#include "TapService/ReaderWatch.h"

#include "TapService/Clock.h"
#include "TapService/Log.h"

#include <sys/inotify.h>

#include <utility>

namespace quillmere::tap {

namespace {

using namespace std::chrono_literals;

// After opening a node a desktop asks what it belongs to and drops what has
// been sent so far; logind says for which keys it waits.
constexpr Time openingTakes = 50ms;
// After its first look a desktop still has lights to set.
constexpr Time settlingTakes = 200ms;

}  // namespace

ReaderWatch::ReaderWatch(sd_event* loop, Handlers handlers) : loop_(loop), handlers_(std::move(handlers)) {}

void ReaderWatch::begin() {
    wakeIn(endTimer_, longestWait, [](sd_event_source*, std::uint64_t, void* self) {
        static_cast<ReaderWatch*>(self)->finish();
        return 0;
    });
}

void ReaderWatch::appeared(const std::string& node) {
    if (notices_ || isRead_) return;
    watch(node);
    begin();
    // It may have been opened before it was watched.
    probe();
}

void ReaderWatch::watch(const std::string& node) {
    sd_event_source* source = nullptr;
    const auto handler = [](sd_event_source*, const inotify_event* event, void* self) {
        static_cast<ReaderWatch*>(self)->noticed(event->mask);
        return 0;
    };
    const int status = sd_event_add_inotify(loop_, &source, node.c_str(), IN_OPEN | IN_ACCESS, handler, this);
    notices_.reset(source);
    if (status < 0) Log::warning("Cannot see who reads " + node, status);
}

void ReaderWatch::noticed(std::uint32_t what) {
    if ((what & IN_ACCESS) == 0) return probe();
    isRead_ = true;
    notices_.reset();
    probeTimer_.reset();
    wakeIn(endTimer_, settlingTakes, [](sd_event_source*, std::uint64_t, void* self) {
        static_cast<ReaderWatch*>(self)->finish();
        return 0;
    });
}

void ReaderWatch::probe() {
    wakeIn(probeTimer_, openingTakes, [](sd_event_source*, std::uint64_t, void* self) {
        static_cast<ReaderWatch*>(self)->handlers_.onProbe();
        return 0;
    });
}

void ReaderWatch::finish() {
    notices_.reset();
    probeTimer_.reset();
    isRead_ = true;
    // A copy, since this may be destroyed by what follows.
    const auto onReady = handlers_.onReady;
    onReady();
}

void ReaderWatch::wakeIn(EventSource& timer, Time delay, sd_event_time_handler_t handler) {
    sd_event_source* source = nullptr;
    const std::uint64_t time = microseconds(monotonicNow() + delay);
    const int status = sd_event_add_time(loop_, &source, CLOCK_MONOTONIC, time, 1000, handler, this);
    timer.reset(source);
    if (status < 0) Log::warning("Cannot set a timer", status);
}

}  // namespace quillmere::tap
