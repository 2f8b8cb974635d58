#pragma once

#include <linux/input-event-codes.h>

#include <bitset>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

namespace quillmere::tap {

/// The lights of a keyboard that are lit, by their code (LED_CAPSL).
using Lights = std::bitset<LED_CNT>;

/// Carries Caps Lock and Num Lock over to a clone. To some desktops each
/// keyboard has locks of its own, and a new one has none: when it takes over,
/// what the user has locked would be gone. The lights tell, and a tap of the
/// key sets it right.
///
/// Other desktops have one lock for all keyboards, but light only those
/// keyboards that were there when it was set. The tap then does harm, which the
/// original's lights tell as well, and another one takes it back.
class LockCarrier {
public:
    /// `tap` presses and releases a key of the clone.
    explicit LockCarrier(std::function<void(std::uint16_t key)> tap) : tap_(std::move(tap)) {}

    /// The clone takes over. True: `check` must follow when the desktop has had
    /// the time to set the lights anew.
    bool takeOver(const Lights& original, const Lights& clone);
    void check(const Lights& original);
    /// The user has pressed a key of the clone meanwhile.
    void pressed(std::uint16_t key);

private:
    struct Carried {
        std::uint16_t light;
        std::uint16_t key;
    };

    std::function<void(std::uint16_t key)> tap_;
    std::vector<Carried> carried_;
};

}  // namespace quillmere::tap
