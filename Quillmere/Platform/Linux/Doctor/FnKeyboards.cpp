#include "Quillmere/Platform/Linux/Doctor/FnKeyboards.h"

#include "Quillmere/Platform/Linux/KernelKeyboards.h"
#include "Quillmere/Platform/Linux/Tap/KeyCodes.h"
#include "TapService/KeyRole.h"

#include <cstddef>
#include <cstdint>

namespace quillmere {

namespace {

template <typename Matches>
bool anyKey(const tap::KeySet& keys, Matches matches) {
    for (std::size_t code = 0; code < keys.size(); ++code)
        if (keys[code] && matches(static_cast<std::uint16_t>(code))) return true;
    return false;
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
    for (const KernelKeyboard& keyboard : kernelKeyboards(devices)) {
        const bool tells = keyboard.tellsOfFn();
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
