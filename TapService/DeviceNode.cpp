#include "TapService/DeviceNode.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>

namespace quillmere::tap {

namespace {

/// The place in sysfs of the device that is open.
std::string pathOf(const FileDescriptor& file) {
    struct stat status{};
    if (::fstat(file.get(), &status) < 0 || !S_ISCHR(status.st_mode)) return {};
    const std::string link =
        "/sys/dev/char/" + std::to_string(major(status.st_rdev)) + ':' + std::to_string(minor(status.st_rdev));
    std::array<char, PATH_MAX> path{};
    return ::realpath(link.c_str(), path.data()) == nullptr ? "" : path.data();
}

}  // namespace

FileDescriptor openDeviceNode(const std::string& node, const std::string& path) {
    FileDescriptor file(::open(node.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
    // Asked after opening: as long as the place is there, the node is its own.
    if (!file || pathOf(file) == path) return file;
    errno = ESTALE;
    return {};
}

}  // namespace quillmere::tap
