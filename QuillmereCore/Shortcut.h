#pragma once

#include <boost/json/value.hpp>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <optional>
#include <string>

namespace quillmere {

/// An option set over the four modifier keys that can belong to a shortcut.
///
/// Unknown bits that come from a stored configuration are kept, so that a
/// value survives a round trip unchanged; they never match a key press.
class Modifiers {
public:
    std::int64_t rawValue = 0;

    constexpr Modifiers() = default;
    constexpr explicit Modifiers(std::int64_t rawValue) : rawValue(rawValue) {}
    constexpr Modifiers(std::initializer_list<Modifiers> members) {
        for (const Modifiers member : members)
            rawValue |= member.rawValue;
    }

    static const Modifiers command;
    static const Modifiers shift;
    static const Modifiers option;
    static const Modifiers control;

    /// Reads Command, Shift, Option and Control from the flag word of a key
    /// event (bits 20, 17, 19 and 18, as the macOS event services number
    /// them); every other bit is ignored.
    static constexpr Modifiers fromFlags(std::uint64_t flags) {
        return Modifiers(static_cast<std::int64_t>(((flags >> 20) & 1U) | ((flags >> 16) & 2U) | ((flags >> 17) & 4U)
                                                   | ((flags >> 15) & 8U)));
    }

    constexpr bool isEmpty() const { return rawValue == 0; }
    constexpr bool contains(Modifiers other) const { return (rawValue & other.rawValue) == other.rawValue; }
    constexpr bool isSubset(Modifiers other) const { return other.contains(*this); }
    constexpr bool isDisjoint(Modifiers other) const { return (rawValue & other.rawValue) == 0; }
    constexpr Modifiers unionWith(Modifiers other) const { return Modifiers(rawValue | other.rawValue); }
    constexpr Modifiers intersection(Modifiers other) const { return Modifiers(rawValue & other.rawValue); }
    constexpr Modifiers symmetricDifference(Modifiers other) const { return Modifiers(rawValue ^ other.rawValue); }
    constexpr Modifiers subtracting(Modifiers other) const { return Modifiers(rawValue & ~other.rawValue); }
    constexpr void insert(Modifiers other) { rawValue |= other.rawValue; }
    constexpr void remove(Modifiers other) { rawValue &= ~other.rawValue; }

    friend constexpr Modifiers operator|(Modifiers a, Modifiers b) { return a.unionWith(b); }
    friend constexpr bool operator==(Modifiers, Modifiers) = default;
};

inline constexpr Modifiers Modifiers::command{std::int64_t{1}};
inline constexpr Modifiers Modifiers::shift{std::int64_t{2}};
inline constexpr Modifiers Modifiers::option{std::int64_t{4}};
inline constexpr Modifiers Modifiers::control{std::int64_t{8}};

/// The key combination that fires a cycle group: a virtual key code (the ANSI
/// numbering of macOS keyboards: 0 = A, 49 = Space, 63 = Fn) and the modifiers
/// that must be held. A plain value.
struct Shortcut {
    std::int64_t keyCode = 0;
    Modifiers modifiers;

    static constexpr std::int64_t space = 49;
    static constexpr std::int64_t fnKeyCode = 63;
    /// The Fn-alone shortcut, fired by a lone tap of the Fn key.
    static const Shortcut fn;

    constexpr bool isFnAlone() const { return keyCode == fnKeyCode && modifiers.isEmpty(); }

    /// Whether a group may use this shortcut: Fn alone, or any key with at
    /// least one of Command, Option and Control.
    constexpr bool isValid() const {
        return isFnAlone() || !modifiers.isDisjoint(Modifiers::command | Modifiers::option | Modifiers::control);
    }

    /// What the user sees, UTF-8: "⌃⌥Space", "🌐 Fn"; "Key 53" for a key
    /// without a name.
    std::string displayString() const;

    friend constexpr bool operator==(const Shortcut&, const Shortcut&) = default;
};

inline constexpr Shortcut Shortcut::fn{Shortcut::fnKeyCode, Modifiers{}};

/// JSON form: one integer, the raw value.
boost::json::value encode(Modifiers modifiers);

/// Reads the JSON form, unknown bits too; no value for what is no integer.
std::optional<Modifiers> decodeModifiers(const boost::json::value& json);

/// JSON form: {"keyCode": integer, "modifiers": integer}.
boost::json::value encode(const Shortcut& shortcut);

/// Reads the JSON form; no value when a key is missing or is no integer.
/// Other keys are ignored.
std::optional<Shortcut> decodeShortcut(const boost::json::value& json);

}  // namespace quillmere

template <>
struct std::hash<quillmere::Modifiers> {
    std::size_t operator()(quillmere::Modifiers modifiers) const noexcept {
        return std::hash<std::int64_t>{}(modifiers.rawValue);
    }
};

template <>
struct std::hash<quillmere::Shortcut> {
    std::size_t operator()(const quillmere::Shortcut& shortcut) const noexcept {
        const std::size_t key = std::hash<std::int64_t>{}(shortcut.keyCode);
        return key * 31 + std::hash<quillmere::Modifiers>{}(shortcut.modifiers);
    }
};
