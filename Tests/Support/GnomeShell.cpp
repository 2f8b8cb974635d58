#include "Tests/Support/GnomeShell.h"

#include "Tests/Support/DBusCall.h"
#include "Tests/Support/OrdinaryUser.h"
#include "Tests/Support/SupportError.h"
#include "Tests/Support/WaitUntil.h"

#include <QDBusConnectionInterface>
#include <QJsonArray>
#include <QJsonDocument>

#include <fstream>
#include <functional>
#include <iterator>
#include <optional>
#include <regex>

namespace quillmere::support {

namespace {

const QString shellName = QStringLiteral("org.gnome.Shell");
const QString shellPath = QStringLiteral("/org/gnome/Shell");
const QString settingsName = QStringLiteral("ca.desrt.dconf");
constexpr const char* settingsProgram = "/usr/libexec/dconf-service";
// A whole desktop begins here, perhaps beside others.
constexpr auto startPatience = 3 * patience;
constexpr const char* socketName = "wayland-0";
constexpr const char* sourceManager = "Main.panel.statusArea.keyboard._inputSourceManager";

/// The person's sources in the form of the desktop's setting.
std::string settingText(const std::vector<std::string>& sources) {
    std::string text;
    for (const std::string& source : sources) {
        const std::size_t colon = source.find(':');
        if (!text.empty()) text += ", ";
        text += "('" + source.substr(0, colon) + "', '" + source.substr(colon + 1) + "')";
    }
    return "[" + text + "]";
}

/// What the expression's group matches first.
std::string found(const std::string& text, const char* expression) {
    std::smatch match;
    if (!std::regex_search(text, match, std::regex(expression)))
        throw SupportError(std::string("no ") + expression + " in: " + text);
    return match[1];
}

/// The folder among those of `forms` that says that it is for this version;
/// empty: none does.
std::filesystem::path fittingForm(const std::filesystem::path& forms, int version) {
    for (const auto& form : std::filesystem::directory_iterator(forms)) {
        std::ifstream stream(form.path() / "metadata.json");
        const std::string text{std::istreambuf_iterator<char>(stream), {}};
        const QJsonDocument metadata = QJsonDocument::fromJson(QByteArray::fromStdString(text));
        if (metadata["shell-version"].toArray().contains(QString::number(version))) return form.path();
    }
    return {};
}

}  // namespace

GnomeShell::GnomeShell(const std::filesystem::path& folder, const Environment& environment, const SessionBus& bus,
                       const Options& options)
    : folder_(folder / "gnome"), environment_(environment), bus_(bus.connect()), options_(options) {
    giveToOrdinaryUser(folder);
    prepareHome();
    systemBus_ = std::make_unique<SessionBus>(folder_ / "system", environment);
    environment_["HOME"] = folder_;
    environment_["XDG_CONFIG_HOME"] = folder_ / "config";
    environment_["XDG_DATA_HOME"] = folder_ / "data";
    environment_["XDG_CACHE_HOME"] = folder_ / "cache";
    environment_["XDG_RUNTIME_DIR"] = folder_ / "runtime";
    environment_["XDG_CURRENT_DESKTOP"] = "GNOME";
    environment_["XDG_SESSION_TYPE"] = options_.xServer.empty() ? "wayland" : "x11";
    environment_["DBUS_SESSION_BUS_ADDRESS"] = bus.address();
    environment_["DBUS_SYSTEM_BUS_ADDRESS"] = systemBus_->address();
    environment_["GSETTINGS_BACKEND"] = "dconf";
    leaveOutIbus();
    version_ = std::stoi(found(outputOf({"gnome-shell", "--version"}), "GNOME Shell ([0-9]+)"));
    startSettings();
    if (!options_.extension.empty()) form_ = fittingForm(options_.extension, version_);
    if (hasExtension()) installExtension();
    start();
}

GnomeShell::~GnomeShell() = default;

void GnomeShell::prepareHome() const {
    for (const char* name : {"", "cache", "config", "data", "runtime", "system"}) {
        std::filesystem::create_directories(folder_ / name);
        std::filesystem::permissions(folder_ / name, std::filesystem::perms::owner_all);
        giveToOrdinaryUser(folder_ / name);
    }
}

/// The Shell starts IBus where it finds it, which not every desktop has; the
/// tests are of one that has none.
void GnomeShell::leaveOutIbus() {
    const std::filesystem::path programs = folder_ / "programs";
    std::filesystem::create_directories(programs);
    std::filesystem::create_symlink("/bin/false", programs / "ibus-daemon");
    environment_["PATH"] = programs.string() + ":" + environment_["PATH"];
}

bool GnomeShell::fits(const std::filesystem::path& forms) const {
    return !fittingForm(forms, version_).empty();
}

std::filesystem::path GnomeShell::extensionsFolder() const {
    return folder_ / "data" / "gnome-shell" / "extensions";
}

void GnomeShell::installExtension() const {
    const std::filesystem::path place = extensionsFolder() / extensionName;
    std::filesystem::create_directories(place);
    std::filesystem::copy(form_, place);
    for (auto parent = place; parent != folder_ / "data"; parent = parent.parent_path())
        giveToOrdinaryUser(parent);
    setSetting("org.gnome.shell", "enabled-extensions", std::string("['") + extensionName + "']");
}

ChildProcess::Options GnomeShell::asUser(const std::vector<std::string>& arguments, const std::string& output) const {
    return {.arguments = arguments,
            .environment = environment_,
            .output = folder_ / output,
            .inheritedDescriptors = {},
            .prepare = becomeOrdinaryUser};
}

/// The bus starts nothing by itself, not even what keeps a desktop's settings.
void GnomeShell::startSettings() {
    settingsService_ = std::make_unique<ChildProcess>(asUser({settingsProgram}, "settings.log"));
    const bool isUp = waitUntil(
        [this] { return !settingsService_->isRunning() || bus_.interface()->isServiceRegistered(settingsName); });
    if (!isUp || !settingsService_->isRunning()) throw SupportError("no settings: " + settingsService_->output());
    setSources(options_.sources);
    setSetting("org.gnome.shell", "welcome-dialog-last-shown-version", "'99'");
    setSetting("org.gnome.desktop.interface", "enable-animations", "false");
}

std::string GnomeShell::outputOf(const std::vector<std::string>& arguments) const {
    // Every program adds to it.
    std::filesystem::remove(folder_ / "output");
    ChildProcess process(asUser(arguments, "output"));
    const std::optional<int> status = process.waitForExit(patience);
    if (status != 0) throw SupportError(arguments.front() + ": " + process.output());
    std::string text = process.output();
    while (text.ends_with('\n'))
        text.pop_back();
    return text;
}

void GnomeShell::setSetting(const std::string& schema, const std::string& key, const std::string& value) const {
    outputOf({"gsettings", "set", schema, key, value});
}

std::string GnomeShell::setting(const std::string& schema, const std::string& key) const {
    return outputOf({"gsettings", "get", schema, key});
}

void GnomeShell::setSources(const std::vector<std::string>& sources) const {
    setSetting("org.gnome.desktop.input-sources", "sources", settingText(sources));
}

void GnomeShell::start() {
    process_.reset();
    if (!options_.xServer.empty()) return startOnX();
    // Without a session of systemd's; with the door open by which `evaluate` comes in.
    std::vector<std::string> arguments{"gnome-shell",       "--headless", "--wayland",         "--unsafe-mode",
                                       "--virtual-monitor", "1280x800",   "--wayland-display", socketName};
    if (!options_.hasXwayland) arguments.emplace_back("--no-x11");
    process_ = std::make_unique<ChildProcess>(asUser(arguments, "log"));
    waitUntilUp();
    environment_["WAYLAND_DISPLAY"] = waylandDisplay();
    if (options_.hasXwayland) takeXDisplay();
}

void GnomeShell::startOnX() {
    xDisplay_ = options_.xServer;
    environment_["DISPLAY"] = xDisplay_;
    process_ = std::make_unique<ChildProcess>(asUser({"gnome-shell", "--x11", "--unsafe-mode"}, "log"));
    waitUntilUp();
}

void GnomeShell::waitUntilUp() const {
    const auto comes = [this](const std::function<bool()>& condition) {
        return waitUntil([&] { return !process_->isRunning() || condition(); }, startPatience) && process_->isRunning();
    };
    const auto isTrue = [this](const std::string& script) { return evaluate(script) == "true"; };
    const bool isUp = comes([this] { return bus_.interface()->isServiceRegistered(shellName); })
                      && comes([&] { return isTrue("!Main.layoutManager._startingUp"); });
    if (!isUp) throw SupportError("GNOME Shell does not start: " + process_->output());
    // Where a person sees the windows, and types into them.
    evaluate("Main.overview.hide()");
    if (!comes([&] { return isTrue("!Main.overview.visible"); })) throw SupportError("the overview stays");
    // Its search has kept the keys.
    evaluate("global.stage.set_key_focus(null)");
    if (!hasExtension()) return;
    const std::string state = std::string("Main.extensionManager.lookup('") + extensionName + "')?.state === 1";
    if (!comes([&] { return isTrue(state); })) throw SupportError("no extension: " + process_->output());
}

/// Xwayland starts when somebody comes to its display, which the log names, with
/// the word that is in a file.
void GnomeShell::takeXDisplay() {
    xDisplay_ = found(process_->output(), "public X11 display (:[0-9]+)");
    environment_["DISPLAY"] = xDisplay_;
    for (const auto& file : std::filesystem::directory_iterator(folder_ / "runtime"))
        if (file.path().filename().string().starts_with(".mutter-Xwaylandauth"))
            environment_["XAUTHORITY"] = file.path();
    xAuthority_.reset();
    xAuthority_.emplace("XAUTHORITY", environment_["XAUTHORITY"]);
    openXwaylandToTests(xDisplay_);
}

std::string GnomeShell::waylandDisplay() const {
    return folder_ / "runtime" / socketName;
}

std::string GnomeShell::evaluate(const std::string& script) const {
    const QDBusMessage reply =
        callMethod(bus_, shellName, shellPath, shellName, QStringLiteral("Eval"), {QString::fromStdString(script)});
    const QString value = reply.arguments().value(1).toString();
    if (!reply.arguments().value(0).toBool())
        throw SupportError(script + ": " + (value + reply.errorMessage()).toStdString());
    return value.toStdString();
}

int GnomeShell::sourceInUse() const {
    return std::stoi(evaluate(std::string(sourceManager) + ".currentSource?.index ?? -1"));
}

void GnomeShell::useSource(int index) const {
    evaluate(std::string(sourceManager) + ".inputSources[" + std::to_string(index) + "].activate(true)");
}

QImage GnomeShell::screenshot() const {
    const QString file = QString::fromStdString(folder_ / "picture.png");
    const QString interface = QStringLiteral("org.gnome.Shell.Screenshot");
    const QDBusMessage reply = callMethod(bus_, interface, QStringLiteral("/org/gnome/Shell/Screenshot"), interface,
                                          QStringLiteral("Screenshot"), {false, false, file});
    if (!reply.arguments().value(0).toBool())
        throw SupportError("no picture of the screen: " + reply.errorMessage().toStdString());
    return QImage(file);
}

}  // namespace quillmere::support
