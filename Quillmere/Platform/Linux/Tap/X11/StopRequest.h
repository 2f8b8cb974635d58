#pragma once

namespace quillmere {

/// Catches the request to stop that a terminal sends (SIGTSTP, Ctrl-Z), so
/// that what must not be held by a stopped process can be given back first.
/// At most one at a time in a process. A bare SIGSTOP cannot be caught.
class StopRequest {
public:
    /// Leaves the signal alone when the process ignores or handles it already.
    StopRequest();
    ~StopRequest();
    StopRequest(const StopRequest&) = delete;
    StopRequest& operator=(const StopRequest&) = delete;

    /// Readable once a request has come; -1 when the signal is left alone.
    int fileDescriptor() const { return descriptor_; }

    /// Takes the request back from the descriptor; false when there is none.
    bool take() const;

    /// Stops the whole process, as the request wanted; returns when it
    /// continues.
    static void stopProcess();

private:
    int descriptor_ = -1;
};

}  // namespace quillmere
