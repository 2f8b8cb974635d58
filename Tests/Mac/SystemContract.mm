// What the layer relies on of the system's interfaces, stated once: it compiles
// against the declarations of the tests and against the system's own.
#include "Quillmere/Platform/KeyEvent.h"

#include <AppKit/AppKit.h>
#include <Carbon/Carbon.h>
#include <CoreFoundation/CoreFoundation.h>
#include <CoreGraphics/CoreGraphics.h>
#include <QuartzCore/QuartzCore.h>
#include <ServiceManagement/ServiceManagement.h>
#include <malloc/malloc.h>

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace quillmere {
namespace {

template <class Left, class Right>
constexpr bool same = std::is_same_v<std::remove_cvref_t<Left>, std::remove_cvref_t<Right>>;

// The keyboard.
static_assert(kCGEventKeyDown == KeyEventType::keyDown);
static_assert(kCGEventKeyUp == KeyEventType::keyUp);
static_assert(kCGEventFlagsChanged == KeyEventType::flagsChanged);
static_assert(static_cast<std::uint32_t>(kCGEventTapDisabledByTimeout) == KeyEventType::tapDisabledByTimeout);
static_assert(static_cast<std::uint32_t>(kCGEventTapDisabledByUserInput) == KeyEventType::tapDisabledByUserInput);
static_assert(kCGEventFlagMaskAlphaShift == KeyEventFlags::capsLock);
static_assert(kCGEventFlagMaskShift == KeyEventFlags::shift);
static_assert(kCGEventFlagMaskControl == KeyEventFlags::control);
static_assert(kCGEventFlagMaskAlternate == KeyEventFlags::option);
static_assert(kCGEventFlagMaskCommand == KeyEventFlags::command);
static_assert(kCGEventFlagMaskSecondaryFn == KeyEventFlags::secondaryFn);
static_assert(kCGKeyboardEventAutorepeat == 8 && kCGKeyboardEventKeycode == 9);
static_assert(kCGHIDEventTap == 0 && kCGHeadInsertEventTap == 0 && kCGEventTapOptionDefault == 0);
static_assert(same<CGEventMask, std::uint64_t>);
static_assert(sizeof(CGEventTimestamp) == 8 && std::is_unsigned_v<CGEventTimestamp>);
static_assert(sizeof(CGEventFlags) == 8);
static_assert(same<decltype(CGEventTapCreate(kCGHIDEventTap, kCGHeadInsertEventTap, kCGEventTapOptionDefault,
                                             CGEventMask{}, CGEventTapCallBack{}, nullptr)),
                   CFMachPortRef>);
static_assert(std::is_invocable_r_v<CGEventRef, CGEventTapCallBack, CGEventTapProxy, CGEventType, CGEventRef, void*>);
static_assert(sizeof(CGEventGetIntegerValueField(nullptr, kCGKeyboardEventKeycode)) == 8);

// The input sources.
static_assert(same<decltype(TISCreateInputSourceList(nullptr, false)), CFArrayRef>);
static_assert(same<decltype(TISGetInputSourceProperty(nullptr, nullptr)), void*>);
static_assert(same<decltype(TISCopyCurrentKeyboardInputSource()), TISInputSourceRef>);
static_assert(same<decltype(TISSelectInputSource(nullptr)), OSStatus> && sizeof(OSStatus) == sizeof(int));
static_assert(same<decltype(kTISPropertyInputSourceID), CFStringRef>);

// The preferences, the bundle, the run loop.
static_assert(kCFStringEncodingUTF8 == 0x08000100);
static_assert(same<CFIndex, long> && sizeof(UInt8) == 1);
static_assert(same<decltype(CFPreferencesCopyAppValue(nullptr, nullptr)), CFPropertyListRef>);
static_assert(same<decltype(CFBundleGetValueForInfoDictionaryKey(nullptr, nullptr)), CFTypeRef>);
static_assert(same<decltype(CFDateGetAbsoluteTime(nullptr)), double>);
static_assert(same<decltype(kCFAbsoluteTimeIntervalSince1970), double>);
static_assert(same<decltype(CFMachPortCreateRunLoopSource(nullptr, nullptr, 0)), CFRunLoopSourceRef>);
static_assert(same<decltype(malloc_zone_pressure_relief(nullptr, 0)), std::size_t>);

// The plate.
static_assert(same<CGFloat, double> && same<NSInteger, long>);
static_assert(NSWindowStyleMaskNonactivatingPanel == 128);
static_assert(NSBackingStoreBuffered == 2);
static_assert(NSWindowCollectionBehaviorCanJoinAllSpaces == 1);
static_assert(NSWindowCollectionBehaviorStationary == 16);
static_assert(NSWindowCollectionBehaviorFullScreenAuxiliary == 256);
static_assert(NSVisualEffectMaterialHUDWindow == 13);
static_assert(NSVisualEffectBlendingModeBehindWindow == 0 && NSVisualEffectStateActive == 1);
static_assert(NSGlassEffectViewStyleRegular == 0);
static_assert(static_cast<std::uint32_t>(kCGImageAlphaPremultipliedFirst) == 2);
static_assert(static_cast<std::uint32_t>(kCGBitmapByteOrder32Little) == 2U << 12U);

// The application.
static_assert(NSApplicationActivationPolicyAccessory == 1);
static_assert(SMAppServiceStatusEnabled == 1);

}  // namespace
}  // namespace quillmere
