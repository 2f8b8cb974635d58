// Declared anew from the public documentation, see Foundation.h.
#pragma once

#include <QuartzCore/QuartzCore.h>

using NSAppearanceName = NSString*;
using NSColorName = NSString*;
using NSWindowLevel = NSInteger;
using NSWindowStyleMask = NSUInteger;
using NSWindowCollectionBehavior = NSUInteger;
enum NSBackingStoreType : NSUInteger { NSBackingStoreBuffered = 2 };
enum NSApplicationActivationPolicy : NSInteger {
    NSApplicationActivationPolicyRegular = 0,
    NSApplicationActivationPolicyAccessory = 1,
};
enum NSVisualEffectMaterial : NSInteger { NSVisualEffectMaterialHUDWindow = 13 };
enum NSVisualEffectBlendingMode : NSInteger { NSVisualEffectBlendingModeBehindWindow = 0 };
enum NSVisualEffectState : NSInteger { NSVisualEffectStateActive = 1 };
enum NSGlassEffectViewStyle : NSInteger { NSGlassEffectViewStyleRegular = 0, NSGlassEffectViewStyleClear = 1 };
enum : NSWindowStyleMask { NSWindowStyleMaskNonactivatingPanel = 1U << 7U };
enum : NSWindowCollectionBehavior {
    NSWindowCollectionBehaviorCanJoinAllSpaces = 1U << 0U,
    NSWindowCollectionBehaviorStationary = 1U << 4U,
    NSWindowCollectionBehaviorFullScreenAuxiliary = 1U << 8U,
};
inline constexpr NSWindowLevel NSPopUpMenuWindowLevel = 101;

extern "C" {
extern NSAppearanceName const NSAppearanceNameAqua;
extern NSAppearanceName const NSAppearanceNameDarkAqua;
}

@class NSWindow;

@interface NSAppearance : NSObject {
    CFTypeRef name_;
}
- (NSAppearanceName)bestMatchFromAppearancesWithNames:(NSArray<NSAppearanceName>*)names;
@end

@interface NSApplication : NSObject {
    NSAppearance* effectiveAppearance_;
}
@property(class, readonly) NSApplication* sharedApplication;
@property(readonly) NSArray<NSWindow*>* windows;
@property(readonly) NSAppearance* effectiveAppearance;
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy;
- (void)activateIgnoringOtherApps:(BOOL)ignoreOthers;
@end

@interface NSColor : NSObject {
    CGFloat components_[4];
    NSColor* (^provider_)(NSAppearance*);
}
@property(class, readonly) NSColor* clearColor;
+ (NSColor*)colorWithSRGBRed:(CGFloat)red green:(CGFloat)green blue:(CGFloat)blue alpha:(CGFloat)alpha;
+ (NSColor*)colorWithName:(NSColorName)name dynamicProvider:(NSColor* (^)(NSAppearance* appearance))provider;
@end

@interface NSView : NSObject {
    NSRect frame_;
    BOOL wantsLayer_;
    CALayer* layer_;
    struct QuillmereList* subviews_;
}
- (instancetype)initWithFrame:(NSRect)frame;
@property(nonatomic) NSRect frame;
@property(nonatomic) BOOL wantsLayer;
@property(nonatomic, readonly) CALayer* layer;
@property(nonatomic, readonly) NSArray<NSView*>* subviews;
@property(nonatomic, readonly) NSWindow* window;
- (void)addSubview:(NSView*)view;
@end

@interface NSVisualEffectView : NSView {
    NSVisualEffectMaterial material_;
    NSVisualEffectBlendingMode blendingMode_;
    NSVisualEffectState state_;
}
@property(nonatomic) NSVisualEffectMaterial material;
@property(nonatomic) NSVisualEffectBlendingMode blendingMode;
@property(nonatomic) NSVisualEffectState state;
@end

@interface NSGlassEffectView : NSView {
    NSView* contentView_;
    CGFloat cornerRadius_;
    NSColor* tintColor_;
    NSGlassEffectViewStyle style_;
}
@property(nonatomic, retain) NSView* contentView;
@property(nonatomic) CGFloat cornerRadius;
@property(nonatomic, retain) NSColor* tintColor;
@property(nonatomic) NSGlassEffectViewStyle style;
@end

@interface NSScreen : NSObject {
    NSRect frame_;
    NSRect visibleFrame_;
    CGFloat backingScaleFactor_;
}
@property(class, readonly) NSScreen* mainScreen;
@property(class, readonly) NSArray<NSScreen*>* screens;
@property(nonatomic, readonly) NSRect frame;
@property(nonatomic, readonly) NSRect visibleFrame;
@property(nonatomic, readonly) CGFloat backingScaleFactor;
@end

@interface NSWindow : NSObject {
    NSRect frame_;
    NSWindowStyleMask styleMask_;
    NSWindowLevel level_;
    NSWindowCollectionBehavior collectionBehavior_;
    BOOL opaque_;
    BOOL hasShadow_;
    BOOL ignoresMouseEvents_;
    BOOL hidesOnDeactivate_;
    BOOL releasedWhenClosed_;
    BOOL titlebarAppearsTransparent_;
    BOOL visible_;
    CGFloat alphaValue_;
    NSColor* backgroundColor_;
    NSView* contentView_;
}
- (instancetype)initWithContentRect:(NSRect)rect
                          styleMask:(NSWindowStyleMask)style
                            backing:(NSBackingStoreType)backing
                              defer:(BOOL)defer;
- (instancetype)animator;
- (void)setFrame:(NSRect)frame display:(BOOL)display;
- (void)orderFrontRegardless;
- (void)orderOut:(id)sender;
- (void)invalidateShadow;
@property(nonatomic, readonly) NSRect frame;
@property(nonatomic, readonly, getter=isVisible) BOOL visible;
@property(nonatomic) NSWindowStyleMask styleMask;
@property(nonatomic) NSWindowLevel level;
@property(nonatomic) NSWindowCollectionBehavior collectionBehavior;
@property(nonatomic, getter=isOpaque) BOOL opaque;
@property(nonatomic) BOOL hasShadow;
@property(nonatomic) BOOL ignoresMouseEvents;
@property(nonatomic) BOOL hidesOnDeactivate;
@property(nonatomic, getter=isReleasedWhenClosed) BOOL releasedWhenClosed;
@property(nonatomic) BOOL titlebarAppearsTransparent;
@property(nonatomic) CGFloat alphaValue;
@property(nonatomic, retain) NSColor* backgroundColor;
@property(nonatomic, retain) NSView* contentView;
@end

@interface NSPanel : NSWindow
@end

@interface NSAnimationContext : NSObject {
    NSTimeInterval duration_;
}
+ (void)runAnimationGroup:(void (^)(NSAnimationContext* context))changes
        completionHandler:(void (^)(void))completionHandler;
@property(nonatomic) NSTimeInterval duration;
@end
