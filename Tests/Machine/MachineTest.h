#pragma once

#include "Tests/Machine/Desk.h"
#include "Tests/Machine/Monitor.h"
#include "Tests/Machine/Session.h"
#include "Tests/Machine/TapOwner.h"
#include "Tests/Machine/VirtualKeyboard.h"
#include "Tests/Support/WaitUntil.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <linux/input-event-codes.h>

namespace quillmere::machine {

using support::holdsFor;

/// How long to wait for what must come: the computer is emulated, on one that
/// may be busy with other things.
inline constexpr std::chrono::milliseconds patience = 3 * support::patience;

inline bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds deadline = patience) {
    return support::waitUntil(condition, deadline);
}

/// The keyboard that is always there.
inline constexpr const char* builtInKeyboard = "AT Translated Set 2 keyboard";
/// Those that the monitor plugs in.
inline constexpr const char* usbKeyboard = "QEMU QEMU USB Keyboard";

/// How long to wait for what may not come the first time and is then tried
/// again.
inline constexpr std::chrono::milliseconds moment{500};

/// A case on the machine: people's hands on the keyboards on one side, a
/// desktop that sees what the kernel lets through on the other.
class MachineTest : public testing::Test {
protected:
    static Monitor& monitor();
    /// The session of `writer` on the first terminal, which lasts as long as
    /// the machine.
    static Session& session();

    /// After every case: no key is down, and typing works.
    void TearDown() override;

    /// Types with the keyboard that was plugged in last, and waits until the
    /// desktop has got exactly that and nothing else.
    testing::AssertionResult arrives(const std::vector<KeyStroke>& strokes);
    /// Waits until the desktop has got exactly these.
    testing::AssertionResult hasGot(const std::vector<KeyStroke>& strokes);

    /// Plugs a USB keyboard in and waits until what is typed on it arrives. The
    /// desk is clear afterwards.
    void plugKeyboard(const std::string& id);
    void unplugKeyboard(const std::string& id);

    testing::AssertionResult becomesGrabbed();
    testing::AssertionResult becomesFree();

    Desk desk_;

private:
    /// Whether what is typed now comes to the desktop through a clone; no value
    /// when it does not come at all. Types to find out, and clears the desk.
    std::optional<bool> goesThroughClone();
    /// Waits until it does, or does not.
    bool becomes(bool isGrabbed);
};

}  // namespace quillmere::machine
