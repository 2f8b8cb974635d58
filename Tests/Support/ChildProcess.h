#pragma once

#include "Tests/Support/Environment.h"

#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace quillmere::support {

/// A program that runs as a child of this process, in a process group of its
/// own. It is killed at the latest when this object, or this whole process,
/// goes.
class ChildProcess {
public:
    struct Options {
        std::vector<std::string> arguments;  ///< the program first, looked up in this process's PATH
        Environment environment;
        /// Where its output and errors go; nowhere when empty.
        std::filesystem::path output;
        std::vector<int> inheritedDescriptors;
        /// Runs in the child before the program does. Only system calls.
        std::function<void()> prepare;
    };

    /// Starts it; throws when it cannot be executed.
    explicit ChildProcess(const Options& options);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    pid_t pid() const { return pid_; }
    bool isRunning();

    void signal(int number) const;
    /// SIGKILL, and waits for the end.
    void kill();
    /// The exit code, or minus the signal that ended it; no value when it is
    /// still running at the deadline.
    std::optional<int> waitForExit(std::chrono::milliseconds deadline);

    /// What it has written so far, when an output file was given.
    std::string output() const;

    /// The kernel's letter for its state: R, S, D, T (stopped), Z, ...; 0 when
    /// it is gone.
    char state() const;
    /// How often any of its threads has gone to sleep so far: each is one
    /// wake-up. Of threads that have ended nothing is known.
    long wakeUps() const;

    /// Runs a program to its end; its exit code, or minus the signal. Throws
    /// when it does not end.
    static int run(const Options& options);

private:
    void reap();

    pid_t pid_ = -1;
    std::optional<int> status_;
    std::filesystem::path output_;
};

}  // namespace quillmere::support
