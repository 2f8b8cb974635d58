#include "Tests/Mac/Doubles/AppKit.h"

#include "Tests/Mac/Doubles/CoreFoundation.h"
#include "Tests/Mac/Doubles/Foundation.h"
#include "Tests/Mac/Doubles/Misuse.h"

#include <Block.h>

#include <algorithm>
#include <utility>

@interface NSAppearance (Doubles)
- (instancetype)initWithName:(NSAppearanceName)name;
@end

namespace {

NSString* name(const char* text) {
    return reinterpret_cast<NSString*>(cf::object(cf::constant(text)));
}

int activationCount = 0;
std::optional<NSApplicationActivationPolicy> activationPolicy;
std::vector<NSObject*> observers;

}  // namespace

extern "C" {

NSAppearanceName const NSAppearanceNameAqua = name("NSAppearanceNameAqua");
NSAppearanceName const NSAppearanceNameDarkAqua = name("NSAppearanceNameDarkAqua");

}  // extern "C"

@implementation NSAppearance
- (instancetype)initWithName:(NSAppearanceName)appearanceName {
    name_ = appearanceName;
    return self;
}
- (NSAppearanceName)bestMatchFromAppearancesWithNames:(NSArray<NSAppearanceName>*)names {
    const auto& items = cf::object(names, cf::Kind::array)->items;
    const bool isComplete = items.size() == 2 && items[0] == cf::object(NSAppearanceNameDarkAqua)
                            && items[1] == cf::object(NSAppearanceNameAqua);
    misuse::stopIf(!isComplete, "a choice between other appearances");
    const bool isAmongThem = std::ranges::find(items, cf::object(name_)) != items.end();
    return isAmongThem ? reinterpret_cast<NSString*>(const_cast<void*>(name_)) : nil;
}
@end

@implementation NSApplication
@synthesize effectiveAppearance = effectiveAppearance_;
+ (NSApplication*)sharedApplication {
    static NSApplication* const application = objects::everlasting([[NSApplication alloc] init]);
    return application;
}
- (instancetype)init {
    effectiveAppearance_ = objects::everlasting([[NSAppearance alloc] initWithName:NSAppearanceNameAqua]);
    return self;
}
- (void)become:(NSAppearanceName)appearanceName {
    [effectiveAppearance_ initWithName:appearanceName];
}
- (NSArray<NSWindow*>*)windows {
    return objects::makeArray({appkit::windows().begin(), appkit::windows().end()});
}
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy {
    activationPolicy = policy;
    return YES;
}
- (void)activateIgnoringOtherApps:(BOOL)ignoreOthers {
    misuse::stopIf(!ignoreOthers, "an activation that other programs prevent");
    ++activationCount;
    appkit::calls().emplace_back("activate");
}
- (void)addObserver:(NSObject*)observer
         forKeyPath:(NSString*)keyPath
            options:(NSKeyValueObservingOptions)options
            context:(void*)context {
    misuse::stopIf(!CFEqual(keyPath, CFSTR("effectiveAppearance")), "observing what tells nothing");
    observers.push_back(observer);
}
- (void)removeObserver:(NSObject*)observer forKeyPath:(NSString*)keyPath {
    misuse::stopIf(std::erase(observers, observer) != 1, "removing an observer that there is not");
}
@end

@implementation NSColor
+ (NSColor*)clearColor {
    return [self colorWithSRGBRed:0 green:0 blue:0 alpha:0];
}
+ (NSColor*)colorWithSRGBRed:(CGFloat)red green:(CGFloat)green blue:(CGFloat)blue alpha:(CGFloat)alpha {
    NSColor* const color = [[[self alloc] init] autorelease];
    const std::array components{red, green, blue, alpha};
    std::ranges::copy(components, color->components_);
    return color;
}
+ (NSColor*)colorWithName:(NSColorName)name dynamicProvider:(NSColor* (^)(NSAppearance*))provider {
    misuse::stopIf(name != nil, "a dynamic colour with a name");
    NSColor* const color = [[[self alloc] init] autorelease];
    color->provider_ = Block_copy(provider);
    return color;
}
- (std::array<double, 4>)componentsIn:(NSAppearance*)appearance {
    if (provider_) return [provider_(appearance) componentsIn:appearance];
    return {components_[0], components_[1], components_[2], components_[3]};
}
- (void)dealloc {
    if (provider_) Block_release(provider_);
    [super dealloc];
}
@end

@implementation NSScreen
@synthesize frame = frame_, visibleFrame = visibleFrame_, backingScaleFactor = backingScaleFactor_;
+ (NSScreen*)screenAt:(std::size_t)index {
    const appkit::Screen& played = appkit::screens.at(index);
    NSScreen* const screen = [[[self alloc] init] autorelease];
    screen->frame_ = played.frame;
    screen->visibleFrame_ = played.visibleFrame;
    screen->backingScaleFactor_ = played.scale;
    return screen;
}
+ (NSScreen*)mainScreen {
    return appkit::mainScreen ? [self screenAt:*appkit::mainScreen] : nil;
}
+ (NSArray<NSScreen*>*)screens {
    std::vector<id> all;
    for (std::size_t i = 0; i < appkit::screens.size(); ++i)
        all.push_back([self screenAt:i]);
    return objects::makeArray(all);
}
@end

namespace appkit {

std::vector<Screen> screens{{}};
std::optional<std::size_t> mainScreen = 0;

void setDark(bool isDark) {
    NSApplication* const application = NSApplication.sharedApplication;
    [application become:isDark ? NSAppearanceNameDarkAqua : NSAppearanceNameAqua];
    NSString* const keyPath = name("effectiveAppearance");
    for (NSObject* observer : std::vector(observers))
        [observer observeValueForKeyPath:keyPath ofObject:application change:nil context:nullptr];
}

NSAppearance* unknownAppearance() {
    return [[[NSAppearance alloc] initWithName:name("of another kind")] autorelease];
}

std::array<double, 4> resolved(NSColor* color, bool isDark) {
    NSAppearance* const appearance =
        [[[NSAppearance alloc] initWithName:isDark ? NSAppearanceNameDarkAqua : NSAppearanceNameAqua] autorelease];
    return [color componentsIn:appearance];
}

int activations() {
    return activationCount;
}

std::optional<NSApplicationActivationPolicy> policy() {
    return activationPolicy;
}

void reset() {
    screens = {{}};
    mainScreen = 0;
    activationCount = 0;
    calls().clear();
    setDark(false);
}

}  // namespace appkit
