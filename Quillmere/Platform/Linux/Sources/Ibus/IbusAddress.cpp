#include "Quillmere/Platform/Linux/Sources/Ibus/IbusAddress.h"

#include <QDBusConnection>
#include <QFile>
#include <QString>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstddef>
#include <cstring>
#include <string_view>
#include <utility>

namespace quillmere::ibusAddress {

namespace {

constexpr const char* addressVariable = "IBUS_ADDRESS";

std::string variable(const char* name) {
    return qgetenv(name).toStdString();
}

std::string folder() {
    const std::string config = variable("XDG_CONFIG_HOME");
    // A relative one is to be ignored.
    return (config.starts_with('/') ? config : variable("HOME") + "/.config") + "/ibus/bus/";
}

/// ":0.1", "host:0": the parts that name a file.
std::string nameOfDisplay(const std::string& display) {
    const std::size_t colon = display.find(':');
    if (colon == std::string::npos) return {};
    const std::string host = display.substr(0, colon);
    const std::string number = display.substr(colon + 1);
    return (host.empty() ? "unix" : host) + '-' + number.substr(0, number.find('.'));
}

/// What stands behind "key=" in the line; absent in another line.
std::optional<std::string_view> valueOf(std::string_view line, std::string_view key) {
    if (!line.starts_with(key) || !line.substr(key.size()).starts_with('=')) return std::nullopt;
    return line.substr(key.size() + 1);
}

/// The name of a socket as the kernel takes it; empty for another address.
std::string socketName(const std::string& address) {
    constexpr std::array<std::pair<std::string_view, std::string_view>, 2> kinds{
        {{"unix:path=", ""}, {"unix:abstract=", std::string_view("\0", 1)}}};
    for (const auto& [key, start] : kinds) {
        if (!address.starts_with(key)) continue;
        const std::string value = address.substr(key.size(), address.find(',') - key.size());
        return std::string(start) + QByteArray::fromPercentEncoding(QByteArray::fromStdString(value)).toStdString();
    }
    return {};
}

bool lives(pid_t process) {
    return process == 0 || kill(process, 0) == 0 || errno == EPERM;
}

}  // namespace

std::optional<Note> find() {
    if (std::string address = variable(addressVariable); !address.empty()) return Note{.address = std::move(address)};
    for (const std::string& name : files()) {
        QFile file(QString::fromStdString(name));
        if (!file.open(QIODevice::ReadOnly)) continue;
        if (auto note = parse(file.readAll())) return note;
    }
    return std::nullopt;
}

std::vector<std::string> files() {
    if (!variable(addressVariable).empty()) return {};
    if (std::string file = variable("IBUS_ADDRESS_FILE"); !file.empty()) return {std::move(file)};
    std::vector<std::string> names =
        fileNames(QDBusConnection::localMachineId().toStdString(), variable("WAYLAND_DISPLAY"), variable("DISPLAY"));
    for (std::string& name : names)
        name.insert(0, folder());
    return names;
}

std::vector<std::string> fileNames(const std::string& machine, const std::string& waylandDisplay,
                                   const std::string& display) {
    std::vector<std::string> names;
    // A daemon that was started before the compositor knows only of the second.
    if (!waylandDisplay.empty()) names.push_back(machine + "-unix-" + waylandDisplay);
    if (const std::string name = nameOfDisplay(display); !name.empty()) names.push_back(machine + '-' + name);
    return names;
}

std::optional<Note> parse(const QByteArray& file) {
    Note note;
    for (const QByteArray& line : file.split('\n')) {
        const std::string text = line.trimmed().toStdString();
        if (const auto address = valueOf(text, addressVariable)) note.address = *address;
        const auto process = valueOf(text, "IBUS_DAEMON_PID");
        if (!process) continue;
        const auto [end, error] = std::from_chars(process->data(), process->data() + process->size(), note.process);
        // None of this user's is 0 or less, which would mean a whole group.
        if (error != std::errc() || note.process <= 0) return std::nullopt;
    }
    if (note.address.empty()) return std::nullopt;
    return note;
}

bool isListening(const Note& note) {
    const std::string name = socketName(note.address);
    sockaddr_un where{};
    if (!lives(note.process) || name.empty() || name.size() >= sizeof where.sun_path) return false;
    where.sun_family = AF_UNIX;
    std::memcpy(where.sun_path, name.data(), name.size());
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (socket < 0) return false;
    const auto length = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
    const bool isListening = ::connect(socket, reinterpret_cast<const sockaddr*>(&where), length) == 0;
    close(socket);
    return isListening;
}

}  // namespace quillmere::ibusAddress
