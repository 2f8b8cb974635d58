#include "Tests/Mac/Doubles/AppKit.h"
#include "Tests/Mac/Doubles/Foundation.h"
#include "Tests/Mac/Doubles/Misuse.h"

#include <Block.h>

#include <deque>
#include <utility>

namespace appkit {

namespace {

struct Animation {
    NSTimeInterval duration = 0.25;
    std::vector<std::pair<NSWindow*, CGFloat>> alphas;
    void (^completion)(void) = nil;
};

std::vector<NSWindow*> liveWindows;
std::deque<Animation> animations;
Animation* grouping = nullptr;  ///< while changes are made in a group
NSWindow* animated = nil;       ///< whose next change is an animated one
double durationOfLast = 0;

/// One animation of a property at a time: a new one takes it over.
void overtake(NSWindow* window) {
    for (Animation& animation : animations)
        std::erase_if(animation.alphas, [window](const auto& each) { return each.first == window; });
}

void complete(Animation animation) {
    for (const auto& [window, alpha] : animation.alphas)
        window.alphaValue = alpha;
    animation.completion();
    Block_release(animation.completion);
}

}  // namespace

const std::vector<NSWindow*>& windows() {
    return liveWindows;
}

std::vector<std::string>& calls() {
    static std::vector<std::string> calls;
    return calls;
}

std::size_t runningAnimations() {
    return animations.size();
}

double lastDuration() {
    return durationOfLast;
}

void finishAnimation() {
    misuse::stopIf(animations.empty(), "an animation that there is not");
    const Animation oldest = animations.front();
    animations.pop_front();
    complete(oldest);
}

}  // namespace appkit

using namespace appkit;

@implementation CALayer
@synthesize contentsScale = contentsScale_, cornerRadius = cornerRadius_, masksToBounds = masksToBounds_;
// A picture is an object of Core Foundation, which this run time does not know.
- (id)contents {
    return reinterpret_cast<id>(const_cast<void*>(contents_));
}
- (void)setContents:(id)contents {
    if (contents) CFRetain(reinterpret_cast<CFTypeRef>(contents));
    if (contents_) CFRelease(contents_);
    contents_ = reinterpret_cast<CFTypeRef>(contents);
}
- (void)dealloc {
    if (contents_) CFRelease(contents_);
    [super dealloc];
}
@end

@implementation NSView
@synthesize frame = frame_, wantsLayer = wantsLayer_, layer = layer_;
- (instancetype)initWithFrame:(NSRect)frame {
    frame_ = frame;
    subviews_ = new QuillmereList;
    return self;
}
- (void)setWantsLayer:(BOOL)wants {
    wantsLayer_ = wants;
    if (wants && !layer_) layer_ = [[CALayer alloc] init];
}
- (void)addSubview:(NSView*)view {
    subviews_->items.push_back([view retain]);
}
- (NSArray<NSView*>*)subviews {
    return objects::makeArray(subviews_->items);
}
- (NSWindow*)window {
    return nil;
}
- (void)dealloc {
    for (id view : subviews_->items)
        [view release];
    delete subviews_;
    [layer_ release];
    [super dealloc];
}
@end

@implementation NSVisualEffectView
@synthesize material = material_, blendingMode = blendingMode_, state = state_;
- (instancetype)initWithFrame:(NSRect)frame {
    self = [super initWithFrame:frame];
    material_ = static_cast<NSVisualEffectMaterial>(-1);
    blendingMode_ = static_cast<NSVisualEffectBlendingMode>(-1);
    return self;
}
@end

@implementation NSGlassEffectView
@synthesize contentView = contentView_, cornerRadius = cornerRadius_, tintColor = tintColor_, style = style_;
+ (instancetype)alloc {
    misuse::stopIf(macversion::major < 26, "glass before macOS 26");
    return [super alloc];
}
- (instancetype)initWithFrame:(NSRect)frame {
    self = [super initWithFrame:frame];
    style_ = static_cast<NSGlassEffectViewStyle>(-1);
    return self;
}
- (void)dealloc {
    [contentView_ release];
    [tintColor_ release];
    [super dealloc];
}
@end

@implementation NSWindow
@synthesize frame = frame_, visible = visible_, styleMask = styleMask_, level = level_;
@synthesize collectionBehavior = collectionBehavior_, opaque = opaque_, hasShadow = hasShadow_;
@synthesize ignoresMouseEvents = ignoresMouseEvents_, hidesOnDeactivate = hidesOnDeactivate_;
@synthesize releasedWhenClosed = releasedWhenClosed_, titlebarAppearsTransparent = titlebarAppearsTransparent_;
@synthesize alphaValue = alphaValue_, backgroundColor = backgroundColor_, contentView = contentView_;
- (instancetype)initWithContentRect:(NSRect)rect
                          styleMask:(NSWindowStyleMask)style
                            backing:(NSBackingStoreType)backing
                              defer:(BOOL)defer {
    misuse::stopIf(backing != NSBackingStoreBuffered || !defer, "a window that is made before it is shown");
    frame_ = rect;
    styleMask_ = style;
    alphaValue_ = 1;
    opaque_ = releasedWhenClosed_ = YES;
    backgroundColor_ = [[NSColor colorWithSRGBRed:0.9 green:0.9 blue:0.9 alpha:1] retain];
    liveWindows.push_back(self);
    return self;
}
- (instancetype)animator {
    animated = self;
    return self;
}
- (void)setAlphaValue:(CGFloat)alpha {
    if (std::exchange(animated, nil) != self || !grouping) {
        alphaValue_ = alpha;
        return;
    }
    overtake(self);
    grouping->alphas.emplace_back(self, alpha);
    // Anywhere between the ends, while it lasts.
    alphaValue_ = grouping->duration > 0 ? (alphaValue_ + alpha) / 2 : alpha;
}
- (void)setFrame:(NSRect)frame display:(BOOL)display {
    misuse::stopOffMainThread("a window's frame");
    misuse::stopIf(!display, "a frame that is drawn later");
    frame_ = frame;
    calls().emplace_back("setFrame");
}
- (void)orderFrontRegardless {
    misuse::stopOffMainThread("a window's showing");
    visible_ = YES;
    calls().emplace_back("orderFrontRegardless");
}
- (void)orderOut:(id)sender {
    misuse::stopOffMainThread("a window's hiding");
    if (std::exchange(visible_, NO)) calls().emplace_back("orderOut");
}
- (void)invalidateShadow {
    calls().emplace_back("invalidateShadow");
}
- (void)dealloc {
    misuse::stopIf(visible_, "a window given up while it is shown");
    overtake(self);
    std::erase(liveWindows, self);
    [backgroundColor_ release];
    [contentView_ release];
    [super dealloc];
}
@end

@implementation NSPanel
- (instancetype)initWithContentRect:(NSRect)rect
                          styleMask:(NSWindowStyleMask)style
                            backing:(NSBackingStoreType)backing
                              defer:(BOOL)defer {
    self = [super initWithContentRect:rect styleMask:style backing:backing defer:defer];
    hidesOnDeactivate_ = YES;
    return self;
}
@end

@implementation NSAnimationContext
@synthesize duration = duration_;
+ (void)runAnimationGroup:(void (^)(NSAnimationContext*))changes completionHandler:(void (^)(void))completion {
    misuse::stopOffMainThread("an animation");
    NSAnimationContext* const context = [[[NSAnimationContext alloc] init] autorelease];
    context.duration = 0.25;
    Animation animation{.completion = Block_copy(completion)};
    grouping = &animation;
    // The changes are made with the duration that they have set.
    context->duration_ = animation.duration;
    changes(context);
    grouping = nullptr;
    durationOfLast = animation.duration;
    if (animation.duration > 0)
        animations.push_back(animation);
    else
        complete(animation);
}
- (void)setDuration:(NSTimeInterval)duration {
    duration_ = duration;
    if (grouping) grouping->duration = duration;
}
@end
