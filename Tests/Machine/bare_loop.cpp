// The least that stands between a keyboard and its clone: one read, one write.
//
//     bare_loop NAME CLONE'S-NAME

#include "TapService/KeyboardClone.h"
#include "Tests/Machine/DeviceGrab.h"

#include <array>
#include <cstdlib>

#include <fcntl.h>
#include <libevdev/libevdev-uinput.h>
#include <libevdev/libevdev.h>
#include <linux/input.h>
#include <linux/uinput.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <unistd.h>

int main(int, char** arguments) {
    const quillmere::machine::DeviceGrab grab(arguments[1]);
    libevdev* device = nullptr;
    libevdev_uinput* clone = nullptr;
    const int output = open("/dev/uinput", O_RDWR | O_CLOEXEC);
    // Or the service, if it runs beside this, takes the clone for a keyboard.
    if (ioctl(output, UI_SET_PHYS, quillmere::tap::KeyboardClone::mark) < 0
        || libevdev_new_from_fd(grab.descriptor(), &device) < 0)
        return EXIT_FAILURE;
    libevdev_set_name(device, arguments[2]);
    if (libevdev_uinput_create_from_device(device, output, &clone) < 0
        // The service's own.
        || setpriority(PRIO_PROCESS, 0, -10) != 0)
        return EXIT_FAILURE;
    std::array<input_event, 64> events{};
    for (;;) {
        const ssize_t size = read(grab.descriptor(), events.data(), sizeof events);
        if (size <= 0 || write(output, events.data(), static_cast<std::size_t>(size)) != size) return EXIT_FAILURE;
    }
}
