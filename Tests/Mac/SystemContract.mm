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
#include <utility>

namespace quillmere {
namespace {

template <class Left, class Right>
constexpr bool same = std::is_same_v<std::remove_cvref_t<Left>, std::remove_cvref_t<Right>>;

/// Whether a function can be called with these and gives exactly that.
template <class Function, class Result, class... Arguments>
constexpr bool calls = std::is_same_v<std::invoke_result_t<Function, Arguments...>, Result>;

/// For an expression that is never evaluated.
template <class Object>
Object* an();

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
static_assert(calls<decltype(CGEventTapCreate), CFMachPortRef, CGEventTapLocation, CGEventTapPlacement,
                    CGEventTapOptions, CGEventMask, CGEventTapCallBack, void*>);
static_assert(calls<CGEventTapCallBack, CGEventRef, CGEventTapProxy, CGEventType, CGEventRef, void*>);
static_assert(calls<decltype(CGEventTapEnable), void, CFMachPortRef, bool>);
static_assert(calls<decltype(CGEventGetFlags), CGEventFlags, CGEventRef>);
static_assert(calls<decltype(CGEventGetTimestamp), CGEventTimestamp, CGEventRef>);
static_assert(calls<decltype(CGEventGetIntegerValueField), std::int64_t, CGEventRef, CGEventField>);

// The input sources.
static_assert(calls<decltype(TISCreateInputSourceList), CFArrayRef, CFDictionaryRef, Boolean>);
static_assert(calls<decltype(TISGetInputSourceProperty), void*, TISInputSourceRef, CFStringRef>);
static_assert(calls<decltype(TISCopyCurrentKeyboardInputSource), TISInputSourceRef>);
static_assert(calls<decltype(TISSelectInputSource), OSStatus, TISInputSourceRef> && sizeof(OSStatus) == sizeof(int));
static_assert(same<decltype(kTISPropertyInputSourceID), CFStringRef>);
static_assert(same<decltype(kTISPropertyInputSourceType), CFStringRef>);
static_assert(same<decltype(kTISPropertyInputSourceIsSelectCapable), CFStringRef>);
static_assert(same<decltype(kTISPropertyInputSourceIsEnabled), CFStringRef>);
static_assert(same<decltype(kTISPropertyInputSourceLanguages), CFStringRef>);
static_assert(same<decltype(kTISPropertyLocalizedName), CFStringRef>);
static_assert(same<decltype(kTISTypeKeyboardLayout), CFStringRef>);
static_assert(same<decltype(kTISTypeKeyboardInputMode), CFStringRef>);

// The objects of Core Foundation.
static_assert(kCFStringEncodingUTF8 == 0x08000100);
static_assert(same<CFIndex, long> && sizeof(UInt8) == 1 && sizeof(Boolean) == 1);
static_assert(same<CFTypeRef, const void*> && same<CFPropertyListRef, CFTypeRef>);
static_assert(calls<decltype(CFRelease), void, CFTypeRef>);
static_assert(calls<decltype(CFGetTypeID), CFTypeID, CFTypeRef>);
static_assert(calls<decltype(CFEqual), Boolean, CFTypeRef, CFTypeRef>);
static_assert(same<decltype(kCFBooleanTrue), CFBooleanRef> && same<decltype(kCFBooleanFalse), CFBooleanRef>);
static_assert(calls<decltype(CFBooleanGetValue), Boolean, CFBooleanRef>);
static_assert(calls<decltype(CFStringCreateWithBytes), CFStringRef, CFAllocatorRef, const UInt8*, CFIndex,
                    CFStringEncoding, Boolean>);
static_assert(calls<decltype(CFStringGetLength), CFIndex, CFStringRef>);
static_assert(calls<decltype(CFStringGetBytes), CFIndex, CFStringRef, CFRange, CFStringEncoding, UInt8, Boolean, UInt8*,
                    CFIndex, CFIndex*>);
static_assert(calls<decltype(CFDataCreate), CFDataRef, CFAllocatorRef, const UInt8*, CFIndex>);
static_assert(calls<decltype(CFDataGetBytePtr), const UInt8*, CFDataRef>);
static_assert(calls<decltype(CFDataGetLength), CFIndex, CFDataRef>);
static_assert(calls<decltype(CFDateCreate), CFDateRef, CFAllocatorRef, double>);
static_assert(calls<decltype(CFDateGetAbsoluteTime), double, CFDateRef>);
static_assert(same<decltype(kCFAbsoluteTimeIntervalSince1970), double>);
static_assert(
    calls<decltype(CFArrayCreate), CFArrayRef, CFAllocatorRef, const void**, CFIndex, const CFArrayCallBacks*>);
static_assert(calls<decltype(CFArrayGetCount), CFIndex, CFArrayRef>);
static_assert(calls<decltype(CFArrayGetValueAtIndex), const void*, CFArrayRef, CFIndex>);
static_assert(calls<decltype(CFDictionaryCreate), CFDictionaryRef, CFAllocatorRef, const void**, const void**, CFIndex,
                    const CFDictionaryKeyCallBacks*, const CFDictionaryValueCallBacks*>);

// The preferences, the bundle, the run loop, the allocator.
static_assert(same<decltype(kCFPreferencesCurrentApplication), CFStringRef>);
static_assert(calls<decltype(CFPreferencesCopyAppValue), CFPropertyListRef, CFStringRef, CFStringRef>);
static_assert(calls<decltype(CFPreferencesSetAppValue), void, CFStringRef, CFPropertyListRef, CFStringRef>);
static_assert(calls<decltype(CFPreferencesAppSynchronize), Boolean, CFStringRef>);
static_assert(calls<decltype(CFBundleGetMainBundle), CFBundleRef>);
static_assert(calls<decltype(CFBundleGetValueForInfoDictionaryKey), CFTypeRef, CFBundleRef, CFStringRef>);
static_assert(calls<decltype(CFRunLoopGetMain), CFRunLoopRef>);
static_assert(calls<decltype(CFRunLoopAddSource), void, CFRunLoopRef, CFRunLoopSourceRef, CFRunLoopMode>);
static_assert(same<decltype(kCFRunLoopCommonModes), CFRunLoopMode>);
static_assert(
    calls<decltype(CFMachPortCreateRunLoopSource), CFRunLoopSourceRef, CFAllocatorRef, CFMachPortRef, CFIndex>);
static_assert(calls<decltype(CFMachPortInvalidate), void, CFMachPortRef>);
static_assert(calls<decltype(malloc_zone_pressure_relief), std::size_t, malloc_zone_t*, std::size_t>);

// The plate. Its level is no constant to every compiler: a test reads it.
static_assert(same<CGFloat, double> && same<NSInteger, long> && same<NSUInteger, unsigned long>);
static_assert(same<NSRect, CGRect> && same<NSTimeInterval, double>);
static_assert(NSWindowStyleMaskNonactivatingPanel == 128);
static_assert(NSBackingStoreBuffered == 2);
static_assert(NSWindowCollectionBehaviorCanJoinAllSpaces == 1);
static_assert(NSWindowCollectionBehaviorStationary == 16);
static_assert(NSWindowCollectionBehaviorFullScreenAuxiliary == 256);
static_assert(same<NSWindowLevel, NSInteger> && same<decltype(NSPopUpMenuWindowLevel), NSWindowLevel>);
static_assert(same<decltype([an<NSWindow>() level]), NSWindowLevel>);
static_assert(same<decltype([an<NSWindow>() styleMask]), NSWindowStyleMask>);
static_assert(same<decltype([an<NSWindow>() collectionBehavior]), NSWindowCollectionBehavior>);
static_assert(same<decltype([an<NSWindow>() alphaValue]), CGFloat>);
static_assert(same<decltype([an<NSWindow>() frame]), NSRect>);
static_assert(same<decltype([an<NSWindow>() isOpaque]), BOOL>);
static_assert(same<decltype([an<NSWindow>() hasShadow]), BOOL>);
static_assert(same<decltype([an<NSWindow>() ignoresMouseEvents]), BOOL>);
static_assert(same<decltype([an<NSWindow>() hidesOnDeactivate]), BOOL>);
static_assert(same<decltype([an<NSWindow>() isReleasedWhenClosed]), BOOL>);
static_assert(same<decltype([an<NSWindow>() titlebarAppearsTransparent]), BOOL>);
static_assert(same<decltype([an<NSWindow>() orderFrontRegardless]), void>);
static_assert(same<decltype([an<NSWindow>() invalidateShadow]), void>);
static_assert(same<decltype([an<NSAnimationContext>() duration]), NSTimeInterval>);
static_assert(same<decltype(NSScreen.mainScreen), NSScreen*>);
static_assert(same<decltype([an<NSScreen>() visibleFrame]), NSRect>);
static_assert(same<decltype([an<NSScreen>() backingScaleFactor]), CGFloat>);

// What lies behind the plate's content, and the content.
static_assert(NSVisualEffectMaterialHUDWindow == 13);
static_assert(NSVisualEffectBlendingModeBehindWindow == 0 && NSVisualEffectStateActive == 1);
static_assert(same<decltype([an<NSVisualEffectView>() material]), NSVisualEffectMaterial>);
static_assert(same<decltype([an<NSVisualEffectView>() blendingMode]), NSVisualEffectBlendingMode>);
static_assert(same<decltype([an<NSVisualEffectView>() state]), NSVisualEffectState>);
static_assert(NSGlassEffectViewStyleRegular == 0);
static_assert(same<decltype([an<NSGlassEffectView>() style]), NSGlassEffectViewStyle>);
static_assert(same<decltype([an<NSGlassEffectView>() cornerRadius]), CGFloat>);
static_assert(same<decltype([an<NSGlassEffectView>() tintColor]), NSColor*>);
static_assert(same<decltype([an<CALayer>() contents]), id>);
static_assert(same<decltype([an<CALayer>() contentsScale]), CGFloat>);
static_assert(same<decltype([an<CALayer>() cornerRadius]), CGFloat>);
static_assert(same<decltype([an<CALayer>() masksToBounds]), BOOL>);
static_assert(static_cast<std::uint32_t>(kCGImageAlphaPremultipliedFirst) == 2);
static_assert(static_cast<std::uint32_t>(kCGBitmapByteOrder32Little) == 2U << 12U);
static_assert(static_cast<std::int32_t>(kCGRenderingIntentDefault) == 0);
static_assert(
    calls<decltype(CGImageCreate), CGImageRef, std::size_t, std::size_t, std::size_t, std::size_t, std::size_t,
          CGColorSpaceRef, CGBitmapInfo, CGDataProviderRef, const CGFloat*, bool, CGColorRenderingIntent>);
static_assert(calls<decltype(CGDataProviderCreateWithCFData), CGDataProviderRef, CFDataRef>);
static_assert(calls<decltype(CGColorSpaceCreateWithName), CGColorSpaceRef, CFStringRef>);
static_assert(same<decltype(kCGColorSpaceSRGB), CFStringRef>);

// The application, its colours, the login item.
static_assert(NSApplicationActivationPolicyAccessory == 1);
static_assert(same<decltype([an<NSApplication>() setActivationPolicy:NSApplicationActivationPolicyAccessory]), BOOL>);
static_assert(same<decltype([an<NSApplication>() effectiveAppearance]), NSAppearance*>);
static_assert(same<NSAppearanceName, NSString*> && same<decltype(NSAppearanceNameAqua), NSAppearanceName>);
static_assert(same<decltype(NSAppearanceNameDarkAqua), NSAppearanceName>);
static_assert(same<decltype([an<NSAppearance>() bestMatchFromAppearancesWithNames:an<NSArray<NSAppearanceName>>()]),
                   NSAppearanceName>);
static_assert(same<decltype([NSColor colorWithSRGBRed:0 green:0 blue:0 alpha:0]), NSColor*>);
static_assert(
    same<decltype([NSColor colorWithName:nil dynamicProvider:std::declval<NSColor* (^)(NSAppearance*)>()]), NSColor*>);
static_assert(same<decltype(NSOperatingSystemVersion::majorVersion), NSInteger>);
static_assert(same<decltype([an<NSProcessInfo>() isOperatingSystemAtLeastVersion:{}]), BOOL>);
static_assert(SMAppServiceStatusEnabled == 1);
static_assert(same<decltype([an<SMAppService>() status]), SMAppServiceStatus>);
static_assert(same<decltype([an<SMAppService>() registerAndReturnError:nil]), BOOL>);
static_assert(same<decltype([an<SMAppService>() unregisterAndReturnError:nil]), BOOL>);

}  // namespace
}  // namespace quillmere
