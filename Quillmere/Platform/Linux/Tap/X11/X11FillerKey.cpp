#include "Quillmere/Platform/Linux/Tap/X11/X11FillerKey.h"

#include <X11/Xlib.h>
#include <X11/extensions/XInput.h>
#include <X11/extensions/XTest.h>

namespace quillmere {

X11FillerKey::X11FillerKey(X11Connection& connection) : connection_(connection) {
    int firstEvent = 0;
    int firstError = 0;
    int major = 0;
    int minor = 0;
    isAvailable_ = XTestQueryExtension(connection_.display(), &firstEvent, &firstError, &major, &minor) != 0;
}

void X11FillerKey::tap(unsigned int keyCode, int device) {
    if (!isAvailable_ || keyCode == 0) return;
    // The call reads the number only; opening the device would cost a round trip.
    XDevice keyboard{.device_id = static_cast<XID>(device), .num_classes = 0, .classes = nullptr};
    for (const int isPress : {True, False})
        XTestFakeDeviceKeyEvent(connection_.display(), &keyboard, keyCode, isPress, nullptr, 0, CurrentTime);
    XFlush(connection_.display());
}

}  // namespace quillmere
