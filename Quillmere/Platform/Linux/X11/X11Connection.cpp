#include "Quillmere/Platform/Linux/X11/X11Connection.h"

#include "Quillmere/Platform/Linux/LinuxSession.h"

#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <mutex>
#include <span>
#include <string_view>
#include <vector>

namespace quillmere {

namespace {

// Xlib has one pair of error handlers for the whole process, and its own ones
// end the process, from whatever thread. Errors of other people's connections
// stay theirs.
struct ErrorHandling {
    std::mutex mutex;
    std::vector<Display*> ours;
    XErrorHandler previous = nullptr;
    XIOErrorHandler previousOfLoss = nullptr;
};

ErrorHandling& errorHandling() {
    static ErrorHandling instance;
    return instance;
}

bool isOurs(Display* display) {
    ErrorHandling& handling = errorHandling();
    const std::scoped_lock lock(handling.mutex);
    return std::ranges::find(handling.ours, display) != handling.ours.end();
}

int handleError(Display* display, XErrorEvent* event) {
    if (isOurs(display)) return 0;
    const XErrorHandler previous = errorHandling().previous;
    return previous == nullptr ? 0 : previous(display, event);
}

int handleLoss(Display* display) {
    // What follows for ours is the exit handler that each has of its own.
    if (isOurs(display)) return 0;
    const XIOErrorHandler previous = errorHandling().previousOfLoss;
    return previous == nullptr ? 0 : previous(display);
}

void adopt(Display* display) {
    ErrorHandling& handling = errorHandling();
    const std::scoped_lock lock(handling.mutex);
    handling.ours.push_back(display);
    static std::once_flag installed;
    std::call_once(installed, [&] {
        handling.previous = XSetErrorHandler(handleError);
        handling.previousOfLoss = XSetIOErrorHandler(handleLoss);
    });
}

void abandon(Display* display) {
    ErrorHandling& handling = errorHandling();
    const std::scoped_lock lock(handling.mutex);
    std::erase(handling.ours, display);
}

// Before version 23 Xwayland does not name itself in an extension.
constexpr std::string_view xwaylandDevicePrefix = "xwayland-";
// The device that every server has besides the real ones.
constexpr std::string_view testDeviceName = "XTEST";

}  // namespace

std::unique_ptr<X11Connection> X11Connection::open() {
    Display* display = XOpenDisplay(nullptr);
    if (display == nullptr) return nullptr;
    std::unique_ptr<X11Connection> connection(new X11Connection(display));
    if (!connection->initialize()) return nullptr;
    return connection;
}

X11Connection::X11Connection(_XDisplay* display) : display_(display) {
    adopt(display_);
    XSetIOErrorExitHandler(
        display_, [](Display* /*display*/, void* self) { static_cast<X11Connection*>(self)->isLost_ = true; }, this);
}

X11Connection::~X11Connection() {
    if (isLost_) {
        // Xlib keeps the display of a lost connection locked for the thread
        // that noticed, so closing it would wait for ever.
        close(ConnectionNumber(display_));
        return;
    }
    XCloseDisplay(display_);
    abandon(display_);
}

bool X11Connection::initialize() {
    int firstEvent = 0;
    int firstError = 0;
    if (XQueryExtension(display_, "XInputExtension", &xinputOpcode_, &firstEvent, &firstError) == 0) return false;
    // 2.2 is what the raw events during a grab came with.
    int major = 2;
    int minor = 2;
    if (XIQueryVersion(display_, &major, &minor) != Success || major < 2 || (major == 2 && minor < 2)) return false;
    int xkbOpcode = 0;
    int xkbMajor = XkbMajorVersion;
    int xkbMinor = XkbMinorVersion;
    if (XkbQueryExtension(display_, &xkbOpcode, &xkbEventBase_, &firstError, &xkbMajor, &xkbMinor) == 0) return false;
    return !isXwayland() && findMasterKeyboard();
}

bool X11Connection::isXwayland() const {
    int opcode = 0;
    int firstEvent = 0;
    int firstError = 0;
    if (XQueryExtension(display_, "XWAYLAND", &opcode, &firstEvent, &firstError) != 0) return true;
    int count = 0;
    XIDeviceInfo* devices = XIQueryDevice(display_, XIAllDevices, &count);
    if (devices == nullptr) return false;
    bool hasXwaylandDevice = false;
    bool hasKeyboard = false;
    for (const XIDeviceInfo& device : std::span(devices, static_cast<std::size_t>(count))) {
        const std::string_view name = device.name;
        if (name.starts_with(xwaylandDevicePrefix)) hasXwaylandDevice = true;
        if (device.use == XISlaveKeyboard && !name.contains(testDeviceName)) hasKeyboard = true;
    }
    XIFreeDeviceInfo(devices);
    // Just started it has no devices yet.
    return hasXwaylandDevice || (!hasKeyboard && LinuxSession::current().hasWayland);
}

bool X11Connection::findMasterKeyboard() {
    int count = 0;
    XIDeviceInfo* devices = XIQueryDevice(display_, XIAllMasterDevices, &count);
    if (devices == nullptr) return false;
    const std::span all(devices, static_cast<std::size_t>(count));
    const auto keyboard = std::ranges::find_if(all, [](const auto& device) { return device.use == XIMasterKeyboard; });
    const bool found = keyboard != all.end();
    if (found) masterKeyboard_ = keyboard->deviceid;
    XIFreeDeviceInfo(devices);
    return found;
}

unsigned long X11Connection::root() const {
    return DefaultRootWindow(display_);
}

int X11Connection::fileDescriptor() const {
    return ConnectionNumber(display_);
}

void X11Connection::synchronize() const {
    XSync(display_, False);
}

}  // namespace quillmere
