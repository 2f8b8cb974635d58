#pragma once

#include <optional>
#include <string>
#include <vector>

namespace quillmere {

/// What kind of thing the platform lists.
enum class InputSourceType {
    keyboardLayout,     ///< a keyboard layout
    keyboardInputMode,  ///< a mode of an input method
    other,              ///< palettes, containers, character pickers
};

/// One input source as the platform lists it.
struct InputSourceRecord {
    std::optional<std::string> id;             ///< identifier, stable over restarts
    std::optional<std::string> localizedName;  ///< UTF-8
    std::vector<std::string> languages;        ///< ISO codes, the main one first
    std::optional<InputSourceType> type;
    bool selectCapable = true;
    bool enabled = true;
};

/// The desktop's own input sources. Main thread only. Every call reflects the
/// desktop's state at that moment and returns within 400 ms, which is less
/// than a tap waits for a verdict.
class InputSourceService {
public:
    InputSourceService() = default;
    InputSourceService(const InputSourceService&) = delete;
    InputSourceService& operator=(const InputSourceService&) = delete;
    virtual ~InputSourceService() = default;

    /// Every source, in the platform's order; empty when it tells none.
    virtual std::vector<InputSourceRecord> sources() = 0;

    /// The identifier of the current source; absent when there is none.
    virtual std::optional<std::string> currentID() = 0;

    /// Makes this source current; returns the platform's status, 0 for
    /// success. On success the switch has taken effect: the next key that
    /// any program receives is in the new layout.
    virtual int select(const InputSourceRecord& source) = 0;
};

}  // namespace quillmere
