#include "Tests/Support/Kwin.h"

#include "Tests/Support/DBusCall.h"
#include "Tests/Support/SupportError.h"
#include "Tests/Support/WaitUntil.h"

#include <QDBusConnectionInterface>
#include <QDBusMetaType>

#include <fstream>

namespace quillmere::support {

namespace {

const QString keyboardName = QStringLiteral("org.kde.keyboard");
constexpr const char* program = "/usr/bin/kwin_wayland";
constexpr const char* toldDisplay = "display";

QDBusMessage callLayouts(const QDBusConnection& bus, const char* method, const QVariantList& arguments = {}) {
    return callMethod(bus, keyboardName, QStringLiteral("/Layouts"), QStringLiteral("org.kde.KeyboardLayouts"),
                      QString::fromLatin1(method), arguments);
}

/// A copy without the capability that the installed one has, which a container
/// refuses. It must keep its name: by that it knows itself.
std::filesystem::path copyOf(const std::filesystem::path& original, const std::filesystem::path& folder) {
    const std::filesystem::path copy = folder / original.filename();
    std::filesystem::copy_file(original, copy, std::filesystem::copy_options::overwrite_existing);
    return copy;
}

}  // namespace

Kwin::Kwin(const std::filesystem::path& folder, const Environment& environment, const std::string& busAddress,
           const QDBusConnection& bus, const Options& options)
    : folder_(folder / "kwin"), environment_(environment), bus_(bus), options_(options) {
    for (const char* name : {"config", "runtime"}) {
        std::filesystem::create_directories(folder_ / name);
        std::filesystem::permissions(folder_ / name, std::filesystem::perms::owner_all);
    }
    environment_["HOME"] = folder_;
    environment_["XDG_CONFIG_HOME"] = configHome();
    environment_["XDG_RUNTIME_DIR"] = folder_ / "runtime";
    environment_["DBUS_SESSION_BUS_ADDRESS"] = busAddress;
    environment_["DBUS_SYSTEM_BUS_ADDRESS"] = "disabled:";
    environment_["KWIN_COMPOSE"] = "Q";
    // Else the protocol by which tests play the keyboard is only for programs
    // that a desktop entry vouches for.
    environment_["KWIN_WAYLAND_NO_PERMISSION_CHECKS"] = "1";
    writeLayouts(options_.layouts, options_.variants);
    start();
}

Kwin::~Kwin() = default;

void Kwin::start() {
    process_.reset();
    std::filesystem::remove(waylandDisplay());
    std::vector<std::string> arguments{
        copyOf(program, folder_), "--no-lockscreen", "--width", "1280", "--height", "800"};
    if (options_.display.empty())
        arguments.emplace_back("--virtual");
    else
        arguments.insert(arguments.end(), {"--x11-display", options_.display});
    if (options_.hasXwayland) arguments.insert(arguments.end(), {"--xwayland", displayTeller()});
    process_ = std::make_unique<ChildProcess>(ChildProcess::Options{.arguments = arguments,
                                                                    .environment = environment_,
                                                                    .output = folder_ / "log",
                                                                    .inheritedDescriptors = {},
                                                                    .prepare = {}});
    // It has the layouts' name last, and only with several of them.
    const QString name = options_.layouts.contains(',') ? keyboardName : QStringLiteral("org.kde.KWin");
    const bool isUp = waitUntil([&] {
        return !process_->isRunning()
               || (bus_.interface()->isServiceRegistered(name) && std::filesystem::exists(waylandDisplay()));
    });
    if (!isUp || !process_->isRunning()) throw SupportError("KWin does not start: " + process_->output());
    if (options_.hasXwayland) waitForXwayland();
}

/// KWin picks the X display itself, begins with an Xwayland only when somebody
/// asks (from 6 on), and tells the programs that it starts: so it starts one.
std::string Kwin::displayTeller() const {
    std::filesystem::remove(folder_ / toldDisplay);
    const std::filesystem::path script = folder_ / "tell-display";
    const std::string file = folder_ / toldDisplay;
    std::ofstream(script) << "echo $DISPLAY >" << file << ".new && mv " << file << ".new " << file << '\n';
    return "sh " + script.string();
}

void Kwin::setLayouts(const std::string& layouts, const std::string& variants) {
    writeLayouts(layouts, variants);
    bus_.send(QDBusMessage::createSignal(QStringLiteral("/Layouts"), keyboardName, QStringLiteral("reloadConfig")));
    // A newer one hears of it as of every change of a file with settings.
    QDBusMessage changed = QDBusMessage::createSignal(
        QStringLiteral("/kxkbrc"), QStringLiteral("org.kde.kconfig.notify"), QStringLiteral("ConfigChanged"));
    qDBusRegisterMetaType<QByteArrayList>();
    qDBusRegisterMetaType<QMap<QString, QByteArrayList>>();
    changed << QVariant::fromValue(QMap<QString, QByteArrayList>{
        {QStringLiteral("Layout"), {"Use", "LayoutList", "VariantList", "ResetOldOptions", "SwitchMode"}}});
    bus_.send(changed);
}

void Kwin::writeLayouts(const std::string& layouts, const std::string& variants) const {
    std::ofstream(configHome() / "kxkbrc")
        << "[Layout]\nUse=true\nLayoutList=" << layouts << "\nVariantList=" << variants
        << "\nResetOldOptions=true\nSwitchMode=Global\n";
}

int Kwin::layoutInUse() const {
    const QVariantList answer = callLayouts(bus_, "getLayout").arguments();
    bool isNumber = false;
    const int index = answer.value(0).toInt(&isNumber);
    return isNumber ? index : -1;
}

void Kwin::useLayout(unsigned int index) const {
    callLayouts(bus_, "setLayout", {index});
}

std::string Kwin::waylandDisplay() const {
    return folder_ / "runtime" / "wayland-0";
}

void Kwin::waitForXwayland() {
    std::string display;
    const bool isTold = waitUntil([&] {
        std::ifstream file(folder_ / toldDisplay);
        return static_cast<bool>(std::getline(file, display));
    });
    if (!isTold) throw SupportError("no Xwayland: " + process_->output());
    xDisplay_ = display;
}

}  // namespace quillmere::support
