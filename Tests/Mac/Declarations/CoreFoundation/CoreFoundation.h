// The few names of Core Foundation that the program uses, declared anew from
// the public documentation, to build Platform/Mac where there is no SDK. On a
// Mac the system's own header has this name.
#pragma once

#include <cstddef>
#include <cstdint>

extern "C" {

using Boolean = unsigned char;
using UInt8 = unsigned char;
using OSStatus = std::int32_t;
using CFIndex = long;
using CFTypeID = unsigned long;
using CFTimeInterval = double;
using CFAbsoluteTime = double;
using CFStringEncoding = std::uint32_t;
struct CFRange {
    CFIndex location;
    CFIndex length;
};

using CFTypeRef = const void*;
using CFAllocatorRef = const struct __CFAllocator*;
using CFStringRef = const struct __CFString*;
using CFDataRef = const struct __CFData*;
using CFDateRef = const struct __CFDate*;
using CFBooleanRef = const struct __CFBoolean*;
using CFArrayRef = const struct __CFArray*;
using CFDictionaryRef = const struct __CFDictionary*;
using CFPropertyListRef = CFTypeRef;
using CFBundleRef = struct __CFBundle*;
using CFMachPortRef = struct __CFMachPort*;
using CFRunLoopRef = struct __CFRunLoop*;
using CFRunLoopSourceRef = struct __CFRunLoopSource*;
using CFRunLoopMode = CFStringRef;

extern const CFAllocatorRef kCFAllocatorDefault;
extern const CFBooleanRef kCFBooleanTrue;
extern const CFBooleanRef kCFBooleanFalse;
extern const CFStringRef kCFPreferencesCurrentApplication;
extern const CFRunLoopMode kCFRunLoopCommonModes;
extern const CFTimeInterval kCFAbsoluteTimeIntervalSince1970;
enum : CFStringEncoding { kCFStringEncodingUTF8 = 0x08000100 };

struct CFArrayCallBacks {
    CFIndex version;
};
struct CFDictionaryKeyCallBacks {
    CFIndex version;
};
struct CFDictionaryValueCallBacks {
    CFIndex version;
};
extern const CFArrayCallBacks kCFTypeArrayCallBacks;
extern const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks;
extern const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks;

CFTypeRef CFRetain(CFTypeRef object);
void CFRelease(CFTypeRef object);
CFTypeID CFGetTypeID(CFTypeRef object);
Boolean CFEqual(CFTypeRef left, CFTypeRef right);

CFStringRef quillmereConstantString(const char* text);
#define CFSTR(text) quillmereConstantString("" text "")
CFTypeID CFStringGetTypeID(void);
CFStringRef CFStringCreateWithBytes(CFAllocatorRef allocator, const UInt8* bytes, CFIndex length,
                                    CFStringEncoding encoding, Boolean isExternalRepresentation);
CFIndex CFStringGetLength(CFStringRef string);
CFIndex CFStringGetBytes(CFStringRef string, CFRange range, CFStringEncoding encoding, UInt8 lossByte,
                         Boolean isExternalRepresentation, UInt8* buffer, CFIndex capacity, CFIndex* used);

CFTypeID CFDataGetTypeID(void);
CFDataRef CFDataCreate(CFAllocatorRef allocator, const UInt8* bytes, CFIndex length);
const UInt8* CFDataGetBytePtr(CFDataRef data);
CFIndex CFDataGetLength(CFDataRef data);

CFTypeID CFBooleanGetTypeID(void);
Boolean CFBooleanGetValue(CFBooleanRef boolean);

CFTypeID CFDateGetTypeID(void);
CFDateRef CFDateCreate(CFAllocatorRef allocator, CFAbsoluteTime at);
CFAbsoluteTime CFDateGetAbsoluteTime(CFDateRef date);

CFTypeID CFArrayGetTypeID(void);
CFArrayRef CFArrayCreate(CFAllocatorRef allocator, const void** values, CFIndex count,
                         const CFArrayCallBacks* callBacks);
CFIndex CFArrayGetCount(CFArrayRef array);
const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index);

CFDictionaryRef CFDictionaryCreate(CFAllocatorRef allocator, const void** keys, const void** values, CFIndex count,
                                   const CFDictionaryKeyCallBacks* keyCallBacks,
                                   const CFDictionaryValueCallBacks* valueCallBacks);

CFBundleRef CFBundleGetMainBundle(void);
CFTypeRef CFBundleGetValueForInfoDictionaryKey(CFBundleRef bundle, CFStringRef key);

CFPropertyListRef CFPreferencesCopyAppValue(CFStringRef key, CFStringRef application);
void CFPreferencesSetAppValue(CFStringRef key, CFPropertyListRef value, CFStringRef application);
Boolean CFPreferencesAppSynchronize(CFStringRef application);

CFRunLoopRef CFRunLoopGetMain(void);
void CFRunLoopAddSource(CFRunLoopRef loop, CFRunLoopSourceRef source, CFRunLoopMode mode);
CFRunLoopSourceRef CFMachPortCreateRunLoopSource(CFAllocatorRef allocator, CFMachPortRef port, CFIndex order);
void CFMachPortInvalidate(CFMachPortRef port);

}  // extern "C"
