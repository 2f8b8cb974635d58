#pragma once

#include <cstdio>
#include <cstdlib>

namespace quillmere {

/// Ends the process with `law` when it does not hold, so that the fuzzer keeps
/// the input.
inline void require(bool holds, const char* law) {
    if (holds) return;
    std::fprintf(stderr, "Broken: %s\n", law);
    std::abort();
}

}  // namespace quillmere
