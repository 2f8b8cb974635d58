#include "Tests/Support/Desktop.h"

namespace quillmere::support {

Desktop::Desktop(const Options& options) : scheme_(options.scheme) {
    environment_ = baseEnvironment(folder_.makeFolder("home").string());
    environment_["XDG_CONFIG_HOME"] = folder_.makeFolder("config").string();
    environment_["XDG_DATA_HOME"] = folder_.makeFolder("data").string();
    environment_["XDG_STATE_HOME"] = folder_.makeFolder("state").string();
    environment_["XDG_CACHE_HOME"] = folder_.makeFolder("cache").string();
    environment_["XDG_RUNTIME_DIR"] = folder_.makeFolder("runtime").string();
    environment_["XDG_SESSION_TYPE"] = "x11";
    bus_ = std::make_unique<SessionBus>(folder(), environment_);
    environment_["DBUS_SESSION_BUS_ADDRESS"] = bus_->address();
    server_ = std::make_unique<XServer>(folder(), environment_, options.screen);
    environment_["DISPLAY"] = server_->display();
    server_->setLayouts(options.layouts, options.variants);
    server_->setMonitors(options.monitors);
    windowManager_ = std::make_unique<WindowManager>(folder(), environment_, connection());
    if (options.hasCompositor) {
        compositor_ =
            std::make_unique<Compositor>(folder(), environment_, connection(), options.compositorDrawsShadows);
    }
    if (options.hasTray) startTray();
    startPortal();
    typist_ = std::make_unique<Typist>(display());
    screen_ = std::make_unique<Screen>(display());
}

TrayPanel& Desktop::startTray() {
    if (!tray_) tray_ = std::make_unique<TrayPanel>(bus_->connect());
    return *tray_;
}

void Desktop::startPortal() {
    if (scheme_) portal_ = std::make_unique<SettingsPortal>(bus_->connect(), *scheme_);
}

void Desktop::restartBus() {
    const bool hadTray = tray_ != nullptr;
    stopTray();
    portal_.reset();
    bus_.reset();
    bus_ = std::make_unique<SessionBus>(folder(), environment_);
    if (hadTray) startTray();
    startPortal();
}

}  // namespace quillmere::support
