#pragma once

#include "TapService/Clock.h"
#include "TapService/Handles.h"

#include <concepts>
#include <cstdint>
#include <functional>

namespace quillmere::tap {

/// A member function as the handler of an event loop, with the object as its
/// data. Each of these makes `source`, in place of what it was before, and
/// returns a negative error number when the loop refuses; the handler is then
/// never called. The object must outlive the source.
template <auto member>
struct EventHandler {
    /// Called whenever `file` is ready for `events` (EPOLLIN and the like);
    /// with the readiness, if it takes one.
    template <class Object>
    static int onReady(sd_event* loop, EventSource& source, int file, std::uint32_t events, Object* object) {
        const auto handler = [](sd_event_source*, int, std::uint32_t readiness, void* data) {
            auto* const target = static_cast<Object*>(data);
            if constexpr (std::invocable<decltype(member), Object*, std::uint32_t>) {
                std::invoke(member, target, readiness);
            } else {
                std::invoke(member, target);
            }
            return 0;
        };
        sd_event_source* made = nullptr;
        const int status = sd_event_add_io(loop, &made, file, events, handler, object);
        source.reset(made);
        return status;
    }

    /// Called whenever something of `mask` (IN_DELETE and the like) happens to
    /// the file or folder; with the event, if it takes one.
    template <class Object>
    static int onChange(sd_event* loop, EventSource& source, const char* path, std::uint32_t mask, Object* object) {
        const auto handler = [](sd_event_source*, const inotify_event* event, void* data) {
            auto* const target = static_cast<Object*>(data);
            if constexpr (std::invocable<decltype(member), Object*, const inotify_event&>) {
                std::invoke(member, target, *event);
            } else {
                std::invoke(member, target);
            }
            return 0;
        };
        sd_event_source* made = nullptr;
        const int status = sd_event_add_inotify(loop, &made, path, mask, handler, object);
        source.reset(made);
        return status;
    }

    /// Called once, when `time` has come and up to `accuracy` later.
    template <class Object>
    static int at(sd_event* loop, EventSource& source, Time time, Time accuracy, Object* object) {
        const auto handler = [](sd_event_source*, std::uint64_t, void* data) {
            std::invoke(member, static_cast<Object*>(data));
            return 0;
        };
        sd_event_source* made = nullptr;
        const int status = sd_event_add_time(loop, &made, CLOCK_MONOTONIC, microseconds(time), microseconds(accuracy),
                                             handler, object);
        source.reset(made);
        return status;
    }
};

}  // namespace quillmere::tap
