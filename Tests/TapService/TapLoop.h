#pragma once

#include "TapService/Handles.h"

#include <chrono>
#include <functional>
#include <stdexcept>

namespace quillmere::tap {

/// An event loop that a test turns by hand.
class TapLoop {
public:
    TapLoop() {
        sd_event* loop = nullptr;
        if (sd_event_new(&loop) < 0) throw std::runtime_error("no event loop");
        loop_.reset(loop);
    }

    sd_event* get() const { return loop_.get(); }

    /// Handles what is ready now, until nothing more is.
    void run() {
        while (sd_event_run(loop_.get(), 0) > 0) {
        }
    }

    /// Runs until `condition` holds; false when it never does.
    bool runUntil(const std::function<bool()>& condition) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (!condition()) {
            if (std::chrono::steady_clock::now() > end) return false;
            sd_event_run(loop_.get(), 10'000);
        }
        return true;
    }

private:
    Event loop_;
};

}  // namespace quillmere::tap
