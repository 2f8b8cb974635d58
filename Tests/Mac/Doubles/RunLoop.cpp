#include "Tests/Mac/Doubles/RunLoop.h"

#include "Tests/Mac/Doubles/Misuse.h"

#include <utility>

namespace runloop {

bool refusesSources = false;

namespace {

struct Source : cf::Object {
    explicit Source(Port* sourcePort) : Object(cf::Kind::source), port(sourcePort) { CFRetain(port); }
    ~Source() override { CFRelease(port); }
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;

    Port* port;
};

Port* portOf(CFMachPortRef ref) {
    return static_cast<Port*>(cf::object(ref, cf::Kind::port));
}

}  // namespace
}  // namespace runloop

using namespace runloop;

extern "C" {

const CFRunLoopMode kCFRunLoopCommonModes = CFSTR("kCFRunLoopCommonModes");

CFRunLoopRef CFRunLoopGetMain(void) {
    static char loop;
    return reinterpret_cast<CFRunLoopRef>(&loop);
}

void CFRunLoopAddSource(CFRunLoopRef loop, CFRunLoopSourceRef source, CFRunLoopMode mode) {
    misuse::stopIf(loop != CFRunLoopGetMain(), "another run loop");
    misuse::stopIf(mode != kCFRunLoopCommonModes, "a mode that is not served while menus are tracked");
    Port* const port = static_cast<Source*>(cf::object(source, cf::Kind::source))->port;
    port->isServed = true;
    // The loop keeps the source for as long as its port is valid.
    port->items.push_back(cf::object(CFRetain(source)));
}

CFRunLoopSourceRef CFMachPortCreateRunLoopSource(CFAllocatorRef, CFMachPortRef port, CFIndex order) {
    misuse::stopIf(order != 0, "a port's source with an order");
    return refusesSources ? nullptr : cf::as<CFRunLoopSourceRef>(new Source(portOf(port)));
}

void CFMachPortInvalidate(CFMachPortRef ref) {
    Port* const port = portOf(ref);
    port->isValid = port->isServed = false;
    for (const cf::Object* source : std::exchange(port->items, {}))
        CFRelease(source);
    if (std::exchange(port->isHeld, false)) CFRelease(port);
}

}  // extern "C"
