#include "Quillmere/Platform/Linux/Sources/Hyprland/HyprlandRequests.h"

#include "Quillmere/Platform/Linux/Sources/LocalSocket.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <utility>

namespace quillmere {

namespace {

// A person's binds take some tens of kilobytes. More than this is no answer.
constexpr qsizetype longestAnswer = qsizetype{4} << 20;

}  // namespace

HyprlandRequests::~HyprlandRequests() {
    hangUp();
}

std::optional<QByteArray> HyprlandRequests::ask(std::string_view request, Clock::time_point deadline) {
    if (descriptor_ >= 0 && receive() == End::open) return std::nullopt;
    hangUp();
    descriptor_ = localSocket::open(path_);
    if (descriptor_ < 0) return std::nullopt;
    if (!send(request, deadline)) {
        hangUp();
        return std::nullopt;
    }
    End end = End::open;
    while (end == End::open && localSocket::waitFor(descriptor_, POLLIN, deadline))
        end = receive();
    if (end == End::open) return std::nullopt;
    std::optional<QByteArray> answer;
    if (end == End::whole) answer = std::exchange(answer_, {});
    hangUp();
    return answer;
}

bool HyprlandRequests::send(std::string_view request, Clock::time_point deadline) {
    while (!request.empty()) {
        const ssize_t count = ::send(descriptor_, request.data(), request.size(), MSG_NOSIGNAL);
        if (count > 0) request.remove_prefix(static_cast<std::size_t>(count));
        if (count >= 0 || errno == EINTR) continue;
        if (errno != EAGAIN || !localSocket::waitFor(descriptor_, POLLOUT, deadline)) return false;
    }
    // A compositor of the newest kind would else wait whether more comes.
    return shutdown(descriptor_, SHUT_WR) == 0;
}

/// Takes in what has come. Only its end says that an answer is whole.
HyprlandRequests::End HyprlandRequests::receive() {
    std::array<char, 16384> chunk;
    for (;;) {
        const ssize_t count = recv(descriptor_, chunk.data(), chunk.size(), 0);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0 && errno == EAGAIN) return End::open;
        if (count < 0) return End::lost;
        if (count == 0) return End::whole;
        if (answer_.size() + count > longestAnswer) return End::lost;
        answer_.append(chunk.data(), count);
    }
}

void HyprlandRequests::hangUp() {
    if (descriptor_ >= 0) close(descriptor_);
    descriptor_ = -1;
    answer_.clear();
}

}  // namespace quillmere
