#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace quillmere::bench {

using Clock = std::chrono::steady_clock;

/// Takes one sample, in microseconds; negative when what it waits for does not
/// happen.
using Sample = std::function<double()>;

/// So many samples of each, taken in turns, so that whatever else the machine
/// does meets all of them alike. Throws when one of `what` does not happen.
std::vector<std::vector<double>> takeInTurns(const std::string& what, int count, const std::vector<Sample>& samples);

/// Microseconds since then.
double since(Clock::time_point start);

void pause(double milliseconds);

}  // namespace quillmere::bench
