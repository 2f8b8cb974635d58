#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeSettingsHelper.h"

#include "Quillmere/Platform/Linux/HelperProgram.h"
#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeHelperWords.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <utility>
#include <vector>

namespace quillmere {

std::string GnomeSettingsHelper::standardProgram() {
    return HelperProgram::path("quillmere-gnome-settings");
}

GnomeSettingsHelper::GnomeSettingsHelper(std::string program) : program_(std::move(program)) {}

GnomeSettingsHelper::~GnomeSettingsHelper() {
    if (process_ == 0) return;
    incoming_.reset();
    // By this it knows, and ends once the list is in order: not waited for.
    close(socket_);
    waitpid(process_, nullptr, WNOHANG);
}

std::optional<std::string> GnomeSettingsHelper::ask(const std::string& question, Clock::time_point deadline) {
    if (!start()) return std::nullopt;
    while (isAwaited_ && waitForPacket(Clock::now()))
        receive();
    if (isAwaited_ || process_ == 0) return std::nullopt;
    const std::string packet = std::to_string(++number_) + ' ' + question;
    if (send(socket_, packet.data(), packet.size(), MSG_NOSIGNAL) < 0) {
        lose();
        return std::nullopt;
    }
    isAwaited_ = true;
    return waitForPacket(deadline) ? receive() : std::nullopt;
}

bool GnomeSettingsHelper::start() {
    if (process_ != 0) return true;
    std::array<int, 2> sockets{};
    if (!isUsable() || socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, sockets.data()) != 0) return false;
    process_ = HelperProgram::start(program_, {}, sockets[1]);
    close(sockets[1]);
    if (process_ == 0) {
        ++deaths_;
        close(sockets[0]);
        return false;
    }
    socket_ = sockets[0];
    isAwaited_ = false;
    incoming_ = std::make_unique<QSocketNotifier>(socket_, QSocketNotifier::Read);
    // Nobody waits: a late answer, or the end.
    connect(incoming_.get(), &QSocketNotifier::activated, this, [this] {
        if (waitForPacket(Clock::now())) receive();
    });
    return true;
}

/// The helper has gone: what it may have left is put right by the next one.
void GnomeSettingsHelper::lose() {
    // Its own signal may be what has called.
    incoming_->setEnabled(false);
    incoming_.release()->deleteLater();
    close(std::exchange(socket_, -1));
    const pid_t gone = std::exchange(process_, 0);
    kill(gone, SIGKILL);
    while (waitpid(gone, nullptr, 0) < 0 && errno == EINTR) {
    }
    ++deaths_;
    start();
}

bool GnomeSettingsHelper::waitForPacket(Clock::time_point deadline) const {
    pollfd ready{socket_, POLLIN, 0};
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
    return poll(&ready, 1, static_cast<int>(std::max(left.count(), decltype(left.count()){0}))) == 1;
}

/// The answer to the last question, out of the next packet.
std::optional<std::string> GnomeSettingsHelper::receive() {
    std::vector<char> packet(gnomehelper::longestPacket);
    const ssize_t length = recv(socket_, packet.data(), packet.size(), MSG_DONTWAIT);
    if (length < 0 && (errno == EAGAIN || errno == EINTR)) return std::nullopt;
    if (length <= 0) {
        lose();
        return std::nullopt;
    }
    const std::string text(packet.data(), static_cast<std::size_t>(length));
    const std::string number = std::to_string(number_) + ' ';
    if (!text.starts_with(number)) return std::nullopt;
    isAwaited_ = false;
    deaths_ = 0;
    return text.substr(number.size());
}

}  // namespace quillmere
