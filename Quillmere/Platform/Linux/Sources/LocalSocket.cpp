#include "Quillmere/Platform/Linux/Sources/LocalSocket.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>

namespace quillmere::localSocket {

int open(const std::string& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof address.sun_path) return -1;
    path.copy(address.sun_path, path.size());
    const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (descriptor < 0) return -1;
    if (connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) return descriptor;
    close(descriptor);
    return -1;
}

bool waitFor(int descriptor, short events, std::chrono::steady_clock::time_point deadline) {
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0) return false;
        pollfd entry{.fd = descriptor, .events = events, .revents = 0};
        const int count = poll(&entry, 1, static_cast<int>(left.count()));
        if (count > 0) return true;
        if (count < 0 && errno != EINTR) return false;
    }
}

}  // namespace quillmere::localSocket
