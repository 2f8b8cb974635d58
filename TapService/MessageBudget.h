#pragma once

#include "TapService/TapPorts.h"

#include <algorithm>
#include <chrono>

namespace quillmere::tap {

/// How much a program may say. A real one changes its interest now and then;
/// one that floods the service would take its time from the keyboards.
class MessageBudget {
public:
    static constexpr double burst = 256;
    static constexpr double perSecond = 64;

    explicit MessageBudget(Time now) : updated_(now) {}

    /// Pays for one message; false when there is nothing left.
    bool spend(Time now) {
        const std::chrono::duration<double> passed = now - updated_;
        left_ = std::min(burst, left_ + passed.count() * perSecond);
        updated_ = now;
        if (left_ < 1) return false;
        left_ -= 1;
        return true;
    }

private:
    double left_ = burst;
    Time updated_;
};

}  // namespace quillmere::tap
