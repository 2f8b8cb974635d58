#include "Quillmere/Platform/Linux/Tap/X11/TapGuard.h"

#include "Quillmere/Platform/Linux/HelperProgram.h"
#include "Quillmere/Platform/Linux/Tap/X11/Guard/GuardWords.h"

#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>

namespace quillmere {

namespace {

std::string hexadecimal(unsigned long number) {
    std::array<char, 2 * sizeof number + 1> text{};
    std::snprintf(text.data(), text.size(), "%lx", number);
    return text.data();
}

}  // namespace

std::string TapGuard::standardProgram() {
    return HelperProgram::path("quillmere-keyguard");
}

std::unique_ptr<TapGuard> TapGuard::start(const std::string& program, unsigned long resource) {
    std::array<int, 2> sockets{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, sockets.data()) != 0) return nullptr;
    const pid_t process = HelperProgram::start(program, {hexadecimal(resource)}, sockets[1]);
    close(sockets[1]);
    if (process != 0) return std::unique_ptr<TapGuard>(new TapGuard(sockets[0], process));
    close(sockets[0]);
    return nullptr;
}

TapGuard::~TapGuard() {
    close(socket_);
    // It would end by itself, unless it was stopped.
    kill(process_, SIGKILL);
    while (waitpid(process_, nullptr, 0) < 0 && errno == EINTR) {
    }
}

bool TapGuard::answer() const {
    std::array<char, 64> questions{};
    const ssize_t count = read(socket_, questions.data(), questions.size());
    if (count > 0) say(guard::answer);
    return count > 0 || (count < 0 && (errno == EAGAIN || errno == EINTR));
}

void TapGuard::setRecording(bool isRecording) const {
    say(isRecording ? guard::recording : guard::recorded);
}

void TapGuard::say(char word) const {
    // One that has gone is found out by reading.
    [[maybe_unused]] const ssize_t sent = send(socket_, &word, 1, MSG_NOSIGNAL);
}

}  // namespace quillmere
