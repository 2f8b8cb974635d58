#include "Tests/Support/Ibus.h"

#include "Tests/Support/DBusCall.h"
#include "Tests/Support/SupportError.h"
#include "Tests/Support/WaitUntil.h"

#include <QDBusConnectionInterface>
#include <QDBusVariant>
#include <QStringList>

namespace quillmere::support {

namespace {

const QString settingsName = QStringLiteral("org.freedesktop.IBus.Config");
const QString keeperName = QStringLiteral("ca.desrt.dconf");
constexpr const char* keeperProgram = "/usr/libexec/dconf-service";

}  // namespace

Ibus::Ibus(const std::filesystem::path& folder, const Environment& environment, const QDBusConnection& bus,
           const std::vector<std::string>& engines, Panel panel)
    : folder_(folder / "ibus"), environment_(environment), panel_(panel) {
    environment_["HOME"] = folder_;
    // Where the desktop has one, its programs look for the daemon there.
    environment_.try_emplace("XDG_CONFIG_HOME", folder_ / "config");
    environment_["XDG_CACHE_HOME"] = folder_ / "cache";
    environment_["XDG_DATA_HOME"] = folder_ / "data";
    environment_["XDG_RUNTIME_DIR"] = folder_ / "runtime";
    for (const char* name : {"config", "cache", "data", "runtime"})
        std::filesystem::create_directories(folder_ / name);
    std::filesystem::permissions(folder_ / "runtime", std::filesystem::perms::owner_all);
    startSettings(bus);
    beginWithHangul();
    start();
    // Else its command sets the X server's layouts as well.
    setLeavesLayouts(true);
    setEngines(engines);
}

Ibus::~Ibus() = default;

ChildProcess::Options Ibus::program(const std::vector<std::string>& arguments, const char* output) const {
    return {.arguments = arguments,
            .environment = environment_,
            .output = folder_ / output,
            .inheritedDescriptors = {},
            .prepare = {}};
}

/// The bus starts nothing by itself, not even what keeps a desktop's settings.
void Ibus::startSettings(const QDBusConnection& bus) {
    settings_ = std::make_unique<ChildProcess>(program({keeperProgram}, "settings.log"));
    const bool isUp =
        waitUntil([&] { return !settings_->isRunning() || bus.interface()->isServiceRegistered(keeperName); });
    if (!isUp || !settings_->isRunning()) throw SupportError("no settings: " + settings_->output());
}

/// By itself its Hangul types Latin letters until a key is pressed that few
/// keyboards have.
void Ibus::beginWithHangul() const {
    ChildProcess::run(
        program({"gsettings", "set", "org.freedesktop.ibus.engine.hangul", "initial-input-mode", "hangul"}, "hangul"));
}

void Ibus::start() {
    process_.reset();
    std::vector<std::string> arguments{"ibus-daemon", "--emoji-extension=disable"};
    if (panel_ == Panel::none) arguments.emplace_back("--panel=disable");
    process_ = std::make_unique<ChildProcess>(program(arguments, "log"));
    connect();
    // It answers nothing at all to who asks for what is not there yet.
    const bool isUp =
        waitUntil([this] { return !process_->isRunning() || bus_->interface()->isServiceRegistered(settingsName); });
    if (!isUp || !process_->isRunning()) throw SupportError("IBus does not start: " + process_->output());
}

/// Its own command knows where its bus is.
void Ibus::connect() {
    std::string address;
    const bool isTold = waitUntil([&] {
        std::filesystem::remove(folder_ / "address");
        ChildProcess command(program({"ibus", "address"}, "address"));
        command.waitForExit(patience);
        address = command.output();
        address.erase(address.find_last_not_of('\n') + 1);
        return address.starts_with("unix:");
    });
    if (!isTold) throw SupportError("IBus has no address: " + address);
    static int count = 0;
    bus_ = QDBusConnection::connectToBus(QString::fromStdString(address), QStringLiteral("test-ibus-%1").arg(++count));
    if (!bus_->isConnected()) throw SupportError("no connection to IBus: " + bus_->lastError().message().toStdString());
}

void Ibus::setEngines(const std::vector<std::string>& engines) {
    QStringList names;
    for (const std::string& engine : engines)
        names << QString::fromStdString(engine);
    set("preload-engines", names);
}

void Ibus::set(const char* name, const QVariant& value) {
    const QDBusMessage answer = callMethod(
        *bus_, settingsName, QStringLiteral("/org/freedesktop/IBus/Config"), settingsName, QStringLiteral("SetValue"),
        {QStringLiteral("general"), QString::fromLatin1(name), QVariant::fromValue(QDBusVariant(value))});
    if (answer.type() != QDBusMessage::ReplyMessage)
        throw SupportError("IBus does not take the setting: " + answer.errorMessage().toStdString());
}

std::string Ibus::current() {
    std::filesystem::remove(folder_ / "current");
    ChildProcess command(program({"ibus", "engine"}, "current"));
    if (command.waitForExit(patience) != 0) return {};
    const std::string text = command.output();
    return text.substr(0, text.find('\n'));
}

void Ibus::use(const std::string& engine) {
    ChildProcess command(program({"ibus", "engine", engine}, "use"));
    if (command.waitForExit(patience) != 0) throw SupportError("not taken: " + engine + ": " + command.output());
}

}  // namespace quillmere::support
