#include "Quillmere/Platform/Linux/Tap/X11/X11KeyGrabs.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace quillmere {

namespace {

using Combinations = X11KeyboardPort::Combinations;

Combinations without(const Combinations& all, const Combinations& removed) {
    Combinations result;
    std::ranges::set_difference(all, removed, std::back_inserter(result));
    return result;
}

}  // namespace

void X11KeyGrabs::set(Combinations wanted) {
    std::ranges::sort(wanted);
    wanted.erase(std::ranges::unique(wanted).begin(), wanted.end());
    wanted_ = std::move(wanted);
    const Combinations unwanted = without(held_, wanted_);
    if (!unwanted.empty()) keyboard_.ungrab(unwanted);
    held_ = without(held_, unwanted);
    retry();
}

void X11KeyGrabs::retry() {
    const Combinations missing = without(wanted_, held_);
    if (missing.empty()) return;
    std::ranges::copy(keyboard_.grab(missing), std::back_inserter(held_));
    std::ranges::sort(held_);
}

}  // namespace quillmere
