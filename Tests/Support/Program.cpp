#include "Tests/Support/Program.h"

#include "Tests/Support/WaitUntil.h"

#include <QMargins>

#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>

#include <array>

namespace quillmere::support {

namespace {

constexpr const char* plateTitle = "Quillmere plate";

Environment merged(Environment environment, const Environment& additions) {
    for (const auto& [name, value] : additions)
        environment[name] = value;
    return environment;
}

int masterKeyboard(Display* display) {
    int pointer = 0;
    XIGetClientPointer(display, None, &pointer);
    int count = 0;
    XIDeviceInfo* device = XIQueryDevice(display, pointer, &count);
    // A master pointer's attachment is its master keyboard.
    const int keyboard = device != nullptr && count > 0 ? device->attachment : 0;
    if (device != nullptr) XIFreeDeviceInfo(device);
    return keyboard;
}

}  // namespace

Program::Program(const std::filesystem::path& program, Desktop& desktop, const Options& options)
    : desktop_(desktop),
      process_({
          .arguments = {program.string()},
          .environment = merged(desktop.environment(), options.additions),
          .output = desktop.folder() / "quillmere.log",
          .inheritedDescriptors = {},
          .prepare = options.prepare,
      }) {}

bool Program::holdsGrab(Key key, unsigned int modifiers) const {
    // Two programs cannot have the same grab, so a refusal tells of the other.
    // The server is ours alone meanwhile: our own attempt disturbs nobody.
    Display* display = desktop_.connection().display();
    std::array<unsigned char, XIMaskLen(XI_LASTEVENT)> bits{};
    XIEventMask mask{XIAllMasterDevices, static_cast<int>(bits.size()), bits.data()};
    XIGrabModifiers wanted{static_cast<int>(modifiers), 0};
    const int keyboard = masterKeyboard(display);
    XGrabServer(display);
    const int refused = XIGrabKeycode(display, keyboard, static_cast<int>(key), DefaultRootWindow(display),
                                      GrabModeAsync, GrabModeAsync, False, &mask, 1, &wanted);
    if (refused == 0) XIUngrabKeycode(display, keyboard, static_cast<int>(key), DefaultRootWindow(display), 1, &wanted);
    XUngrabServer(display);
    XSync(display, False);
    return refused > 0;
}

bool Program::waitForGrab(Key key, unsigned int modifiers) {
    waitUntil([&] { return holdsGrab(key, modifiers) || !process_.isRunning(); });
    return holdsGrab(key, modifiers);
}

bool Program::waitForTrayItem() {
    waitUntil([this] { return desktop_.tray()->hasItem() || !process_.isRunning(); });
    return desktop_.tray()->hasItem();
}

std::optional<WindowInfo> Program::plate() const {
    auto window = desktop_.connection().visibleWindow(plateTitle);
    if (!window) return std::nullopt;
    // left, right, top, bottom: what of the window is shadow
    const auto shadow = desktop_.connection().numbers(window->id, "_GTK_FRAME_EXTENTS", 4);
    const auto side = [&](std::size_t index) { return static_cast<int>(shadow.size() == 4 ? shadow[index] : 0); };
    window->frame = window->frame.marginsRemoved(QMargins(side(0), side(2), side(1), side(3)));
    return window;
}

bool Program::waitForPlate() const {
    return waitUntil([this] { return plate().has_value(); });
}

bool Program::waitForNoPlate() const {
    return waitUntil([this] { return !plate().has_value(); });
}

}  // namespace quillmere::support
