#include "Tests/Mac/Doubles/Foundation.h"

#include "Tests/Mac/Doubles/Misuse.h"

#include <cstddef>
#include <utility>

// Of the run time, which has a header of its own for another compiler only.
extern "C" id class_createInstance(Class aClass, std::size_t extraBytes);
extern "C" id object_dispose(id object);
extern "C" Class class_getSuperclass(Class aClass);

namespace macversion {

NSInteger major = 26;

}  // namespace macversion

namespace objects {

namespace {

long count = 0;
std::vector<id> pool;

}  // namespace

long live() {
    while (!pool.empty()) {
        for (id object : std::exchange(pool, {}))
            [object release];
    }
    return count;
}

void detail::discount() {
    --count;
}

}  // namespace objects

@implementation NSObject
+ (instancetype)alloc {
    misuse::stopOffMainThread("an object of the user interface");
    ++objects::count;
    NSObject* const object = class_createInstance(self, 0);
    object->references_ = 1;
    return object;
}
+ (Class)class {
    return self;
}
- (instancetype)init {
    return self;
}
- (instancetype)retain {
    ++references_;
    return self;
}
- (void)release {
    misuse::stopIf(references_ <= 0, "one release too many");
    if (--references_ == 0) [self dealloc];
}
- (instancetype)autorelease {
    objects::pool.push_back(self);
    return self;
}
- (void)dealloc {
    --objects::count;
    object_dispose(self);
}
- (BOOL)isKindOfClass:(Class)wanted {
    for (Class each = class_; each; each = class_getSuperclass(each))
        if (each == wanted) return YES;
    return NO;
}
- (void)addObserver:(NSObject*)observer
         forKeyPath:(NSString*)keyPath
            options:(NSKeyValueObservingOptions)options
            context:(void*)context {
    misuse::stop("observing what tells nothing");
}
- (void)removeObserver:(NSObject*)observer forKeyPath:(NSString*)keyPath {
    misuse::stop("no longer observing what told nothing");
}
- (void)observeValueForKeyPath:(NSString*)keyPath
                      ofObject:(id)object
                        change:(NSDictionary*)change
                       context:(void*)context {
    misuse::stop("an observer that does not listen");
}
@end

@implementation NSArray
- (id)firstObject {
    return list_->items.empty() ? nil : list_->items.front();
}
- (NSUInteger)count {
    return list_->items.size();
}
- (id)objectAtIndex:(NSUInteger)index {
    misuse::stopIf(index >= list_->items.size(), "an index beyond the array");
    return list_->items[index];
}
- (instancetype)initWithItems:(const std::vector<id>&)items {
    list_ = new QuillmereList{items};
    for (id item : items)
        [item retain];
    return self;
}
- (void)dealloc {
    for (id item : list_->items)
        [item release];
    delete list_;
    [super dealloc];
}
@end

NSArray* objects::makeArray(const std::vector<id>& items) {
    return [[[NSArray alloc] initWithItems:items] autorelease];
}

@implementation NSProcessInfo
+ (NSProcessInfo*)processInfo {
    static NSProcessInfo* const info = objects::everlasting([[NSProcessInfo alloc] init]);
    return info;
}
- (BOOL)isOperatingSystemAtLeastVersion:(NSOperatingSystemVersion)version {
    return macversion::major >= version.majorVersion;
}
@end
