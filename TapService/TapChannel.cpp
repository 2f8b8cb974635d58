#include "TapService/TapChannel.h"

#include "TapService/EventHandler.h"
#include "TapService/Log.h"
#include "TapService/TapEngine.h"

#include <sys/epoll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

namespace quillmere::tap {

TapChannel::TapChannel(FileDescriptor file, uid_t user, std::string session, Handlers handlers)
    : file_(std::move(file)), user_(user), session_(std::move(session)), handlers_(std::move(handlers)) {}

std::unique_ptr<TapChannel> TapChannel::make(sd_event* loop, uid_t user, std::string session, Handlers handlers,
                                             FileDescriptor& program) {
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data()) < 0) {
        Log::warning("Cannot make a channel", errno);
        return nullptr;
    }
    program.reset(ends[1]);
    std::unique_ptr<TapChannel> channel(
        new TapChannel(FileDescriptor(ends[0]), user, std::move(session), std::move(handlers)));
    constexpr auto deadline = std::chrono::duration_cast<std::chrono::milliseconds>(TapEngine::verdictDeadline);
    if (!channel->watch(loop) || !channel->send(Hello{static_cast<std::uint32_t>(deadline.count())})) return nullptr;
    return channel;
}

bool TapChannel::watch(sd_event* loop) {
    const int status = EventHandler<&TapChannel::handle>::onReady(loop, source_, file_.get(), EPOLLIN, this);
    if (status < 0) Log::warning("Cannot watch a channel", status);
    return status >= 0;
}

void TapChannel::handle(std::uint32_t readiness) {
    if ((readiness & EPOLLOUT) != 0) sendOwed();
    if ((readiness & ~static_cast<std::uint32_t>(EPOLLOUT)) != 0) read();
}

void TapChannel::read() {
    // One message each time: the keyboards come first in between. One byte
    // more than the largest, to tell it from one that is too long.
    std::array<std::byte, maxMessageSize + 1> buffer{};
    const ssize_t size = ::recv(file_.get(), buffer.data(), buffer.size(), MSG_DONTWAIT | MSG_TRUNC);
    if (size < 0 && (errno == EAGAIN || errno == EINTR)) return;
    if (size <= 0) {
        close();
        return;
    }
    handlePacket(std::span(buffer).first(std::min(static_cast<std::size_t>(size), buffer.size())));
}

void TapChannel::handlePacket(std::span<const std::byte> packet) {
    const std::optional<ClientMessage> message = decodeClientMessage(packet);
    if (message && handlers_.onMessage(*this, *message)) return;
    Log::notice("A program of user " + std::to_string(user_) + " broke the channel's rules; it was cut off");
    close();
}

void TapChannel::close() {
    source_.reset();
    const auto onClosed = handlers_.onClosed;
    onClosed(*this);
}

bool TapChannel::enable() {
    if (!isFreed_) isEnabled_ = true;
    return isEnabled_;
}

bool TapChannel::tell(const KeyEvent& event) {
    lastAsked_ = std::max(lastAsked_, event.sequence);
    return send(event);
}

void TapChannel::tellDisabled(DisabledReason reason) {
    isEnabled_ = false;
    isFreed_ = isFreed_ || reason == DisabledReason::userInput;
    if (send(Disabled{reason})) return;
    owed_ = Disabled{reason};
    if (source_) sd_event_source_set_io_events(source_.get(), EPOLLIN | EPOLLOUT);
}

void TapChannel::sendOwed() {
    if (owed_ && !send(*owed_)) return;
    owed_.reset();
    sd_event_source_set_io_events(source_.get(), EPOLLIN);
}

bool TapChannel::send(const ServiceMessage& message) {
    const Packet packet = encode(message);
    // A program that has gone is found out by reading.
    return ::send(file_.get(), packet.data(), packet.size(), MSG_DONTWAIT | MSG_NOSIGNAL)
           == static_cast<ssize_t>(packet.size());
}

}  // namespace quillmere::tap
