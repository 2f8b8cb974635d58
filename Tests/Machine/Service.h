#pragma once

#include "Tests/Machine/SystemBus.h"

#include <cstddef>

#include <sys/types.h>

namespace quillmere::machine {

/// The tap service as the system runs it.
class Service {
public:
    /// 0 while none runs.
    pid_t pid();
    /// Waits until one runs whose pid is not `old`, which the next call to it
    /// starts; throws SupportError when none comes.
    pid_t waitForPid(pid_t old = 0);
    /// Has it run; the system starts it with the first call to it otherwise,
    /// which takes longer on an emulated computer than the application waits.
    void start();
    void signal(int number);
    /// As a package does: another file in the program's place, and a restart.
    /// Returns when the old one has ended.
    void upgrade();
    /// How many files it has open.
    std::size_t openFiles();
    /// How often it has been woken since it began.
    std::size_t wakeUps();

    /// Lets `user` have the tap, or not any more, without asking anybody.
    static void grant(uid_t user);
    static void revoke(uid_t user);
    /// Whether the service has remembered that `user` may have it.
    static bool isGranted(uid_t user);

private:
    SystemBus bus_;
};

}  // namespace quillmere::machine
