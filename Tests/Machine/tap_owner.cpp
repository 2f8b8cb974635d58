// A program that owns the tap, and does with it what a test says. It is a
// process of its own, so that it can belong to a session, and be stopped and
// killed.

#include "TapService/TapProtocol.h"
#include "Tests/Machine/OwnerWire.h"
#include "Tests/Machine/SystemBus.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <span>
#include <string>
#include <string_view>
#include <variant>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using namespace quillmere;
using namespace quillmere::machine;

constexpr BusMember member(const char* name) {
    return {"org.quillmere.KeyTap1", "/org/quillmere/KeyTap1", "org.quillmere.KeyTap1", name};
}

class Owner {
public:
    explicit Owner(int control) : control_(control) {}

    /// Until the test closes its end.
    void run() {
        for (;;) {
            std::array waits{pollfd{control_, POLLIN, 0}, pollfd{isReading_ ? channel_ : -1, POLLIN, 0}};
            if (poll(waits.data(), waits.size(), -1) < 0) return;
            if (waits[1].revents != 0) readChannel();
            if (waits[0].revents != 0 && !readControl()) return;
        }
    }

private:
    bool readControl() {
        const ssize_t size = recv(control_, buffer_.data(), buffer_.size(), 0);
        if (size <= 0) return false;
        obey(buffer_[0], {buffer_.data() + 1, static_cast<std::size_t>(size) - 1});
        return true;
    }

    void obey(char command, std::string_view rest) {
        if (command == wire::callMethod) tell(wire::result, call(std::string(rest)));
        if (command == wire::openTap) tell(wire::result, open());
        if (command == wire::sendPacket) sendToService(rest);
        if (command == wire::answer) answer_ = rest.at(0);
        if (command == wire::stopReading) isReading_ = false;
        if (command == wire::closeTap) closeChannel();
        if (command == wire::flood) flood(std::string(rest));
    }

    void flood(const std::string& packet) const {
        while (sendToService(packet) || errno == EAGAIN) {
            pollfd room{channel_, POLLOUT, 0};
            poll(&room, 1, -1);
        }
    }

    std::string call(const std::string& name) {
        const BusReply reply = bus_.call(member(name.c_str()), "");
        if (!reply.error.empty()) return reply.error;
        int yes = 1;
        const bool isAnswer = sd_bus_message_peek_type(reply.message.get(), nullptr, nullptr) > 0;
        if (isAnswer && sd_bus_message_read(reply.message.get(), "b", &yes) < 0) return "no boolean";
        return yes != 0 ? "" : "no";
    }

    std::string open() {
        closeChannel();
        isReading_ = true;
        const BusReply reply = bus_.call(member("OpenTap"), "");
        if (!reply.error.empty()) return reply.error;
        int descriptor = -1;
        if (sd_bus_message_read(reply.message.get(), "h", &descriptor) < 0) return "no descriptor";
        channel_ = fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
        return {};
    }

    void readChannel() {
        const ssize_t size = recv(channel_, buffer_.data(), buffer_.size(), 0);
        if (size <= 0) {
            closeChannel();
            tell(wire::closed, {});
            return;
        }
        const std::string_view text{buffer_.data(), static_cast<std::size_t>(size)};
        const auto message = tap::decodeServiceMessage(std::as_bytes(std::span(text)));
        const auto* event = message ? std::get_if<tap::KeyEvent>(&*message) : nullptr;
        if (event != nullptr && event->sequence != 0 && answer_ != wire::wait) {
            const tap::Packet verdict = tap::encode(tap::Verdict{event->sequence, answer_ == wire::swallow});
            sendToService({reinterpret_cast<const char*>(verdict.data()), verdict.size()});
        }
        tell(wire::packet, text);
    }

    bool sendToService(std::string_view packet) const {
        return send(channel_, packet.data(), packet.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(packet.size());
    }

    void tell(char what, std::string_view rest) const {
        const std::string packet = what + std::string(rest);
        if (send(control_, packet.data(), packet.size(), MSG_NOSIGNAL) < 0) std::exit(1);
    }

    void closeChannel() {
        if (channel_ >= 0) close(channel_);
        channel_ = -1;
    }

    int control_;
    int channel_ = -1;
    char answer_ = wire::pass;
    bool isReading_ = true;
    std::array<char, 65536> buffer_{};
    SystemBus bus_;
};

}  // namespace

int main(int, char** arguments) {
    Owner(std::atoi(arguments[1])).run();
}
