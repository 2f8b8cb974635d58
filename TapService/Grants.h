#pragma once

#include <sys/types.h>

namespace quillmere::tap {

/// Which users have been given a tap.
class Grants {
public:
    Grants() = default;
    Grants(const Grants&) = delete;
    Grants& operator=(const Grants&) = delete;
    virtual ~Grants() = default;

    virtual bool isGranted(uid_t user) const = 0;
    /// False when it cannot be remembered.
    virtual bool grant(uid_t user) = 0;
    virtual void revoke(uid_t user) = 0;
};

}  // namespace quillmere::tap
