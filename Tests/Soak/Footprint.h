#pragma once

#include <vector>

#include <sys/types.h>

namespace quillmere::soak {

/// What a process holds of the system at one moment.
struct Footprint {
    double memory = 0;    ///< its proportional share (PSS), KiB
    double written = 0;   ///< the part of it that no file stands behind, KiB
    int descriptors = 0;  ///< files, sockets and pipes

    /// Of a process that runs; throws when the kernel tells nothing of it.
    static Footprint of(pid_t process);
};

/// The processes that this one has started and that still run.
std::vector<pid_t> childrenOf(pid_t process);

}  // namespace quillmere::soak
