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
    std::optional<std::string> id;             ///< see InputSourceService
    std::optional<std::string> localizedName;  ///< UTF-8
    std::vector<std::string> languages;        ///< ISO 639 codes, of two letters or three, the main one first
    std::optional<InputSourceType> type;
    bool selectCapable = true;
    bool enabled = true;
};

/// The desktop's own input sources, as they are at the moment of each call:
/// nothing is remembered between two. Main thread only.
///
/// An identifier lasts over restarts, names the same source on every desktop of
/// a system, since one stored configuration serves them all, and is compared
/// byte by byte:
///
/// | form                                    | what                                         |
/// |-----------------------------------------|----------------------------------------------|
/// | "xkb:<layout>", "xkb:<layout>+<variant>" | a layout, by its XKB names ("xkb:us+dvorak") |
/// | "ibus:<engine>"                         | an input method of IBus                      |
/// | "fcitx:<method>"                        | an input method of fcitx                     |
///
/// One switch calls `currentID`, `sources` and `select` once each, in this
/// order, while the keyboard waits for the verdict: a service returns from all
/// three together within 400 ms, a fifth less than the tap waits. Whatever does
/// not answer in that time counts as absent: no sources, no current one, no
/// success.
class InputSourceService {
public:
    InputSourceService() = default;
    InputSourceService(const InputSourceService&) = delete;
    InputSourceService& operator=(const InputSourceService&) = delete;
    virtual ~InputSourceService() = default;

    /// Every source, in the platform's order, those that cannot be switched to
    /// as well; empty when it tells none. One that is listed twice may come twice.
    virtual std::vector<InputSourceRecord> sources() = 0;

    /// The identifier of the current source, in the form of the list's; absent
    /// when there is none.
    virtual std::optional<std::string> currentID() = 0;

    /// Makes this source of the list current, also when it is so already;
    /// returns the platform's status, 0 for success. On success the switch has
    /// taken effect: the next key that any program receives is in the new layout.
    virtual int select(const InputSourceRecord& source) = 0;
};

}  // namespace quillmere
