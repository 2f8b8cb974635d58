#include "Tests/Support/StartupPipe.h"

#include "Tests/Support/SupportError.h"
#include "Tests/Support/WaitUntil.h"

#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

namespace quillmere::support {

StartupPipe::StartupPipe() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) throw SupportError("no pipe", errno);
    readEnd_ = ends[0];
    writeEnd_ = ends[1];
    fcntl(readEnd_, F_SETFL, O_NONBLOCK);
}

StartupPipe::~StartupPipe() {
    close(readEnd_);
    if (writeEnd_ >= 0) close(writeEnd_);
}

std::string StartupPipe::readLine() {
    // Without our own write end the server's death ends the pipe.
    close(writeEnd_);
    writeEnd_ = -1;
    std::string line;
    const auto isComplete = [&] {
        char byte = 0;
        while (true) {
            const ssize_t count = read(readEnd_, &byte, 1);
            if (count == 0) return true;
            if (count < 0) return errno != EAGAIN && errno != EINTR;
            if (byte == '\n') return true;
            line += byte;
        }
    };
    return waitUntil(isComplete) ? line : std::string{};
}

}  // namespace quillmere::support
