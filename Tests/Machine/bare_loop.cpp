// The least that stands between a keyboard and its clone: one read, one write.
//
//     bare_loop NAME

#include "Tests/Machine/DeviceGrab.h"

#include <array>
#include <cstdlib>

#include <libevdev/libevdev-uinput.h>
#include <libevdev/libevdev.h>
#include <linux/input.h>
#include <sys/resource.h>
#include <unistd.h>

int main(int, char** arguments) {
    const quillmere::machine::DeviceGrab grab(arguments[1]);
    libevdev* device = nullptr;
    libevdev_uinput* clone = nullptr;
    if (libevdev_new_from_fd(grab.descriptor(), &device) < 0
        || libevdev_uinput_create_from_device(device, LIBEVDEV_UINPUT_OPEN_MANAGED, &clone) < 0
        // The service's own.
        || setpriority(PRIO_PROCESS, 0, -10) != 0)
        return EXIT_FAILURE;
    std::array<input_event, 64> events{};
    for (;;) {
        const ssize_t size = read(grab.descriptor(), events.data(), sizeof events);
        if (size <= 0 || write(libevdev_uinput_get_fd(clone), events.data(), static_cast<std::size_t>(size)) != size)
            return EXIT_FAILURE;
    }
}
