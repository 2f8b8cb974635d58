#include "Tests/App/FakeSway.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace quillmere {

namespace {

constexpr std::uint32_t runCommand = 0;
constexpr std::uint32_t getVersion = 7;
constexpr std::uint32_t getConfig = 9;
constexpr std::uint32_t getBindingState = 12;
constexpr std::uint32_t getInputs = 100;
constexpr std::uint32_t inputEvent = 0x80000015;
constexpr std::size_t headerSize = 14;

std::string json(const char* key, const std::string& value) {
    return QJsonDocument(QJsonObject{{key, QString::fromStdString(value)}}).toJson().toStdString();
}

bool receiveAll(int client, char* bytes, std::size_t size) {
    while (size > 0) {
        const ssize_t count = recv(client, bytes, size, 0);
        if (count <= 0) return false;
        bytes += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

}  // namespace

FakeSway::FakeSway(const std::filesystem::path& path) : listener_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.string().copy(address.sun_path, sizeof address.sun_path - 1);
    constexpr int backlog = 5;
    if (bind(listener_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0
        || listen(listener_, backlog) != 0 || pipe2(wake_, O_CLOEXEC) != 0)
        throw std::runtime_error("the played compositor does not start");
    thread_ = std::thread([this] { run(); });
}

FakeSway::~FakeSway() {
    close(wake_[1]);
    thread_.join();
    close(wake_[0]);
    close(listener_);
}

void FakeSway::setInputs(const QByteArray& inputs) {
    const std::lock_guard lock(mutex_);
    inputs_ = inputs;
}

void FakeSway::setWireAnswer(const std::string& bytes) {
    const std::lock_guard lock(mutex_);
    wireAnswer_ = bytes;
}

void FakeSway::addEvent(const QByteArray& event) {
    const std::lock_guard lock(mutex_);
    events_ += message(inputEvent, event.toStdString());
}

void FakeSway::setVersion(int major, int minor) {
    const std::lock_guard lock(mutex_);
    version_ = QJsonDocument(QJsonObject{{"human_readable", QStringLiteral("%1.%2").arg(major).arg(minor)},
                                         {"major", major},
                                         {"minor", minor}})
                   .toJson();
}

void FakeSway::setConfiguration(const std::string& text) {
    const std::lock_guard lock(mutex_);
    configuration_ = text;
}

void FakeSway::setMode(const std::string& name) {
    const std::lock_guard lock(mutex_);
    mode_ = name;
}

void FakeSway::setSilent(bool isSilent) {
    const std::lock_guard lock(mutex_);
    isSilent_ = isSilent;
    wake('s');
}

void FakeSway::announce(const QByteArray& event) {
    const std::lock_guard lock(mutex_);
    announcements_ += message(inputEvent, event.toStdString());
    wake('a');
}

void FakeSway::wake(char reason) {
    if (write(wake_[1], &reason, 1) != 1) throw std::runtime_error("the played compositor has ended");
}

void FakeSway::setPieces(std::size_t pieces) {
    const std::lock_guard lock(mutex_);
    pieces_ = pieces;
}

void FakeSway::hangUp() {
    std::unique_lock lock(mutex_);
    hangsUp_ = true;
    wake('h');
    hungUp_.wait(lock, [this] { return !hangsUp_; });
}

std::vector<std::string> FakeSway::commands() {
    const std::lock_guard lock(mutex_);
    return commands_;
}

std::size_t FakeSway::connectionCount() {
    const std::lock_guard lock(mutex_);
    return connectionCount_;
}

std::string FakeSway::message(std::uint32_t type, const std::string& payload) {
    std::string bytes = "i3-ipc";
    const auto size = static_cast<std::uint32_t>(payload.size());
    bytes.append(reinterpret_cast<const char*>(&size), sizeof size);
    bytes.append(reinterpret_cast<const char*>(&type), sizeof type);
    return bytes + payload;
}

void FakeSway::run() {
    std::vector<pollfd> all{{.fd = wake_[0], .events = POLLIN, .revents = 0},
                            {.fd = listener_, .events = POLLIN, .revents = 0}};
    const auto isClient = [&](const pollfd& entry) { return entry.fd != wake_[0] && entry.fd != listener_; };
    const auto closeClients = [&](const auto& isEnded) {
        for (const pollfd& entry : all)
            if (isClient(entry) && isEnded(entry)) close(entry.fd);
        std::erase_if(all, [&](const pollfd& entry) { return isClient(entry) && isEnded(entry); });
    };
    const auto any = [](const pollfd&) { return true; };
    while (poll(all.data(), all.size(), -1) > 0) {
        char byte = 0;
        if (all[0].revents != 0 && read(wake_[0], &byte, 1) != 1) break;
        std::vector<int> ended;
        for (const pollfd& entry : all)
            if (isClient(entry) && entry.revents != 0 && !serve(entry.fd)) ended.push_back(entry.fd);
        const bool isNew = all[1].revents != 0;
        closeClients([&](const pollfd& entry) { return std::ranges::find(ended, entry.fd) != ended.end(); });
        const std::lock_guard lock(mutex_);
        if (!isSilent_)
            for (const auto& [client, bytes] : std::exchange(heldBack_, {}))
                send(client, bytes);
        const std::string announcements = std::exchange(announcements_, {});
        for (const pollfd& entry : all)
            if (isClient(entry)) send(entry.fd, announcements);
        if (std::exchange(hangsUp_, false)) {
            closeClients(any);
            hungUp_.notify_one();
        }
        if (!isNew) continue;
        all.push_back({.fd = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC), .events = POLLIN, .revents = 0});
        ++connectionCount_;
    }
    closeClients(any);
}

/// Answers one message; false when the client is gone.
bool FakeSway::serve(int client) {
    char header[headerSize];
    if (!receiveAll(client, header, sizeof header)) return false;
    std::uint32_t size = 0;
    std::uint32_t type = 0;
    std::memcpy(&size, header + 6, sizeof size);
    std::memcpy(&type, header + 10, sizeof type);
    std::string payload(size, '\0');
    if (!receiveAll(client, payload.data(), size)) return false;
    const std::string bytes = answer(type, payload);
    if (!holdBack(client, bytes)) send(client, bytes);
    return true;
}

bool FakeSway::holdBack(int client, const std::string& bytes) {
    const std::lock_guard lock(mutex_);
    if (isSilent_) heldBack_.emplace_back(client, bytes);
    return isSilent_;
}

std::string FakeSway::answer(std::uint32_t type, const std::string& payload) {
    const std::lock_guard lock(mutex_);
    if (type == runCommand) commands_.push_back(payload);
    if (type == getVersion) return message(type, version_.toStdString());
    if (type == getConfig) return message(type, json("config", configuration_));
    if (type == getBindingState) return message(type, json("name", mode_));
    if (type != getInputs) return message(type, R"([{"success": true}])");
    const std::string events = std::exchange(events_, {});
    return events + (wireAnswer_.empty() ? message(type, inputs_.toStdString()) : wireAnswer_);
}

void FakeSway::send(int client, const std::string& bytes) {
    const std::size_t step = bytes.size() / pieces_ + 1;
    for (std::size_t from = 0; from < bytes.size(); from += step) {
        const std::string piece = bytes.substr(from, step);
        if (::send(client, piece.data(), piece.size(), MSG_NOSIGNAL) < 0) return;
        // So that each is received by itself.
        if (pieces_ > 1) std::this_thread::yield();
    }
}

}  // namespace quillmere
