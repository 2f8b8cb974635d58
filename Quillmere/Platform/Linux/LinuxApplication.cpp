#include "Quillmere/Platform/Application.h"

#include "Quillmere/Platform/Linux/LinuxSession.h"

namespace quillmere {

namespace {

constexpr const char* choice = "QT_QPA_PLATFORM";

/// Whether the desktop is a Wayland one that has an X server too, and the user
/// has not chosen between them.
bool prefersXwayland() {
    const LinuxSession session = LinuxSession::current();
    return !qEnvironmentVariableIsSet(choice) && session.hasWayland && session.hasX11;
}

}  // namespace

std::unique_ptr<QApplication> makeApplication(int& argc, char** argv) {
    if (!prefersXwayland()) return std::make_unique<QApplication>(argc, argv);
    // A client of Wayland cannot say where its window goes, nor keep the focus
    // away from it: where the compositor has no layer shell, the plate could be
    // neither in the middle nor out of the way.
    qputenv(choice, "xcb;wayland");
    auto application = std::make_unique<QApplication>(argc, argv);
    // The choice is this program's own, not that of the browser that it starts.
    qunsetenv(choice);
    return application;
}

}  // namespace quillmere
