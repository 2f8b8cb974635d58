#include "Quillmere/Platform/Linux/Tap/X11/X11ServerKeyboard.h"

#include "Quillmere/Platform/Linux/Tap/X11/X11GrabProbe.h"
#include "Quillmere/Platform/Linux/Tap/X11/X11InputMask.h"
#include "Quillmere/Platform/Linux/Tap/X11/X11KeymapReader.h"

#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>

#include <algorithm>
#include <array>
#include <utility>

namespace quillmere {

namespace {

constexpr unsigned long xkbMapChanges = XkbKeySymsMask | XkbModifierMapMask | XkbVirtualModsMask | XkbVirtualModMapMask;

using Combination = const X11KeyCombination*;

std::vector<XIGrabModifiers> modifiersOf(Combination first, Combination last) {
    std::vector<XIGrabModifiers> result;
    for (; first != last; ++first)
        result.push_back({.modifiers = static_cast<int>(first->modifiers), .status = 0});
    return result;
}

/// Calls `use` with each run of combinations of one key.
template <typename Use>
void forEachKey(const X11KeyboardPort::Combinations& combinations, Use use) {
    Combination first = combinations.data();
    const Combination end = first + combinations.size();
    while (first != end) {
        const Combination last =
            std::find_if(first, end, [first](const X11KeyCombination& each) { return each.keyCode != first->keyCode; });
        use(first, last);
        first = last;
    }
}

/// Takes these combinations of one key and adds to `taken` those that the
/// server gives.
void grabKey(const X11Connection& connection, Combination first, Combination last,
             X11KeyboardPort::Combinations& taken) {
    std::vector<XIGrabModifiers> modifiers = modifiersOf(first, last);
    X11InputMask mask = X11InputMask::keysOfGrab(connection.masterKeyboard());
    // Grabbing for all master devices instead of the one would swap the
    // meaning of the two modes.
    const int failures = XIGrabKeycode(
        connection.display(), connection.masterKeyboard(), static_cast<int>(first->keyCode), connection.root(),
        XIGrabModeSync, XIGrabModeAsync, False, mask.get(), static_cast<int>(modifiers.size()), modifiers.data());
    if (failures < 0) return;
    // The failed ones, and only those, are what the call leaves at the front.
    const auto end = modifiers.begin() + failures;
    for (; first != last; ++first) {
        const bool isRefused = std::any_of(modifiers.begin(), end, [first](const XIGrabModifiers& refused) {
            return std::cmp_equal(refused.modifiers, first->modifiers);
        });
        if (!isRefused) taken.push_back(*first);
    }
}

}  // namespace

void X11ServerKeyboard::listen(bool on) {
    Display* display = connection_.display();
    const auto select = [&](unsigned int type, unsigned long details) {
        XkbSelectEventDetails(display, XkbUseCoreKbd, type, details, on ? details : 0);
    };
    select(XkbStateNotify, XkbModifierStateMask);
    select(XkbMapNotify, xkbMapChanges);
    select(XkbNewKeyboardNotify, XkbAllNewKeyboardEventsMask);
}

void X11ServerKeyboard::listenToKeys(bool on) {
    X11InputMask raw = on ? X11InputMask(XIAllMasterDevices, {XI_RawKeyPress, XI_RawKeyRelease})
                          : X11InputMask(XIAllMasterDevices, {});
    XISelectEvents(connection_.display(), connection_.root(), raw.get(), 1);
}

X11Keymap X11ServerKeyboard::readKeymap() {
    return readX11Keymap(connection_.display());
}

std::optional<unsigned int> X11ServerKeyboard::readModifiers() {
    XkbStateRec state{};
    if (XkbGetState(connection_.display(), XkbUseCoreKbd, &state) != Success) return std::nullopt;
    return state.mods;
}

X11Keys X11ServerKeyboard::readKeysDown() {
    std::array<char, 32> bytes{};
    XQueryKeymap(connection_.display(), bytes.data());
    X11Keys result;
    for (std::size_t code = 0; code < result.size(); ++code)
        result[code] = ((static_cast<unsigned char>(bytes[code / 8]) >> (code % 8)) & 1U) != 0;
    return result;
}

X11KeyboardPort::Combinations X11ServerKeyboard::grab(const Combinations& combinations) {
    Combinations result;
    forEachKey(freeCombinations(combinations),
               [&](Combination first, Combination last) { grabKey(connection_, first, last, result); });
    return result;
}

void X11ServerKeyboard::ungrab(const Combinations& combinations) {
    forEachKey(combinations, [this](Combination first, Combination last) {
        std::vector<XIGrabModifiers> modifiers = modifiersOf(first, last);
        XIUngrabKeycode(connection_.display(), connection_.masterKeyboard(), static_cast<int>(first->keyCode),
                        connection_.root(), static_cast<int>(modifiers.size()), modifiers.data());
    });
}

static_assert(CurrentTime == 0);

bool X11ServerKeyboard::grabKeyboard(unsigned long since) {
    X11InputMask mask = X11InputMask::keysOfGrab(connection_.masterKeyboard());
    const int status = XIGrabDevice(connection_.display(), connection_.masterKeyboard(), connection_.root(), since,
                                    None, XIGrabModeSync, XIGrabModeAsync, False, mask.get());
    return status == XIGrabSuccess;
}

void X11ServerKeyboard::ungrabKeyboard() {
    XIUngrabDevice(connection_.display(), connection_.masterKeyboard(), CurrentTime);
}

void X11ServerKeyboard::keep() {
    allow(XISyncDevice);
    flush();
}

void X11ServerKeyboard::replay() {
    allow(XIReplayDevice);
}

void X11ServerKeyboard::allow(int mode) {
    XIAllowEvents(connection_.display(), connection_.masterKeyboard(), mode, CurrentTime);
}

void X11ServerKeyboard::flush() {
    XFlush(connection_.display());
}

}  // namespace quillmere
