#pragma once

namespace quillmere {

/// The keyboards that are plugged in. Main thread only.
class Keyboards {
public:
    Keyboards() = default;
    Keyboards(const Keyboards&) = delete;
    Keyboards& operator=(const Keyboards&) = delete;
    virtual ~Keyboards() = default;

    /// Whether one of them may tell the system of its Fn key, as far as can be
    /// known: many handle it by themselves. Read afresh; takes well under a
    /// millisecond.
    virtual bool mayTellOfFn() const = 0;
};

}  // namespace quillmere
