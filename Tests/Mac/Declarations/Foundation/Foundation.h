// The few classes that the program uses, declared anew from the public
// documentation, see CoreFoundation.h. What a class keeps stands here too: the
// Objective-C run time of Linux has instance variables in interfaces only.
#pragma once

#include <CoreGraphics/CoreGraphics.h>

#ifndef nil
#define nil nullptr
#endif
#define YES true
#define NO false
using BOOL = bool;
using NSInteger = long;
using NSUInteger = unsigned long;
using NSTimeInterval = double;
using NSRect = CGRect;
inline NSRect NSMakeRect(CGFloat x, CGFloat y, CGFloat width, CGFloat height) {
    return {{x, y}, {width, height}};
}
struct NSOperatingSystemVersion {
    NSInteger majorVersion;
    NSInteger minorVersion;
    NSInteger patchVersion;
};
using NSKeyValueObservingOptions = NSUInteger;

@class NSDictionary;
@class NSError;
@class NSString;

__attribute__((objc_root_class))
@interface NSObject {
    Class class_;
    long references_;
}
+ (instancetype)alloc;
+ (Class)class;
- (instancetype)init;
- (instancetype)retain;
- (void)release;
- (instancetype)autorelease;
- (void)dealloc;
- (BOOL)isKindOfClass:(Class)aClass;
- (void)addObserver:(NSObject*)observer
         forKeyPath:(NSString*)keyPath
            options:(NSKeyValueObservingOptions)options
            context:(void*)context;
- (void)removeObserver:(NSObject*)observer forKeyPath:(NSString*)keyPath;
- (void)observeValueForKeyPath:(NSString*)keyPath
                      ofObject:(id)object
                        change:(NSDictionary*)change
                       context:(void*)context;
@end

@interface NSArray<ObjectType> : NSObject {
    struct QuillmereList* list_;
}
@property(readonly) ObjectType firstObject;
@property(readonly) NSUInteger count;
- (ObjectType)objectAtIndex:(NSUInteger)index;
@end

@interface NSProcessInfo : NSObject
@property(class, readonly) NSProcessInfo* processInfo;
- (BOOL)isOperatingSystemAtLeastVersion:(NSOperatingSystemVersion)version;
@end
