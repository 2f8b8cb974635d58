#include "Quillmere/Platform/Linux/Tap/X11/StopRequest.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdint>

namespace quillmere {

namespace {

std::atomic<int> requestDescriptor = -1;
static_assert(std::atomic<int>::is_always_lock_free);

void noteRequest(int /*signal*/) {
    const int error = errno;
    const std::uint64_t one = 1;
    // It can only fail when the counter is full of earlier requests.
    [[maybe_unused]] const auto written = write(requestDescriptor.load(), &one, sizeof one);
    errno = error;
}

}  // namespace

StopRequest::StopRequest() {
    struct sigaction former{};
    if (sigaction(SIGTSTP, nullptr, &former) != 0 || former.sa_handler != SIG_DFL) return;
    descriptor_ = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (descriptor_ < 0) return;
    requestDescriptor = descriptor_;
    struct sigaction action{};
    action.sa_handler = noteRequest;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    sigaction(SIGTSTP, &action, nullptr);
}

StopRequest::~StopRequest() {
    if (descriptor_ < 0) return;
    struct sigaction action{};
    action.sa_handler = SIG_DFL;
    sigemptyset(&action.sa_mask);
    sigaction(SIGTSTP, &action, nullptr);
    requestDescriptor = -1;
    close(descriptor_);
}

bool StopRequest::take() const {
    std::uint64_t count = 0;
    return read(descriptor_, &count, sizeof count) == sizeof count;
}

void StopRequest::stopProcess() {
    // Sent to this thread, since it must not run on before the process has
    // stopped; a signal to the process may be taken by another thread.
    raise(SIGSTOP);
}

}  // namespace quillmere
