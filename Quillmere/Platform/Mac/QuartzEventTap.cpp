#include "Quillmere/Platform/Mac/QuartzEventTap.h"

#include <cstdlib>
#include <utility>

namespace quillmere {

namespace {

constexpr CGEventMask maskOf(std::uint32_t type) {
    return CGEventMask{1} << type;
}

constexpr CGEventMask keyboardEvents = maskOf(KeyEventType::keyDown) | maskOf(KeyEventType::keyUp)
                                       | maskOf(KeyEventType::flagsChanged) | maskOf(KeyEventType::systemDefined);

/// What the system tells of an event. That the tap was disabled comes without
/// an event, and a field that an event does not have must not be read.
KeyEventFields fieldsOf(std::uint32_t type, CGEventRef event) {
    KeyEventFields fields{.type = type};
    if (!event) return fields;
    const bool isDown = type == KeyEventType::keyDown;
    if (isDown || type == KeyEventType::keyUp)
        fields.keyCode = CGEventGetIntegerValueField(event, kCGKeyboardEventKeycode);
    if (isDown) fields.autorepeat = CGEventGetIntegerValueField(event, kCGKeyboardEventAutorepeat);
    fields.flags = CGEventGetFlags(event);
    fields.timestamp = CGEventGetTimestamp(event);
    return fields;
}

}  // namespace

QuartzEventTap::~QuartzEventTap() {
    // The port may outlive this in the run loop; invalid, it calls nobody.
    if (tap_) CFMachPortInvalidate(tap_.get());
}

bool QuartzEventTap::install(Callback callback) {
    Retained tap(CGEventTapCreate(kCGHIDEventTap, kCGHeadInsertEventTap, kCGEventTapOptionDefault, keyboardEvents,
                                  &QuartzEventTap::handle, this));
    if (!tap) return false;
    const Retained source(CFMachPortCreateRunLoopSource(kCFAllocatorDefault, tap.get(), 0));
    if (!source) {
        // Left alone it would hold every key up until the system's own time-out.
        CFMachPortInvalidate(tap.get());
        return false;
    }
    callback_ = std::move(callback);
    tap_ = std::move(tap);
    CFRunLoopAddSource(CFRunLoopGetMain(), source.get(), kCFRunLoopCommonModes);
    enable();
    return true;
}

void QuartzEventTap::enable() {
    if (tap_) CGEventTapEnable(tap_.get(), true);
}

CGEventRef QuartzEventTap::handle(CGEventTapProxy /*proxy*/, CGEventType type, CGEventRef event, void* self) {
    if (!self) std::abort();
    const auto decision = static_cast<QuartzEventTap*>(self)->callback_(fieldsOf(type, event));
    return decision == InterceptDecision::pass ? event : nullptr;
}

}  // namespace quillmere
