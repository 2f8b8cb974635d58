#pragma once

#include "Quillmere/Platform/Linux/Tap/X11/X11KeyCombination.h"
#include "Quillmere/Platform/Linux/X11/X11Connection.h"

#include <vector>

namespace quillmere {

/// The key combinations that are taken from all other clients: their presses
/// come to us alone, and the keyboard stands still until we have decided
/// (XIAllowEvents). A combination that another client has already is left to
/// it.
class X11KeyGrabs {
public:
    /// `connection` must outlive this; its end gives everything back.
    explicit X11KeyGrabs(X11Connection& connection) : connection_(connection) {}

    /// Takes these instead of the former ones and tries again those that
    /// another client had. Untouched ones stay taken throughout.
    void set(std::vector<X11KeyCombination> wanted);

    /// Whether another client has some of the wanted ones.
    bool areSomeMissing() const { return held_.size() < wanted_.size(); }

    /// Tries again those that another client had.
    void retry();

    /// Gives all of them back for a while; `retry` takes them again.
    void release();

private:
    void take(const std::vector<X11KeyCombination>& combinations);
    void giveBack(const std::vector<X11KeyCombination>& combinations);
    void takeKey(const X11KeyCombination* first, const X11KeyCombination* last);

    X11Connection& connection_;
    std::vector<X11KeyCombination> wanted_;  ///< sorted, each once
    std::vector<X11KeyCombination> held_;    ///< sorted, a part of the wanted ones
};

}  // namespace quillmere
