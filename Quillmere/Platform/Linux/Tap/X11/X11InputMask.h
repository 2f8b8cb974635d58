#pragma once

#include <X11/extensions/XInput2.h>

#include <array>
#include <initializer_list>

namespace quillmere {

/// The XInput events that are asked for of a device. A value that owns the
/// bits an XIEventMask points to.
class X11InputMask {
public:
    X11InputMask(int device, std::initializer_list<int> eventTypes) {
        // XISetMask by hand: the macro's arithmetic loses bits on its way back
        // into a byte, as the stricter compilations see it.
        for (const int type : eventTypes) {
            unsigned char& byte = bits_[static_cast<std::size_t>(type / 8)];
            byte = static_cast<unsigned char>(byte | (1U << (type % 8)));
        }
        mask_.deviceid = device;
        mask_.mask_len = static_cast<int>(bits_.size());
    }

    /// What a grab of the keyboard delivers. The raw events are among them
    /// because while our grab is active they come through it only.
    static X11InputMask keysOfGrab(int device) {
        return {device, {XI_KeyPress, XI_KeyRelease, XI_RawKeyPress, XI_RawKeyRelease}};
    }

    /// Valid as long as this stays where it is.
    XIEventMask* get() {
        mask_.mask = bits_.data();
        return &mask_;
    }

private:
    std::array<unsigned char, XIMaskLen(XI_LASTEVENT)> bits_{};
    XIEventMask mask_{};
};

}  // namespace quillmere
