#include "Tests/Machine/InputNode.h"

#include "Tests/Machine/VirtualKeyboard.h"

#include <array>
#include <filesystem>
#include <string_view>

#include <linux/input.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace quillmere::machine {

std::string deviceName(int descriptor) {
    std::array<char, 256> name{};
    return ioctl(descriptor, EVIOCGNAME(name.size() - 1), name.data()) < 0 ? std::string{} : std::string{name.data()};
}

bool isClone(int descriptor) {
    struct stat status{};
    std::array<char, 256> place{};
    if (fstat(descriptor, &status) != 0) return false;
    const std::string number = std::to_string(major(status.st_rdev)) + ":" + std::to_string(minor(status.st_rdev));
    std::error_code isGone;
    const std::string path = std::filesystem::canonical("/sys/dev/char/" + number, isGone);
    const bool hasPlace = ioctl(descriptor, EVIOCGPHYS(place.size() - 1), place.data()) >= 0;
    const bool isOfTest = hasPlace && std::string_view(place.data()).starts_with(VirtualKeyboard::place);
    return path.starts_with("/sys/devices/virtual/") && !isOfTest;
}

}  // namespace quillmere::machine
