#include "Quillmere/Platform/Linux/Doctor/FnKeyboards.h"

#include "Quillmere/Platform/Linux/Tap/KeyCodes.h"
#include "TapService/KeyRole.h"
#include "TapService/KeySet.h"

#include <climits>
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

namespace quillmere {

namespace {

struct Keyboard {
    std::string name;
    tap::KeySet keys;
};

/// The kernel's words of bits, the highest first.
tap::KeySet keySet(std::string_view words) {
    tap::KeySet keys;
    std::istringstream stream{std::string(words)};
    stream >> std::hex;
    for (unsigned long word = 0; stream >> word;)
        keys = keys << (sizeof word * CHAR_BIT) | tap::KeySet(word);
    return keys;
}

template <typename Matches>
bool anyKey(const tap::KeySet& keys, Matches matches) {
    for (std::size_t code = 0; code < keys.size(); ++code)
        if (keys[code] && matches(static_cast<std::uint16_t>(code))) return true;
    return false;
}

/// Those to type on.
std::vector<Keyboard> keyboards(std::string_view devices) {
    constexpr std::string_view name = "N: Name=\"";
    constexpr std::string_view keys = "B: KEY=";
    std::vector<Keyboard> result;
    std::istringstream stream{std::string(devices)};
    std::string current;
    for (std::string line; std::getline(stream, line);) {
        if (line.starts_with(name)) current = line.substr(name.size(), line.rfind('"') - name.size());
        if (!line.starts_with(keys)) continue;
        Keyboard keyboard{.name = current, .keys = keySet(std::string_view(line).substr(keys.size()))};
        if (anyKey(keyboard.keys, &tap::isTypingKey)) result.push_back(std::move(keyboard));
    }
    return result;
}

bool isSeen(std::uint16_t code, FnSight sight) {
    const bool fits = sight == FnSight::every || code + KeyCodes::x11Offset <= KeyCodes::maxX11KeyCode;
    return sight != FnSight::none && fits;
}

bool isFn(std::uint16_t code) {
    return tap::roleOf(code) == tap::KeyRole::fn;
}

}  // namespace

Finding fnFinding(std::string_view devices, FnSight sight) {
    Finding row{.subject = "Keyboards", .state = {}, .advice = {}};
    bool isFnSeen = false;
    for (const Keyboard& keyboard : keyboards(devices)) {
        const bool tells = anyKey(keyboard.keys, &isFn);
        const bool sees = anyKey(keyboard.keys, [&](std::uint16_t code) { return isFn(code) && isSeen(code, sight); });
        isFnSeen = isFnSeen || sees;
        row.state += (row.state.empty() ? "" : "\n") + keyboard.name;
        row.state += !tells ? ": keeps Fn to itself"
                     : sees ? ": can tell of Fn"
                            : ": tells of Fn, which this tap misses";
    }
    if (row.state.empty()) row.state = "none that the kernel knows";
    if (!isFnSeen) {
        row.advice = "For a group on Fn, choose another shortcut, or make a key an Fn key (see the users' guide).";
    }
    return row;
}

}  // namespace quillmere
