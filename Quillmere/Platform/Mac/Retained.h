#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <utility>

namespace quillmere {

/// Owns one reference to a Core Foundation object, or none.
template <class Ref>
class Retained {
public:
    Retained() = default;
    /// Takes over the reference that a function named Create or Copy gives.
    explicit Retained(Ref ref) : ref_(ref) {}
    Retained(Retained&& other) noexcept : ref_(std::exchange(other.ref_, nullptr)) {}
    Retained& operator=(Retained&& other) noexcept {
        std::swap(ref_, other.ref_);
        return *this;
    }
    ~Retained() {
        if (ref_) CFRelease(ref_);
    }

    Ref get() const { return ref_; }
    explicit operator bool() const { return ref_ != nullptr; }

private:
    Ref ref_ = nullptr;
};

}  // namespace quillmere
