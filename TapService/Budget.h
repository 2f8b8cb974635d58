#pragma once

#include "TapService/TapPorts.h"

#include <algorithm>
#include <chrono>

namespace quillmere::tap {

/// How much of something may be asked for: `burst` at once, `perSecond` in the
/// long run.
class Budget {
public:
    Budget(double burst, double perSecond, Time now)
        : burst_(burst), perSecond_(perSecond), left_(burst), updated_(now) {}

    /// Pays for one; false when there is nothing left.
    bool spend(Time now) {
        const std::chrono::duration<double> passed = now - updated_;
        left_ = std::min(burst_, left_ + passed.count() * perSecond_);
        updated_ = now;
        if (left_ < 1) return false;
        left_ -= 1;
        return true;
    }

private:
    double burst_;
    double perSecond_;
    double left_;
    Time updated_;
};

}  // namespace quillmere::tap
