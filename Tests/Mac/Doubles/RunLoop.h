#pragma once

#include "Tests/Mac/Doubles/CoreFoundation.h"

/// The main run loop, as far as ports go.
namespace runloop {

/// A port that a source of the main run loop serves.
struct Port : cf::Object {
    Port() : Object(cf::Kind::port) {}

    bool isValid = true;
    bool isHeld = false;    ///< by the system, until it is invalid
    bool isServed = false;  ///< also while a menu is tracked or a window dragged
};

/// The next sources cannot be made.
extern bool refusesSources;

}  // namespace runloop
