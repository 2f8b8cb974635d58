// Declared anew from the public documentation, see CoreFoundation.h.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

extern "C" {

using CGFloat = double;
struct CGPoint {
    CGFloat x, y;
};
struct CGSize {
    CGFloat width, height;
};
struct CGRect {
    CGPoint origin;
    CGSize size;
};

using CGEventRef = struct __CGEvent*;
using CGEventTapProxy = struct __CGEventTapProxy*;
using CGEventMask = std::uint64_t;
using CGEventTimestamp = std::uint64_t;

enum CGEventType : std::uint32_t {
    kCGEventKeyDown = 10,
    kCGEventKeyUp = 11,
    kCGEventFlagsChanged = 12,
    kCGEventTapDisabledByTimeout = 0xFFFFFFFE,
    kCGEventTapDisabledByUserInput = 0xFFFFFFFF,
};
enum CGEventField : std::uint32_t { kCGKeyboardEventAutorepeat = 8, kCGKeyboardEventKeycode = 9 };
enum CGEventTapLocation : std::uint32_t { kCGHIDEventTap = 0, kCGSessionEventTap = 1 };
enum CGEventTapPlacement : std::uint32_t { kCGHeadInsertEventTap = 0, kCGTailAppendEventTap = 1 };
enum CGEventTapOptions : std::uint32_t { kCGEventTapOptionDefault = 0, kCGEventTapOptionListenOnly = 1 };
using CGEventFlags = std::uint64_t;
enum : CGEventFlags {
    kCGEventFlagMaskAlphaShift = 0x10000,
    kCGEventFlagMaskShift = 0x20000,
    kCGEventFlagMaskControl = 0x40000,
    kCGEventFlagMaskAlternate = 0x80000,
    kCGEventFlagMaskCommand = 0x100000,
    kCGEventFlagMaskSecondaryFn = 0x800000,
};

using CGEventTapCallBack = CGEventRef (*)(CGEventTapProxy proxy, CGEventType type, CGEventRef event, void* userInfo);

CFMachPortRef CGEventTapCreate(CGEventTapLocation tap, CGEventTapPlacement place, CGEventTapOptions options,
                               CGEventMask eventsOfInterest, CGEventTapCallBack callback, void* userInfo);
void CGEventTapEnable(CFMachPortRef tap, bool enable);
CGEventFlags CGEventGetFlags(CGEventRef event);
CGEventTimestamp CGEventGetTimestamp(CGEventRef event);
std::int64_t CGEventGetIntegerValueField(CGEventRef event, CGEventField field);

using CGImageRef = struct CGImage*;
using CGColorSpaceRef = struct CGColorSpace*;
using CGDataProviderRef = struct CGDataProvider*;
using CGBitmapInfo = std::uint32_t;
enum CGColorRenderingIntent : std::int32_t { kCGRenderingIntentDefault = 0 };
enum CGImageAlphaInfo : std::uint32_t { kCGImageAlphaPremultipliedLast = 1, kCGImageAlphaPremultipliedFirst = 2 };
enum : CGBitmapInfo { kCGBitmapByteOrder32Little = 2U << 12U, kCGBitmapByteOrder32Big = 4U << 12U };
extern const CFStringRef kCGColorSpaceSRGB;

CGColorSpaceRef CGColorSpaceCreateWithName(CFStringRef name);
CGDataProviderRef CGDataProviderCreateWithCFData(CFDataRef data);
CGImageRef CGImageCreate(std::size_t width, std::size_t height, std::size_t bitsPerComponent, std::size_t bitsPerPixel,
                         std::size_t bytesPerRow, CGColorSpaceRef space, CGBitmapInfo bitmapInfo,
                         CGDataProviderRef provider, const CGFloat* decode, bool shouldInterpolate,
                         CGColorRenderingIntent intent);

}  // extern "C"
