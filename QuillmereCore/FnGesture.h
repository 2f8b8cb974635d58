#pragma once

#include <optional>

namespace quillmere {

/// Recognises a lone tap of the Fn key: pressed with no other modifier held,
/// released within `maxTapDuration`, and nothing else touched in between.
///
/// | event                 | state  | new state | result                         |
/// |-----------------------|--------|-----------|--------------------------------|
/// | fnDown, alone         | any    | armed     | false                          |
/// | fnDown, with others   | any    | idle      | false                          |
/// | fnUp                  | idle   | idle      | false                          |
/// | fnUp                  | armed  | idle      | pressed at most maxTapDuration |
/// | keyDown               | any    | idle      | false                          |
/// | modifiersChanged      | any    | idle      | false                          |
class FnGesture {
public:
    /// The longest press, in seconds, that still counts as a tap (inclusive).
    static constexpr double maxTapDuration = 0.6;

    struct Event {
        enum class Kind { fnDown, fnUp, keyDown, modifiersChanged };
        Kind kind;
        bool otherModifiers = false;  ///< fnDown only: another modifier is held

        static constexpr Event fnDown(bool otherModifiers) { return {Kind::fnDown, otherModifiers}; }
        static constexpr Event fnUp() { return {Kind::fnUp}; }
        static constexpr Event keyDown() { return {Kind::keyDown}; }
        static constexpr Event modifiersChanged() { return {Kind::modifiersChanged}; }

        friend constexpr bool operator==(const Event&, const Event&) = default;
    };

    /// Takes one event at `time` (seconds on one monotonic clock); true when
    /// it completes a lone tap.
    bool handle(Event event, double time);

private:
    std::optional<double> downTime_;
};

}  // namespace quillmere
