#pragma once

#include <utility>

namespace quillmere {

/// Owns one reference to an Objective-C object, or none. The sources do without
/// automatic reference counting, as Qt's own do.
template <class Object>
class Owned {
public:
    Owned() = default;
    /// Takes over the reference of `alloc` or `copy`.
    explicit Owned(Object* object) : object_(object) {}
    Owned(Owned&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    /// From one of a class that `Object` is a superclass of.
    template <class Derived>
    Owned(Owned<Derived>&& other) : object_(other.release()) {}
    Owned& operator=(Owned&& other) = delete;
    ~Owned() { [object_ release]; }

    Object* get() const { return object_; }
    /// Gives the reference away.
    Object* release() { return std::exchange(object_, nullptr); }

private:
    Object* object_ = nullptr;
};

}  // namespace quillmere
