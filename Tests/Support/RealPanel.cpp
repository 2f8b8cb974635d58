#include "Tests/Support/RealPanel.h"

#include "Tests/Support/SupportError.h"
#include "Tests/Support/WaitUntil.h"

#include <QDBusConnectionInterface>
#include <QStandardPaths>

#include <filesystem>
#include <fstream>
#include <utility>

namespace quillmere::support {

namespace {

constexpr const char* xfcePanel = "xfce4-panel";
constexpr const char* trayer = "trayer";

/// What the bus would start for this name, which the tests' own bus does not.
std::string serviceProgram(const std::filesystem::path& serviceFile) {
    std::ifstream file(serviceFile);
    const std::string key = "Exec=";
    for (std::string line; std::getline(file, line);)
        if (line.starts_with(key)) return line.substr(key.size());
    throw SupportError("not installed: " + serviceFile.string());
}

/// One panel along the upper edge, as high as usual.
std::string xfceConfiguration(bool isDark) {
    return std::string(R"(<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="dark-mode" type="bool" value=")")
           + (isDark ? "true" : "false") + R"("/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=6;x=0;y=0"/>
      <property name="length" type="uint" value="100"/>
      <property name="size" type="uint" value="32"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="plugin-ids" type="array"><value type="int" value="1"/></property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="systray"/>
  </property>
</channel>
)";
}

}  // namespace

bool RealPanel::isInstalled(Kind kind) {
    return !QStandardPaths::findExecutable(QLatin1String(kind == Kind::xfce ? xfcePanel : trayer)).isEmpty();
}

RealPanel::RealPanel(Kind kind, bool isDark, Desktop& desktop) : desktop_(desktop) {
    if (kind == Kind::xfce)
        startXfce(isDark);
    else
        startTrayer(isDark);
    if (!waitUntil([this] { return desktop_.connection().visibleWindow(title_).has_value(); }))
        throw SupportError("the panel does not start: " + panel_->output());
}

void RealPanel::startXfce(bool isDark) {
    title_ = xfcePanel;
    const auto folder = desktop_.configHome() / "xfce4" / "xfconf" / "xfce-perchannel-xml";
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "xfce4-panel.xml") << xfceConfiguration(isDark);
    const QDBusConnection bus = desktop_.bus().connect();
    const auto isOnBus = [&](const char* name) {
        return waitUntil([&] { return bus.interface()->isServiceRegistered(QLatin1String(name)).value(); });
    };
    settings_ = start({serviceProgram("/usr/share/dbus-1/services/org.xfce.Xfconf.service")});
    if (!isOnBus("org.xfce.Xfconf")) throw SupportError("no settings for the panel: " + settings_->output());
    panel_ = start({xfcePanel, "--disable-wm-check"});
    if (!isOnBus("org.kde.StatusNotifierWatcher")) throw SupportError("no tray on the panel: " + panel_->output());
}

void RealPanel::startTrayer(bool isDark) {
    title_ = "panel";
    panel_ =
        start({trayer, "--edge", "top", "--widthtype", "percent", "--width", "100", "--heighttype", "pixel", "--height",
               "32", "--transparent", "true", "--alpha", "0", "--tint", isDark ? "0x202020" : "0xf0f0f0"});
    const auto hasTray = [this] { return desktop_.connection().isSelectionOwned("_NET_SYSTEM_TRAY_S0"); };
    if (!waitUntil(hasTray)) throw SupportError("no tray: " + panel_->output());
}

std::unique_ptr<ChildProcess> RealPanel::start(std::vector<std::string> arguments) {
    const auto output = desktop_.folder() / (std::filesystem::path(arguments.front()).filename().string() + ".log");
    return std::make_unique<ChildProcess>(ChildProcess::Options{
        .arguments = std::move(arguments),
        .environment = desktop_.environment(),
        .output = output,
        .inheritedDescriptors = {},
        .prepare = {},
    });
}

QRect RealPanel::frame() const {
    const auto window = desktop_.connection().visibleWindow(title_);
    if (!window) throw SupportError("the panel is gone: " + panel_->output());
    return window->frame;
}

}  // namespace quillmere::support
