#include "Tests/Support/SmallDisk.h"

#include "Tests/Support/SupportError.h"

#include <array>
#include <cerrno>
#include <string>
#include <utility>

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

namespace quillmere::support {

namespace {

/// From now on mounts of this process stay out of the machine's sight.
bool leaveMountNamespace() {
    return unshare(CLONE_NEWNS) == 0 && mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

}  // namespace

bool SmallDisk::isAllowed() {
    static const bool isAllowed = leaveMountNamespace();
    return isAllowed;
}

SmallDisk::SmallDisk(std::filesystem::path folder, std::size_t bytes) : folder_(std::move(folder)), bytes_(bytes) {
    const std::string options = "mode=0700,size=" + std::to_string(bytes);
    if (!isAllowed() || mount("tmpfs", folder_.c_str(), "tmpfs", 0, options.c_str()) != 0)
        throw SupportError("cannot mount", errno);
}

SmallDisk::~SmallDisk() {
    umount2(folder_.c_str(), MNT_DETACH);
}

void SmallDisk::fill() const {
    const int file = open(filler().c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (file < 0) throw SupportError("cannot write", errno);
    const std::array<char, 512> block{};
    while (write(file, block.data(), block.size()) > 0) {
    }
    const int error = errno;
    close(file);
    if (error != ENOSPC) throw SupportError("the disk does not fill up", error);
}

void SmallDisk::makeRoom() const {
    std::filesystem::remove(filler());
}

void SmallDisk::setReadOnly(bool isReadOnly) const {
    const std::string options = "size=" + std::to_string(bytes_);
    const unsigned long flags = isReadOnly ? MS_REMOUNT | MS_RDONLY : MS_REMOUNT;
    if (mount("tmpfs", folder_.c_str(), "tmpfs", flags, options.c_str()) != 0)
        throw SupportError("cannot remount", errno);
}

}  // namespace quillmere::support
