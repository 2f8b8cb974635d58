#include "Tests/Machine/DeviceGrab.h"

#include "Tests/Machine/InputNode.h"
#include "Tests/Support/SupportError.h"
#include "Tests/Support/WaitUntil.h"

#include <cerrno>
#include <filesystem>

#include <fcntl.h>
#include <linux/input.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace quillmere::machine {

namespace {

int openByName(const std::string& name) {
    for (const auto& entry : std::filesystem::directory_iterator("/dev/input")) {
        const int descriptor = open(entry.path().c_str(), O_RDONLY | O_CLOEXEC);
        if (descriptor < 0) continue;
        if (deviceName(descriptor) == name && !isClone(descriptor)) return descriptor;
        close(descriptor);
    }
    throw support::SupportError("no device " + name);
}

}  // namespace

DeviceGrab::DeviceGrab(const std::string& name) : descriptor_(openByName(name)) {
    if (ioctl(descriptor_, EVIOCGRAB, 1) != 0) throw support::SupportError("cannot grab " + name, errno);
}

DeviceGrab::~DeviceGrab() {
    close(descriptor_);
}

bool DeviceGrab::hasGot(const KeyStroke& stroke) const {
    return support::waitUntil([&] {
        pollfd ready{descriptor_, POLLIN, 0};
        input_event event{};
        while (poll(&ready, 1, 0) == 1 && read(descriptor_, &event, sizeof event) == ssize_t{sizeof event})
            if (event.type == EV_KEY && event.code == stroke.code && (event.value == 1) == stroke.isDown) return true;
        return false;
    });
}

}  // namespace quillmere::machine
