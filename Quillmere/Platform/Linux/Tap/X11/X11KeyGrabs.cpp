#include "Quillmere/Platform/Linux/Tap/X11/X11KeyGrabs.h"

#include "Quillmere/Platform/Linux/Tap/X11/X11GrabProbe.h"
#include "Quillmere/Platform/Linux/Tap/X11/X11InputMask.h"

#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace quillmere {

namespace {

std::vector<X11KeyCombination> without(const std::vector<X11KeyCombination>& all,
                                       const std::vector<X11KeyCombination>& removed) {
    std::vector<X11KeyCombination> result;
    std::ranges::set_difference(all, removed, std::back_inserter(result));
    return result;
}

std::vector<XIGrabModifiers> modifiersOf(const X11KeyCombination* first, const X11KeyCombination* last) {
    std::vector<XIGrabModifiers> result;
    for (; first != last; ++first)
        result.push_back({.modifiers = static_cast<int>(first->modifiers), .status = 0});
    return result;
}

/// Calls `use` with each run of combinations of one key.
template <typename Use>
void forEachKey(const std::vector<X11KeyCombination>& combinations, Use use) {
    const X11KeyCombination* first = combinations.data();
    const X11KeyCombination* const end = first + combinations.size();
    while (first != end) {
        const auto* const last =
            std::find_if(first, end, [first](const X11KeyCombination& each) { return each.keyCode != first->keyCode; });
        use(first, last);
        first = last;
    }
}

}  // namespace

void X11KeyGrabs::set(std::vector<X11KeyCombination> wanted) {
    std::ranges::sort(wanted);
    wanted.erase(std::ranges::unique(wanted).begin(), wanted.end());
    wanted_ = std::move(wanted);
    giveBack(without(held_, wanted_));
    retry();
}

void X11KeyGrabs::retry() {
    const std::vector<X11KeyCombination> missing = without(wanted_, held_);
    if (!missing.empty()) take(freeCombinations(missing));
}

void X11KeyGrabs::release() {
    giveBack(std::vector(held_));
}

void X11KeyGrabs::take(const std::vector<X11KeyCombination>& combinations) {
    forEachKey(combinations, [this](const auto* first, const auto* last) { takeKey(first, last); });
    std::ranges::sort(held_);
}

void X11KeyGrabs::takeKey(const X11KeyCombination* first, const X11KeyCombination* last) {
    std::vector<XIGrabModifiers> modifiers = modifiersOf(first, last);
    X11InputMask mask = X11InputMask::keysOfGrab(connection_.masterKeyboard());
    // Grabbing for all master devices instead of the one would swap the
    // meaning of the two modes.
    const int failures = XIGrabKeycode(
        connection_.display(), connection_.masterKeyboard(), static_cast<int>(first->keyCode), connection_.root(),
        XIGrabModeSync, XIGrabModeAsync, False, mask.get(), static_cast<int>(modifiers.size()), modifiers.data());
    if (failures < 0) return;
    // The failed ones, and only those, are what the call leaves at the front.
    const auto end = modifiers.begin() + failures;
    for (; first != last; ++first) {
        const bool isRefused = std::any_of(modifiers.begin(), end, [first](const XIGrabModifiers& refused) {
            return std::cmp_equal(refused.modifiers, first->modifiers);
        });
        if (!isRefused) held_.push_back(*first);
    }
}

void X11KeyGrabs::giveBack(const std::vector<X11KeyCombination>& combinations) {
    forEachKey(combinations, [this](const auto* first, const auto* last) {
        std::vector<XIGrabModifiers> modifiers = modifiersOf(first, last);
        XIUngrabKeycode(connection_.display(), connection_.masterKeyboard(), static_cast<int>(first->keyCode),
                        connection_.root(), static_cast<int>(modifiers.size()), modifiers.data());
    });
    held_ = without(held_, combinations);
}

}  // namespace quillmere
