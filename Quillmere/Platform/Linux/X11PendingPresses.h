#pragma once

#include <algorithm>
#include <chrono>
#include <optional>
#include <vector>

namespace quillmere {

/// Presses of interest that the raw feed has told and that no grab of ours has
/// delivered yet. Normally the grab's event is right behind. It never comes
/// while another client has the keyboard (an open menu) or the combination,
/// and may come late when that client had only stopped the keyboard.
class X11PendingPresses {
public:
    using Clock = std::chrono::steady_clock;

    /// The same press has the same server time in the raw feed and the grab.
    struct Press {
        unsigned int keyCode = 0;
        unsigned long time = 0;
        unsigned int modifiers = 0;

        bool isSame(unsigned int otherKeyCode, unsigned long otherTime) const {
            return keyCode == otherKeyCode && time == otherTime;
        }
    };

    /// The raw feed has told this press.
    void add(const Press& press) { waiting_.push_back({press, Clock::now() + patience}); }

    /// The grab has delivered a press. True when it was already taken as
    /// missing, so that it must not count twice.
    bool arrive(unsigned int keyCode, unsigned long time) {
        std::erase_if(waiting_, [=](const Waiting& each) { return each.press.isSame(keyCode, time); });
        return lastMissing_ && lastMissing_->isSame(keyCode, time);
    }

    /// When the oldest press is to be taken as missing.
    std::optional<Clock::time_point> deadline() const {
        return waiting_.empty() ? std::nullopt : std::optional(waiting_.front().deadline);
    }

    /// The oldest press, taken out, if it is missing by now.
    std::optional<Press> takeMissing(Clock::time_point now) {
        if (waiting_.empty() || waiting_.front().deadline > now) return std::nullopt;
        lastMissing_ = waiting_.front().press;
        waiting_.erase(waiting_.begin());
        return lastMissing_;
    }

    void clear() { waiting_.clear(); }

private:
    /// Far more than the two events of one press can be apart, and short
    /// enough not to be felt.
    static constexpr std::chrono::milliseconds patience{20};

    struct Waiting {
        Press press;
        Clock::time_point deadline;
    };

    std::vector<Waiting> waiting_;
    std::optional<Press> lastMissing_;
};

}  // namespace quillmere
