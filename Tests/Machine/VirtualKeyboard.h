#pragma once

#include "Tests/Machine/Monitor.h"

#include <cstdint>
#include <string>
#include <vector>

#include <linux/input.h>

namespace quillmere::machine {

/// An input device made by the test itself: for keys that the emulated
/// keyboards lack, and for typing with every event counted. Repeats by itself
/// like a USB keyboard.
class VirtualKeyboard {
public:
    /// How the place begins that such a device says it is plugged in.
    static constexpr const char* place = "machine-test/";
    /// The ids of every such device.
    static constexpr std::uint16_t vendor = 0x1209;
    static constexpr std::uint16_t product = 0x7001;

    struct Form {
        std::string name;
        /// Beyond the keys of a usual keyboard.
        std::vector<std::uint16_t> moreKeys;
        bool hasWheel = false;
        bool hasLeds = false;
        bool hasSwitch = false;  ///< of a tablet's stand
    };

    /// Throws SupportError.
    explicit VirtualKeyboard(const Form& form);
    ~VirtualKeyboard();
    VirtualKeyboard(const VirtualKeyboard&) = delete;
    VirtualKeyboard& operator=(const VirtualKeyboard&) = delete;

    /// Each stroke as a report of its own.
    void type(const std::vector<KeyStroke>& strokes);
    /// As wheels do that turn more finely than in steps: both in one report.
    void turnWheel(std::int32_t steps);
    /// One event and its report.
    void send(std::uint16_t type, std::uint16_t code, std::int32_t value);

    /// Whether the computer has lit this LED.
    bool isLit(std::uint16_t led);

    /// Of what a fine wheel counts, in one step of a coarse one.
    static constexpr std::int32_t finePerStep = 120;

private:
    /// Sends these and ends the report.
    void report(std::vector<input_event> events);

    int descriptor_ = -1;
    std::uint32_t lit_ = 0;
};

}  // namespace quillmere::machine
