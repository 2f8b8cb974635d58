#include "TapService/ReaderWatch.h"

#include "TapService/Clock.h"
#include "TapService/EventHandler.h"
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
    wakeIn<&ReaderWatch::finish>(endTimer_, longestWait);
}

void ReaderWatch::appeared(const std::string& node) {
    if (notices_ || isRead_) return;
    watch(node);
    begin();
    // It may have been opened before it was watched.
    probe();
}

void ReaderWatch::watch(const std::string& node) {
    const int status =
        EventHandler<&ReaderWatch::noticed>::onChange(loop_, notices_, node.c_str(), IN_OPEN | IN_ACCESS, this);
    if (status < 0) Log::warning("Cannot see who reads " + node, status);
}

void ReaderWatch::noticed(const inotify_event& event) {
    if ((event.mask & IN_ACCESS) == 0) return probe();
    isRead_ = true;
    notices_.reset();
    probeTimer_.reset();
    wakeIn<&ReaderWatch::finish>(endTimer_, settlingTakes);
}

void ReaderWatch::probe() {
    wakeIn<&ReaderWatch::sendProbe>(probeTimer_, openingTakes);
}

void ReaderWatch::sendProbe() {
    handlers_.onProbe();
}

void ReaderWatch::finish() {
    notices_.reset();
    probeTimer_.reset();
    isRead_ = true;
    // A copy, since this may be destroyed by what follows.
    const auto onReady = handlers_.onReady;
    onReady();
}

template <auto member>
void ReaderWatch::wakeIn(EventSource& timer, Time delay) {
    constexpr Time accuracy = 1ms;
    const int status = EventHandler<member>::at(loop_, timer, monotonicNow() + delay, accuracy, this);
    if (status < 0) Log::warning("Cannot set a timer", status);
}

}  // namespace quillmere::tap
