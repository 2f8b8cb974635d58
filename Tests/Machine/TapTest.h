#pragma once

#include "TapService/TapProtocol.h"
#include "Tests/Machine/MachineTest.h"
#include "Tests/Machine/Service.h"
#include "Tests/Machine/TapOwner.h"

#include <optional>
#include <vector>

namespace quillmere::machine {

/// What most cases listen to.
inline constexpr tap::TapShortcut ctrlSpace{KEY_SPACE, tap::Flags::control};
/// How it is typed.
inline const std::vector<KeyStroke> ctrlSpaceStrokes = chord({KEY_LEFTCTRL, KEY_SPACE});
/// What the desktop gets of it when it is swallowed.
inline const std::vector<KeyStroke> ctrlStrokes = taps({KEY_LEFTCTRL});

/// A case with a program that owns the tap in the active session.
class TapTest : public MachineTest {
protected:
    void SetUp() override;
    void TearDown() override;

    TapOwner& owner() { return *owner_; }

    /// The owner has the tap, listens to `ctrlSpace` and answers like this;
    /// the keyboard is grabbed.
    void listen(TapOwner::Answer answer);
    /// Waits for a question and returns its number.
    std::uint32_t waitForQuestion();
    /// The owner was asked exactly this many questions.
    std::size_t questions();

    Service service_;
    std::optional<TapOwner> owner_;
};

}  // namespace quillmere::machine
