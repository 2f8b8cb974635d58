#pragma once

#include <memory>
#include <string>

#include <sys/types.h>

namespace quillmere {

/// The tap's end of its guard: a small process that ends the tap's connection,
/// and so gives the keyboard back, when the tap does not answer it while a key
/// may be held up. One thread at a time.
class TapGuard {
public:
    /// The guard's program beside this one.
    static std::string standardProgram();

    /// `resource` was made through the connection to be guarded. Null when the
    /// guard cannot be started: the tap then works without.
    static std::unique_ptr<TapGuard> start(const std::string& program, unsigned long resource);
    /// Ends it.
    ~TapGuard();
    TapGuard(const TapGuard&) = delete;
    TapGuard& operator=(const TapGuard&) = delete;

    /// Readable when the guard has asked.
    int fileDescriptor() const { return socket_; }
    /// Answers what was asked; false when the guard has gone.
    bool answer() const;

    /// Whether the tap has the whole keyboard.
    void setRecording(bool isRecording) const;

private:
    TapGuard(int socket, pid_t process) : socket_(socket), process_(process) {}
    void say(char word) const;

    int socket_;
    pid_t process_;
};

}  // namespace quillmere
