#pragma once

#include <sys/types.h>

namespace quillmere::support {

/// Keeps the main thread of another process from running, as an endless
/// computation in it would, while its other threads go on. It runs again when
/// this goes.
class StoppedMainThread {
public:
    /// Stops it and waits until it stands. Throws when this process may not
    /// trace that one.
    explicit StoppedMainThread(pid_t process);
    ~StoppedMainThread();
    StoppedMainThread(const StoppedMainThread&) = delete;
    StoppedMainThread& operator=(const StoppedMainThread&) = delete;

private:
    pid_t thread_;
};

}  // namespace quillmere::support
