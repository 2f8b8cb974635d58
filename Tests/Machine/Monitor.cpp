#include "Tests/Machine/Monitor.h"

#include "Tests/Support/SupportError.h"
#include "Tests/Support/WaitUntil.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <fstream>
#include <sstream>
#include <utility>

#include <fcntl.h>
#include <linux/input-event-codes.h>
#include <poll.h>
#include <unistd.h>

namespace quillmere::machine {

using support::SupportError;

namespace {

constexpr std::chrono::milliseconds answerDeadline{30'000};

/// The emulator counts keys as the first PC keyboard's scan codes did. The
/// kernel took its codes from there, except for the keys added since.
int scanCode(std::uint16_t code) {
    static constexpr auto added = std::to_array<std::pair<std::uint16_t, int>>({
        {KEY_RIGHTCTRL, 0x9d},
        {KEY_RIGHTALT, 0xb8},
        {KEY_HOME, 0xc7},
        {KEY_UP, 0xc8},
        {KEY_LEFT, 0xcb},
        {KEY_RIGHT, 0xcd},
        {KEY_END, 0xcf},
        {KEY_DOWN, 0xd0},
        {KEY_DELETE, 0xd3},
        {KEY_LEFTMETA, 0xdb},
        {KEY_RIGHTMETA, 0xdc},
    });
    if (code <= KEY_F12) return code;
    const auto* found = std::ranges::find(added, code, &std::pair<std::uint16_t, int>::first);
    if (found == added.end()) throw SupportError("no scan code for key " + std::to_string(code));
    return found->second;
}

/// As the computer gets them.
std::int64_t bytesOf(std::uint16_t code) {
    return code <= KEY_F12 ? 1 : 2;
}

/// How many bytes the computer has taken from its built-in keyboard: one with
/// each interrupt 1.
std::int64_t bytesTaken() {
    std::ifstream interrupts("/proc/interrupts");
    std::string line;
    while (std::getline(interrupts, line)) {
        std::istringstream fields(line);
        std::string number;
        if (!(fields >> number) || number != "1:") continue;
        std::int64_t sum = 0;
        // One count for each processor.
        for (std::int64_t count = 0; fields >> count;)
            sum += count;
        return sum;
    }
    throw SupportError("no keyboard controller");
}

std::string eventText(const KeyStroke& stroke) {
    return std::string{R"({"type":"key","data":{"down":)"} + (stroke.isDown ? "true" : "false")
           + R"(,"key":{"type":"number","data":)" + std::to_string(scanCode(stroke.code)) + "}}}";
}

}  // namespace

std::vector<KeyStroke> taps(const std::vector<std::uint16_t>& codes) {
    std::vector<KeyStroke> strokes;
    for (const std::uint16_t code : codes) {
        strokes.push_back({code, true});
        strokes.push_back({code, false});
    }
    return strokes;
}

std::vector<KeyStroke> chord(const std::vector<std::uint16_t>& codes) {
    std::vector<KeyStroke> strokes;
    for (const std::uint16_t code : codes)
        strokes.push_back({code, true});
    for (auto code = codes.rbegin(); code != codes.rend(); ++code)
        strokes.push_back({*code, false});
    return strokes;
}

std::vector<KeyStroke> operator+(std::vector<KeyStroke> first, const std::vector<KeyStroke>& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

Monitor::Monitor() : port_(open("/dev/virtio-ports/monitor", O_RDWR | O_CLOEXEC)) {
    if (port_ < 0) throw SupportError("no monitor", errno);
    readLine();  // its greeting
    execute("qmp_capabilities", "{}");
}

Monitor::~Monitor() {
    close(port_);
}

void Monitor::type(const std::vector<KeyStroke>& strokes) {
    for (const KeyStroke& stroke : strokes) {
        if (keyboards_.empty()) waitForRoom(bytesOf(stroke.code));
        execute("input-send-event", R"({"events":[)" + eventText(stroke) + "]}");
    }
}

/// What does not fit into the keyboard any more is lost, as in a real one.
void Monitor::waitForRoom(std::int64_t bytes) {
    constexpr std::int64_t room = 12;
    const bool hasRoom = support::waitUntil([&] {
        const std::int64_t taken = bytesTaken();
        // What the keyboard answers to the computer's commands comes in as well.
        underWay_ = std::max(underWay_ - (taken - taken_), std::int64_t{0});
        taken_ = taken;
        return underWay_ + bytes <= room;
    });
    if (!hasRoom) throw SupportError("the computer does not read its keyboard");
    underWay_ += bytes;
}

void Monitor::plugKeyboard(const std::string& id) {
    execute("device_add", R"({"driver":"usb-kbd","bus":"hub.0","id":")" + id + "\"}");
    keyboards_.insert(id);
}

void Monitor::unplugKeyboard(const std::string& id) {
    execute("device_del", R"({"id":")" + id + "\"}");
    keyboards_.erase(id);
}

void Monitor::screenshot(const std::string& name) {
    execute("screendump", R"({"format":"png","filename":")" + name + ".png\"}");
}

void Monitor::execute(const std::string& command, const std::string& arguments) {
    const std::string line = R"({"execute":")" + command + R"(","arguments":)" + arguments + "}\n";
    if (write(port_, line.data(), line.size()) != static_cast<ssize_t>(line.size()))
        throw SupportError("the monitor takes no command", errno);
    for (;;) {
        const std::string answer = readLine();
        if (answer.starts_with(R"({"return")")) return;
        // Anything else is news of the emulator's own.
        if (answer.starts_with(R"({"error")")) throw SupportError(command + " " + arguments + ": " + answer);
    }
}

std::string Monitor::readLine() {
    std::size_t end = 0;
    while ((end = unread_.find('\n')) == std::string::npos) {
        pollfd ready{port_, POLLIN, 0};
        if (poll(&ready, 1, static_cast<int>(answerDeadline.count())) != 1) throw SupportError("the monitor is silent");
        std::array<char, 4096> buffer{};
        const ssize_t size = read(port_, buffer.data(), buffer.size());
        if (size <= 0) throw SupportError("the monitor has gone", errno);
        unread_.append(buffer.data(), static_cast<std::size_t>(size));
    }
    std::string line = unread_.substr(0, end);
    unread_.erase(0, end + 1);
    return line;
}

}  // namespace quillmere::machine
