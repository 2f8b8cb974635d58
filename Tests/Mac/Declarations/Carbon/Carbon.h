// Declared anew from the public documentation, see CoreFoundation.h.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

extern "C" {

using TISInputSourceRef = struct __TISInputSource*;

extern const CFStringRef kTISPropertyInputSourceID;
extern const CFStringRef kTISPropertyInputSourceType;
extern const CFStringRef kTISPropertyInputSourceIsSelectCapable;
extern const CFStringRef kTISPropertyInputSourceIsEnabled;
extern const CFStringRef kTISPropertyInputSourceLanguages;
extern const CFStringRef kTISPropertyLocalizedName;
extern const CFStringRef kTISTypeKeyboardLayout;
extern const CFStringRef kTISTypeKeyboardInputMode;

CFArrayRef TISCreateInputSourceList(CFDictionaryRef properties, Boolean includeAllInstalled);
void* TISGetInputSourceProperty(TISInputSourceRef source, CFStringRef key);
TISInputSourceRef TISCopyCurrentKeyboardInputSource(void);
OSStatus TISSelectInputSource(TISInputSourceRef source);

}  // extern "C"
