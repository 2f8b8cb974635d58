#pragma once

#include "Quillmere/Platform/KeyEvent.h"

namespace quillmere {

/// The program behind a tap: it is told of key events and decides about
/// presses.
class VerdictPort {
public:
    VerdictPort() = default;
    VerdictPort(const VerdictPort&) = delete;
    VerdictPort& operator=(const VerdictPort&) = delete;
    virtual ~VerdictPort() = default;

    /// Waits for the verdict on a press; "pass" when there is none in time,
    /// and at once while disabled.
    virtual InterceptDecision ask(const KeyEventFields& event) = 0;

    /// Tells without waiting. While disabled nothing is told but releases,
    /// which end what is known of a press; false then.
    virtual bool tell(const KeyEventFields& event) = 0;

    /// False after a verdict that did not come in time, until the program
    /// enables the tap again.
    virtual bool isEnabled() const = 0;
};

}  // namespace quillmere
