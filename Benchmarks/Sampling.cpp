#include "Benchmarks/Sampling.h"

#include <stdexcept>
#include <thread>

namespace quillmere::bench {

std::vector<std::vector<double>> takeInTurns(const std::string& what, int count, const std::vector<Sample>& samples) {
    std::vector<std::vector<double>> times(samples.size());
    for (int round = 0; round < count; ++round) {
        for (std::size_t i = 0; i < samples.size(); ++i) {
            times[i].push_back(samples[i]());
            if (times[i].back() < 0) throw std::runtime_error(what + ": nothing happened");
        }
    }
    return times;
}

double since(Clock::time_point start) {
    return std::chrono::duration<double, std::micro>(Clock::now() - start).count();
}

void pause(double milliseconds) {
    std::this_thread::sleep_for(std::chrono::duration<double, std::milli>(milliseconds));
}

}  // namespace quillmere::bench
