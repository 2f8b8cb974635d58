#include "Tests/Support/XServer.h"

#include "Tests/Support/StartupPipe.h"
#include "Tests/Support/SupportError.h"

#include <X11/XKBlib.h>
#include <X11/extensions/XInput2.h>

#include <array>

namespace quillmere::support {

namespace {

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

XServer::XServer(const std::filesystem::path& folder, const Environment& environment, QSize screen)
    : environment_(environment) {
    StartupPipe ready;
    const std::string size = std::to_string(screen.width()) + "x" + std::to_string(screen.height()) + "x24";
    process_ = std::make_unique<ChildProcess>(ChildProcess::Options{
        .arguments = {"Xvfb", "-displayfd", std::to_string(ready.writeEnd()), "-screen", "0", size, "-noreset",
                      "-nolisten", "tcp", "-dpi", "96"},
        .environment = environment_,
        .output = folder / "xserver.log",
        .inheritedDescriptors = {ready.writeEnd()},
        .prepare = {},
    });
    const std::string number = ready.readLine();
    if (number.empty()) throw SupportError("the X server does not start: " + process_->output());
    display_ = ":" + number;
    environment_["DISPLAY"] = display_;
    connection_ = std::make_unique<XConnection>(display_);
}

void XServer::setLayouts(const std::string& layouts, const std::string& variants) {
    // The rules are named, since a server's own defaults differ by build.
    const int status = ChildProcess::run({
        .arguments = {"setxkbmap", "-rules", "evdev", "-model", "pc105", "-layout", layouts, "-variant", variants,
                      "-option", ""},
        .environment = environment_,
        .output = {},
        .inheritedDescriptors = {},
        .prepare = {},
    });
    if (status != 0) throw SupportError("setxkbmap refuses " + layouts);
}

void XServer::setMonitors(const std::vector<QRect>& frames) {
    for (; monitors_ > 0; --monitors_)
        xrandr({"--delmonitor", "monitor" + std::to_string(monitors_ - 1)});
    for (const QRect& frame : frames) {
        // Width and height in pixels and millimetres, and the place.
        const std::string geometry = std::to_string(frame.width()) + "/300x" + std::to_string(frame.height()) + "/200+"
                                     + std::to_string(frame.x()) + "+" + std::to_string(frame.y());
        // The server's only output, as Xvfb names it; the rest have none.
        const bool isFirst = monitors_ == 0;
        xrandr({"--setmonitor", (isFirst ? "*monitor" : "monitor") + std::to_string(monitors_), geometry,
                isFirst ? "screen" : "none"});
        ++monitors_;
    }
}

void XServer::xrandr(const std::vector<std::string>& arguments) const {
    std::vector<std::string> words{"xrandr"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    const int status = ChildProcess::run(
        {.arguments = words, .environment = environment_, .output = {}, .inheritedDescriptors = {}, .prepare = {}});
    if (status != 0) throw SupportError("xrandr refuses " + arguments.back());
}

int XServer::group() {
    XkbStateRec state{};
    XkbGetState(connection_->display(), XkbUseCoreKbd, &state);
    return state.group;
}

void XServer::setGroup(int group) {
    XkbLockGroup(connection_->display(), XkbUseCoreKbd, static_cast<unsigned int>(group));
    connection_->synchronize();
}

void XServer::setRepeat(unsigned int delay, unsigned int interval) {
    XkbSetAutoRepeatRate(connection_->display(), XkbUseCoreKbd, delay, interval);
    connection_->synchronize();
}

bool XServer::isGrabbed(Key key, unsigned int modifiers) const {
    // Two programs cannot have the same grab, so a refusal tells of the other.
    // The server is ours alone meanwhile: our own attempt disturbs nobody.
    Display* display = connection_->display();
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

}  // namespace quillmere::support
