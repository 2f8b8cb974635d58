#pragma once

#include "Quillmere/Platform/EventTap.h"
#include "Quillmere/Platform/Mac/Retained.h"

#include <CoreGraphics/CoreGraphics.h>

namespace quillmere {

/// The system's own tap: a filter before every program, served by the main run
/// loop, also while it tracks a menu. It cannot be made until the user has
/// allowed the program Accessibility.
class QuartzEventTap final : public EventTap {
public:
    QuartzEventTap() = default;
    ~QuartzEventTap() override;

    bool install(Callback callback) override;
    void enable() override;
    /// Nothing: the system delivers every key as it is.
    void setInterest(const KeyInterest& /*interest*/) override {}

private:
    static CGEventRef handle(CGEventTapProxy proxy, CGEventType type, CGEventRef event, void* self);

    Callback callback_;
    Retained<CFMachPortRef> tap_;
};

}  // namespace quillmere
