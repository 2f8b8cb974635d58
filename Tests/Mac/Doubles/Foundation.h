#pragma once

#include <Foundation/Foundation.h>

#include <vector>

struct QuillmereList {
    std::vector<id> items;
};

/// The root of the tests' Objective-C classes, which counts their objects.
namespace objects {

/// Objects that somebody still owes a release, after those that were only
/// waiting for the end of their pool.
long live();

/// Not to be counted: an object that the system keeps for good.
template <class Object>
Object* everlasting(Object* object);

/// Autoreleased.
NSArray* makeArray(const std::vector<id>& items);

namespace detail {
void discount();
}

template <class Object>
Object* everlasting(Object* object) {
    detail::discount();
    return object;
}

}  // namespace objects

/// Which macOS is played.
namespace macversion {

extern NSInteger major;

}  // namespace macversion
