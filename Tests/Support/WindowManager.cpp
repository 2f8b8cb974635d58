#include "Tests/Support/WindowManager.h"

#include "Tests/Support/SupportError.h"
#include "Tests/Support/WaitUntil.h"

#include <X11/Xlib.h>

#include <chrono>
#include <fstream>
#include <string>

namespace quillmere::support {

namespace {

/// Asks how wide a window's frame would be, which every window manager of
/// today answers with a property.
void askForFrame(XConnection& connection, Window window) {
    XEvent request{};
    request.xclient.type = ClientMessage;
    request.xclient.window = window;
    request.xclient.message_type = connection.atom("_NET_REQUEST_FRAME_EXTENTS");
    request.xclient.format = 32;
    XSendEvent(connection.display(), connection.root(), False, SubstructureRedirectMask | SubstructureNotifyMask,
               &request);
    connection.synchronize();
}

/// A window manager announces itself before it listens, and may then sleep on
/// a request that came in between: so it is asked until it answers.
bool waitUntilItAnswers(XConnection& connection) {
    const Window window = XCreateSimpleWindow(connection.display(), connection.root(), 0, 0, 1, 1, 0, 0, 0);
    const auto hasAnswered = [&] { return connection.number(window, "_NET_FRAME_EXTENTS").has_value(); };
    const bool answers = waitUntil([&] {
        askForFrame(connection, window);
        // One that starts slowly answers all requests, one after the other.
        return waitUntil(hasAnswered, std::chrono::milliseconds(100));
    });
    XDestroyWindow(connection.display(), window);
    connection.synchronize();
    return answers;
}

/// Without key bindings: those of a distribution start its programs.
std::string writeConfiguration(const std::filesystem::path& folder) {
    const std::filesystem::path file = folder / "openbox.xml";
    std::ofstream(file) << R"(<?xml version="1.0" encoding="UTF-8"?>
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <desktops><number>1</number></desktops>
  <keyboard/>
</openbox_config>
)";
    return file.string();
}

}  // namespace

WindowManager::WindowManager(const std::filesystem::path& folder, const Environment& environment,
                             XConnection& connection)
    : process_({
          .arguments = {"openbox", "--sm-disable", "--config-file", writeConfiguration(folder)},
          .environment = environment,
          .output = folder / "windowmanager.log",
          .inheritedDescriptors = {},
          .prepare = {},
      }) {
    if (!waitUntilItAnswers(connection)) throw SupportError("the window manager does not start: " + process_.output());
}

}  // namespace quillmere::support
