#include "Benchmarks/Moment.h"

namespace quillmere::bench {

namespace {

constexpr std::chrono::seconds patience{5};

}  // namespace

void Moment::note() {
    moment_ = std::chrono::nanoseconds(Clock::now().time_since_epoch()).count();
}

double Moment::await(Clock::time_point start) const {
    // Asleep meanwhile: a spinning typist would take the processor from those
    // who are being measured.
    while (moment_ == 0) {
        if (Clock::now() - start > patience) return -1;
        pause(0.2);
    }
    const std::chrono::nanoseconds began = start.time_since_epoch();
    return static_cast<double>(moment_ - began.count()) / 1000;
}

}  // namespace quillmere::bench
