#pragma once

#include "Quillmere/Platform/Linux/Tap/X11/X11KeyboardPort.h"

namespace quillmere {

/// The key combinations that are taken from all other clients. One that
/// another client has already is left to it.
class X11KeyGrabs {
public:
    using Combinations = X11KeyboardPort::Combinations;

    /// `keyboard` must outlive this.
    explicit X11KeyGrabs(X11KeyboardPort& keyboard) : keyboard_(keyboard) {}

    /// Takes these, in any order, instead of the former ones and tries again
    /// those that another client had. Untouched ones stay taken throughout.
    void set(Combinations wanted);

    /// Whether another client has some of the wanted ones.
    bool areSomeMissing() const { return held_.size() < wanted_.size(); }

    /// Tries again those that another client had.
    void retry();

private:
    X11KeyboardPort& keyboard_;
    Combinations wanted_;  ///< sorted, each once
    Combinations held_;    ///< sorted, a part of the wanted ones
};

}  // namespace quillmere
