#include "Quillmere/Platform/Linux/Tap/Service/TapSocket.h"

#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <span>

#include <sys/socket.h>
#include <unistd.h>

namespace quillmere {

TapSocket::TapSocket(int descriptor)
    : descriptor_(descriptor), notifier_(std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Read)) {}

TapSocket::~TapSocket() {
    notifier_.reset();
    close(descriptor_);
}

std::unique_ptr<TapSocket> TapSocket::adopt(int descriptor) {
    std::unique_ptr<TapSocket> socket(new TapSocket(descriptor));
    tap::ServiceMessage first;
    const bool hasBegun = socket->receiveOne(first) == Reception::message;
    return hasBegun && std::holds_alternative<tap::Hello>(first) ? std::move(socket) : nullptr;
}

std::optional<std::vector<tap::ServiceMessage>> TapSocket::receive() {
    std::vector<tap::ServiceMessage> messages;
    while (true) {
        tap::ServiceMessage message;
        switch (receiveOne(message)) {
            case Reception::message:
                messages.push_back(message);
                break;
            case Reception::nothing:
                return messages;
            case Reception::broken:
                return std::nullopt;
        }
    }
}

TapSocket::Reception TapSocket::receiveOne(tap::ServiceMessage& message) {
    // One byte more than the largest, to tell it from one that is too long.
    std::array<std::byte, tap::maxMessageSize + 1> buffer{};
    ssize_t size = 0;
    do {
        size = recv(descriptor_, buffer.data(), buffer.size(), MSG_DONTWAIT);
    } while (size < 0 && errno == EINTR);
    if (size < 0 && errno == EAGAIN) return Reception::nothing;
    if (size <= 0) return Reception::broken;
    const auto decoded = tap::decodeServiceMessage(std::span(buffer).first(static_cast<std::size_t>(size)));
    if (!decoded) return Reception::broken;
    message = *decoded;
    return Reception::message;
}

bool TapSocket::send(const tap::ClientMessage& message) {
    const tap::Packet packet = encode(message);
    return ::send(descriptor_, packet.data(), packet.size(), MSG_DONTWAIT | MSG_NOSIGNAL)
           == static_cast<ssize_t>(packet.size());
}

}  // namespace quillmere
