#include "Tests/Support/Kwin.h"

#include "Tests/Support/DBusCall.h"
#include "Tests/Support/SupportError.h"
#include "Tests/Support/WaitUntil.h"

#include <QDBusConnectionInterface>

#include <algorithm>
#include <fstream>
#include <iterator>

namespace quillmere::support {

namespace {

const QString keyboardName = QStringLiteral("org.kde.keyboard");
constexpr const char* program = "/usr/bin/kwin_wayland";

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
    if (options_.hasXwayland) arguments.emplace_back("--xwayland");
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

void Kwin::setLayouts(const std::string& layouts, const std::string& variants) {
    writeLayouts(layouts, variants);
    bus_.send(QDBusMessage::createSignal(QStringLiteral("/Layouts"), keyboardName, QStringLiteral("reloadConfig")));
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

/// KWin picks the display itself and tells only its children: Xwayland's
/// command line has it.
void Kwin::waitForXwayland() {
    const auto commandLine = [](const std::filesystem::path& process) {
        std::ifstream stream(process / "cmdline");
        std::string text{std::istreambuf_iterator<char>(stream), {}};
        std::ranges::replace(text, '\0', ' ');
        return text;
    };
    const std::filesystem::path children =
        "/proc/" + std::to_string(process_->pid()) + "/task/" + std::to_string(process_->pid()) + "/children";
    const bool isFound = waitUntil([&] {
        std::ifstream stream(children);
        for (std::string child; stream >> child;) {
            const std::string text = commandLine("/proc/" + child);
            const std::size_t colon = text.find(" :");
            if (text.find("Xwayland") == std::string::npos || colon == std::string::npos) continue;
            xDisplay_ = text.substr(colon + 1, text.find(' ', colon + 1) - colon - 1);
            return true;
        }
        return false;
    });
    if (!isFound) throw SupportError("no Xwayland: " + process_->output());
}

}  // namespace quillmere::support
