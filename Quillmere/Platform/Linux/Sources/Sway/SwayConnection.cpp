#include "Quillmere/Platform/Linux/Sources/Sway/SwayConnection.h"

#include "Quillmere/Platform/Linux/Sources/LocalSocket.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <utility>

namespace quillmere {

namespace {

constexpr std::string_view magic = "i3-ipc";

// What precedes every message: the magic, then the payload's length and the
// message's type in the machine's own byte order.
constexpr std::size_t headerSize = magic.size() + 2 * sizeof(std::uint32_t);

constexpr std::uint32_t eventBit = std::uint32_t{1} << 31;

// A desktop's devices take some ten kilobytes. More than this is no answer.
constexpr std::uint32_t longestPayload = 4U << 20;

void append(std::string& bytes, std::uint32_t number) {
    const auto part = std::bit_cast<std::array<char, sizeof number>>(number);
    bytes.append(part.data(), part.size());
}

std::uint32_t numberAt(const char* bytes) {
    std::uint32_t number = 0;
    std::memcpy(&number, bytes, sizeof number);
    return number;
}

std::string encoded(std::span<const SwayConnection::Message> messages) {
    std::string bytes;
    for (const auto& message : messages) {
        bytes += magic;
        append(bytes, static_cast<std::uint32_t>(message.payload.size()));
        append(bytes, static_cast<std::uint32_t>(message.type));
        bytes += message.payload;
    }
    return bytes;
}

}  // namespace

std::unique_ptr<SwayConnection> SwayConnection::open(const std::string& path) {
    const int descriptor = localSocket::open(path);
    if (descriptor < 0) return nullptr;
    return std::unique_ptr<SwayConnection>(new SwayConnection(descriptor));
}

SwayConnection::~SwayConnection() {
    close(descriptor_);
}

std::optional<std::vector<QByteArray>> SwayConnection::exchange(std::span<const Message> messages,
                                                                Clock::time_point deadline) {
    receive();
    if (isLost_ || overdue_ > 0) return std::nullopt;
    replies_.clear();
    if (!send(messages, deadline)) return std::nullopt;
    while (replies_.size() < messages.size() && !isLost_ && localSocket::waitFor(descriptor_, POLLIN, deadline))
        receive();
    if (replies_.size() == messages.size()) return std::exchange(replies_, {});
    overdue_ = messages.size() - replies_.size();
    return std::nullopt;
}

bool SwayConnection::send(std::span<const Message> messages, Clock::time_point deadline) {
    const std::string bytes = encoded(messages);
    std::string_view rest = bytes;
    while (!rest.empty()) {
        const ssize_t count = ::send(descriptor_, rest.data(), rest.size(), MSG_NOSIGNAL);
        if (count > 0) rest.remove_prefix(static_cast<std::size_t>(count));
        if (count >= 0 || errno == EINTR) continue;
        if (errno == EAGAIN && localSocket::waitFor(descriptor_, POLLOUT, deadline)) continue;
        // Half a message is on its way: nothing that follows would be understood.
        isLost_ = true;
        return false;
    }
    return true;
}

void SwayConnection::receive() {
    std::array<char, 16384> chunk;
    while (!isLost_) {
        const ssize_t count = recv(descriptor_, chunk.data(), chunk.size(), 0);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0 && errno == EAGAIN) return;
        if (count <= 0) {
            isLost_ = true;
            return;
        }
        incoming_.append(chunk.data(), count);
        takeMessages();
    }
}

void SwayConnection::takeMessages() {
    std::string_view rest(incoming_.constData(), static_cast<std::size_t>(incoming_.size()));
    while (rest.size() >= headerSize) {
        const std::uint32_t length = numberAt(rest.data() + magic.size());
        const std::uint32_t type = numberAt(rest.data() + magic.size() + sizeof length);
        if (!rest.starts_with(magic) || length > longestPayload) {
            isLost_ = true;
            return;
        }
        if (rest.size() < headerSize + length) break;
        sortIn(type, QByteArray(rest.data() + headerSize, static_cast<qsizetype>(length)));
        rest.remove_prefix(headerSize + length);
    }
    incoming_ = incoming_.last(static_cast<qsizetype>(rest.size()));
}

void SwayConnection::sortIn(std::uint32_t type, QByteArray payload) {
    if ((type & eventBit) != 0)
        events_.push_back(std::move(payload));
    else if (overdue_ > 0)
        --overdue_;
    else
        replies_.push_back(std::move(payload));
}

std::vector<QByteArray> SwayConnection::takeEvents() {
    return std::exchange(events_, {});
}

}  // namespace quillmere
