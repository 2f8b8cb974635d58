#include "Tests/Support/StoppedMainThread.h"

#include "Tests/Support/SupportError.h"

#include <cerrno>

#include <sys/ptrace.h>
#include <sys/wait.h>

namespace quillmere::support {

// A process's first thread has the number of the process.
StoppedMainThread::StoppedMainThread(pid_t process) : thread_(process) {
    // Seizing, unlike attaching, sends no stop signal that would hit all threads.
    if (ptrace(PTRACE_SEIZE, thread_, nullptr, nullptr) != 0) throw SupportError("cannot trace", errno);
    int status = 0;
    if (ptrace(PTRACE_INTERRUPT, thread_, nullptr, nullptr) != 0 || waitpid(thread_, &status, __WALL) != thread_)
        throw SupportError("cannot interrupt", errno);
}

StoppedMainThread::~StoppedMainThread() {
    ptrace(PTRACE_DETACH, thread_, nullptr, nullptr);
}

}  // namespace quillmere::support
