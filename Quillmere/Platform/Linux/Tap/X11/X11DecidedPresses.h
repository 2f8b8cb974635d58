#pragma once

#include "Quillmere/Platform/KeyEvent.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <vector>

namespace quillmere {

/// Presses of interest that were decided when the raw feed told of them and
/// that no grab of ours has delivered yet. Normally the grab's event is right
/// behind. It comes late when another client had stopped the keyboard, and
/// never while another client has the keyboard (an open menu) or the
/// combination.
class X11DecidedPresses {
public:
    /// The same press has the same server time in the raw feed and the grab.
    struct Press {
        unsigned int keyCode = 0;
        unsigned long time = 0;

        friend bool operator==(const Press&, const Press&) = default;
    };

    void add(const Press& press, InterceptDecision verdict) {
        if (waiting_.size() == most) waiting_.erase(waiting_.begin());
        waiting_.push_back({press, verdict});
    }

    /// The grab has delivered a press: its verdict, if it is decided already.
    /// Presses come in order, so that none before it will come any more.
    std::optional<InterceptDecision> arrive(const Press& press) {
        const auto found = std::ranges::find(waiting_, press, &Decided::press);
        if (found == waiting_.end()) return std::nullopt;
        const InterceptDecision verdict = found->verdict;
        waiting_.erase(waiting_.begin(), found + 1);
        return verdict;
    }

    /// Whether a press of this key has not been delivered.
    bool isMissing(unsigned int keyCode) const {
        return std::ranges::any_of(waiting_, [=](const Decided& each) { return each.press.keyCode == keyCode; });
    }

    void clear() { waiting_.clear(); }

private:
    /// More than anybody types into a keyboard that stands still.
    static constexpr std::size_t most = 16;

    struct Decided {
        Press press;
        InterceptDecision verdict = InterceptDecision::pass;
    };

    std::vector<Decided> waiting_;
};

}  // namespace quillmere
