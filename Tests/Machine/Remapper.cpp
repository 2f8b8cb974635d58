#include "Tests/Machine/Remapper.h"

#include "Tests/Support/SupportError.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>

#include <fcntl.h>
#include <linux/input.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace quillmere::machine {

namespace {

/// Between two looks for new keyboards, in milliseconds.
constexpr int lookEvery = 20;

bool isOwn(int descriptor) {
    input_id id{};
    return ioctl(descriptor, EVIOCGID, &id) == 0 && id.vendor == VirtualKeyboard::vendor
           && id.product == VirtualKeyboard::product;
}

bool isKeyDown(int descriptor) {
    std::array<unsigned char, KEY_MAX / 8 + 1> keys{};
    return ioctl(descriptor, EVIOCGKEY(keys.size()), keys.data()) >= 0
           && std::ranges::any_of(keys, [](unsigned char byte) { return byte != 0; });
}

}  // namespace

Remapper::Remapper() : stop_(eventfd(0, EFD_CLOEXEC)) {
    if (stop_ < 0) throw support::SupportError("no remapper", errno);
    thread_ = std::thread([this] { run(); });
}

Remapper::~Remapper() {
    eventfd_write(stop_, 1);
    thread_.join();
    for (const auto& [node, descriptor] : taken_)
        if (descriptor >= 0) close(descriptor);
    close(stop_);
}

void Remapper::run() {
    for (;;) {
        takeNewKeyboards();
        std::vector<pollfd> waits{{stop_, POLLIN, 0}};
        for (const auto& [node, descriptor] : taken_)
            if (descriptor >= 0) waits.push_back({descriptor, POLLIN, 0});
        if (poll(waits.data(), waits.size(), lookEvery) < 0 && errno != EINTR) return;
        if (waits[0].revents != 0) return;
        for (const pollfd& wait : waits)
            if ((wait.revents & POLLIN) != 0) pass(wait.fd);
    }
}

void Remapper::takeNewKeyboards() {
    for (const auto& entry : std::filesystem::directory_iterator("/dev/input")) {
        const std::string node = entry.path();
        if (entry.path().filename().string().starts_with("event") && !taken_.contains(node)) take(node);
    }
}

void Remapper::take(const std::string& node) {
    const int descriptor = open(node.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    // A node that has just come may not be there for everybody yet.
    if (descriptor < 0) return;
    const bool isTaken = !isOwn(descriptor) && ioctl(descriptor, EVIOCGRAB, 1) == 0;
    // Whoever has seen a press is to see the release as well.
    if (isTaken && isKeyDown(descriptor)) {
        close(descriptor);
        return;
    }
    if (!isTaken) close(descriptor);
    taken_[node] = isTaken ? descriptor : -1;
}

void Remapper::pass(int descriptor) {
    input_event event{};
    while (read(descriptor, &event, sizeof event) == ssize_t{sizeof event})
        if (event.type == EV_KEY && event.value != 2) keyboard_.type({{event.code, event.value == 1}});
}

}  // namespace quillmere::machine
