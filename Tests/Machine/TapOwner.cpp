#include "Tests/Machine/TapOwner.h"

#include "Tests/Machine/OwnerWire.h"
#include "Tests/Support/SupportError.h"
#include "Tests/Support/WaitUntil.h"

#include <array>
#include <cerrno>
#include <filesystem>
#include <span>
#include <utility>
#include <variant>

#include <sys/socket.h>
#include <unistd.h>

namespace quillmere::machine {

using support::ChildProcess;
using support::SupportError;

namespace {

std::string_view text(const tap::Packet& packet) {
    return {reinterpret_cast<const char*>(packet.data()), packet.size()};
}

}  // namespace

std::string programPath(const std::string& name) {
    return std::filesystem::read_symlink("/proc/self/exe").replace_filename(name);
}

TapOwner::TapOwner(const Session& session) : TapOwner(session, session.user()) {}

TapOwner::TapOwner(const Session& session, uid_t user) : TapOwner(session, session.entrance(user)) {}

TapOwner::TapOwner(const Session& session, std::function<void()> entrance) {
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0)
        throw SupportError("no socket pair", errno);
    control_ = ends[0];
    process_.emplace(ChildProcess::Options{.arguments = {programPath("tap_owner"), std::to_string(ends[1])},
                                           .environment = session.environment(),
                                           .output = {},
                                           .inheritedDescriptors = {ends[1]},
                                           .prepare = std::move(entrance)});
    ::close(ends[1]);
}

TapOwner::~TapOwner() {
    ::close(control_);
}

std::string TapOwner::open() {
    isClosed_ = false;
    command(wire::openTap);
    return waitForResult();
}

void TapOwner::beginRequestAccess() {
    command(wire::callMethod, "RequestAccess");
}

std::optional<std::string> TapOwner::result() {
    receive();
    return std::exchange(result_, {});
}

void TapOwner::send(const tap::ClientMessage& message) {
    sendBytes(text(tap::encode(message)));
}

void TapOwner::sendBytes(std::string_view packet) {
    command(wire::sendPacket, packet);
}

void TapOwner::flood(std::string_view packet) {
    command(wire::flood, packet);
}

void TapOwner::stopReading() {
    command(wire::stopReading);
}

void TapOwner::answer(Answer answer) {
    constexpr std::array letters{wire::swallow, wire::pass, wire::wait};
    command(wire::answer, {&letters.at(static_cast<std::size_t>(answer)), 1});
}

void TapOwner::close() {
    command(wire::closeTap);
}

const std::vector<tap::ServiceMessage>& TapOwner::messages() {
    receive();
    return messages_;
}

std::vector<tap::KeyEvent> TapOwner::events() {
    std::vector<tap::KeyEvent> events;
    for (const tap::ServiceMessage& message : messages())
        if (const auto* event = std::get_if<tap::KeyEvent>(&message)) events.push_back(*event);
    return events;
}

std::uint32_t TapOwner::question() {
    std::uint32_t last = 0;
    for (const tap::KeyEvent& event : events())
        if (event.sequence != 0) last = event.sequence;
    return last;
}

bool TapOwner::isDisabled() {
    bool isDisabled = false;
    for (const tap::ServiceMessage& message : messages())
        isDisabled = isDisabled || std::holds_alternative<tap::Disabled>(message);
    return isDisabled;
}

bool TapOwner::isClosed() {
    receive();
    return isClosed_;
}

void TapOwner::clear() {
    receive();
    messages_.clear();
}

std::string TapOwner::call(std::string_view method) {
    command(wire::callMethod, method);
    return waitForResult();
}

void TapOwner::command(char what, std::string_view rest) {
    const std::string packet = what + std::string(rest);
    if (::send(control_, packet.data(), packet.size(), MSG_NOSIGNAL) < 0)
        throw SupportError("the tap's owner has gone", errno);
}

std::string TapOwner::waitForResult() {
    if (!support::waitUntil([this] {
            receive();
            return result_.has_value();
        }))
        throw SupportError("the tap's owner gives no answer");
    return *std::exchange(result_, {});
}

void TapOwner::receive() {
    std::array<char, 65536> buffer{};
    ssize_t size = 0;
    while ((size = recv(control_, buffer.data(), buffer.size(), MSG_DONTWAIT)) > 0) {
        const std::string_view rest{buffer.data() + 1, static_cast<std::size_t>(size) - 1};
        if (buffer[0] == wire::result) result_ = rest;
        if (buffer[0] == wire::closed) isClosed_ = true;
        if (buffer[0] != wire::packet) continue;
        const auto message = tap::decodeServiceMessage(std::as_bytes(std::span(rest)));
        if (!message) throw SupportError("the service sent a malformed message");
        messages_.push_back(*message);
    }
}

}  // namespace quillmere::machine
