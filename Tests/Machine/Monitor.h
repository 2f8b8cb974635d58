#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace quillmere::machine {

/// A key of an emulated keyboard that goes down or up.
struct KeyStroke {
    std::uint16_t code = 0;  ///< the kernel's (input-event-codes.h)
    bool isDown = false;

    friend bool operator==(const KeyStroke&, const KeyStroke&) = default;
};

/// Each key down and up again, one after the other.
std::vector<KeyStroke> taps(const std::vector<std::uint16_t>& codes);

/// All down in this order, then all up in the opposite one.
std::vector<KeyStroke> chord(const std::vector<std::uint16_t>& codes);

/// One after the other.
std::vector<KeyStroke> operator+(std::vector<KeyStroke> first, const std::vector<KeyStroke>& second);

/// What people do to the computer from outside, through the monitor of the
/// emulator that this computer runs in. Keys go to the keyboard that was
/// plugged in last. Every function throws SupportError when the emulator
/// refuses.
class Monitor {
public:
    Monitor();
    ~Monitor();
    Monitor(const Monitor&) = delete;
    Monitor& operator=(const Monitor&) = delete;

    /// Presses and releases, as fast as the emulated keyboard delivers them.
    /// A USB keyboard takes no more than 16 at a time.
    void type(const std::vector<KeyStroke>& strokes);

    /// Plugs a USB keyboard in, or pulls it out. `id` is free to choose.
    void plugKeyboard(const std::string& id);
    void unplugKeyboard(const std::string& id);
    /// Those that are plugged in.
    const std::set<std::string>& keyboards() const { return keyboards_; }

    /// Saves what the computer's screen shows as a PNG among the artefacts.
    void screenshot(const std::string& name);

private:
    void execute(const std::string& command, const std::string& arguments);
    std::string readLine();
    void waitForRoom(std::int64_t bytes);

    int port_ = -1;
    std::string unread_;
    std::set<std::string> keyboards_;
    std::int64_t underWay_ = 0;  ///< bytes that wait in the built-in keyboard
    std::int64_t taken_ = 0;     ///< what the computer had taken from it at the last look
};

}  // namespace quillmere::machine
