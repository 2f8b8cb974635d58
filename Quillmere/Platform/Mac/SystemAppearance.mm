#include "Quillmere/Platform/Mac/SystemAppearance.h"

#include "Quillmere/Platform/Mac/NativeColor.h"
#include "Quillmere/Platform/Mac/Owned.h"
#include "Quillmere/Platform/Mac/SystemVersion.h"

/// Passes a change of the application's appearance on.
@interface QuillmereAppearanceObserver : NSObject {
    quillmere::SystemAppearance* appearance_;
}
- (instancetype)initWithAppearance:(quillmere::SystemAppearance*)appearance;
@end

@implementation QuillmereAppearanceObserver
- (instancetype)initWithAppearance:(quillmere::SystemAppearance*)appearance {
    self = [super init];
    if (self) appearance_ = appearance;
    return self;
}
- (void)observeValueForKeyPath:(NSString*)keyPath
                      ofObject:(id)object
                        change:(NSDictionary*)change
                       context:(void*)context {
    emit appearance_->changed();
}
@end

namespace quillmere {

namespace {

NSString* keyPath() {
    return reinterpret_cast<NSString*>(const_cast<void*>(static_cast<CFTypeRef>(CFSTR("effectiveAppearance"))));
}

}  // namespace

struct SystemAppearance::Observation {
    explicit Observation(SystemAppearance* appearance)
        : observer([[QuillmereAppearanceObserver alloc] initWithAppearance:appearance]) {
        [NSApplication.sharedApplication addObserver:observer.get() forKeyPath:keyPath() options:0 context:nullptr];
    }
    Observation(const Observation&) = delete;
    Observation& operator=(const Observation&) = delete;
    ~Observation() { [NSApplication.sharedApplication removeObserver:observer.get() forKeyPath:keyPath()]; }

    Owned<QuillmereAppearanceObserver> observer;
};

SystemAppearance::SystemAppearance() : observation_(std::make_unique<Observation>(this)) {}

SystemAppearance::~SystemAppearance() = default;

bool SystemAppearance::isDark() const {
    return NativeColor::isDark(NSApplication.sharedApplication.effectiveAppearance);
}

bool SystemAppearance::hasGlass() const {
    return SystemVersion::isAtLeast(SystemVersion::glass);
}

}  // namespace quillmere
