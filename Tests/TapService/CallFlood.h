#pragma once

#include <atomic>
#include <string>
#include <thread>

namespace quillmere {

/// A program on the bus that asks the service for its access as fast as it can
/// and does not wait for answers, until it is destroyed.
class CallFlood {
public:
    explicit CallFlood(const std::string& busAddress);

    /// How many calls the bus has taken so far.
    long sent() const { return sent_; }

private:
    void run(const std::stop_token& stop, const std::string& busAddress);

    std::atomic<long> sent_ = 0;
    std::jthread thread_;
};

}  // namespace quillmere
