#pragma once

#include "TapService/Handles.h"
#include "TapService/TapProtocol.h"

#include <sys/socket.h>

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace quillmere::tap {

/// A program at its end of a channel.
class TapProgram {
public:
    explicit TapProgram(FileDescriptor file) : file_(std::move(file)) {}

    void send(const ClientMessage& message) { sendBytes(encode(message)); }
    void sendBytes(const Packet& packet) { ::send(file_.get(), packet.data(), packet.size(), MSG_NOSIGNAL); }
    bool tryToSend(const Packet& packet) {
        return ::send(file_.get(), packet.data(), packet.size(), MSG_NOSIGNAL | MSG_DONTWAIT) >= 0;
    }
    void hangUp() { file_.reset(); }

    /// Everything that has come since the last call.
    std::vector<ServiceMessage> receive() {
        std::vector<ServiceMessage> messages;
        std::array<std::byte, maxMessageSize> buffer{};
        ssize_t size = 0;
        while ((size = ::recv(file_.get(), buffer.data(), buffer.size(), MSG_DONTWAIT)) > 0) {
            messages.push_back(decodeServiceMessage(std::span(buffer).first(static_cast<std::size_t>(size))).value());
        }
        isClosed_ = isClosed_ || size == 0;
        return messages;
    }
    std::optional<ServiceMessage> last() {
        const auto messages = receive();
        return messages.empty() ? std::nullopt : std::optional(messages.back());
    }
    std::uint32_t question() {
        const auto message = last();
        const auto* event = message ? std::get_if<KeyEvent>(&*message) : nullptr;
        return event != nullptr ? event->sequence : 0;
    }
    bool isClosed() {
        receive();
        return isClosed_;
    }

private:
    FileDescriptor file_;
    bool isClosed_ = false;
};

}  // namespace quillmere::tap
