#include "Tests/Support/Fcitx.h"

#include "Tests/Support/DBusCall.h"
#include "Tests/Support/SupportError.h"
#include "Tests/Support/WaitUntil.h"

#include <QDBusArgument>
#include <QDBusMetaType>

#include <fstream>

namespace quillmere::support {

namespace {

const QString busName = QStringLiteral("org.fcitx.Fcitx5");

/// Two texts, as fcitx takes them in lists: a method and its layout.
struct Entry {
    QString method;
    QString layout;
};

QDBusArgument& operator<<(QDBusArgument& argument, const Entry& entry) {
    argument.beginStructure();
    argument << entry.method << entry.layout;
    argument.endStructure();
    return argument;
}

void operator>>(const QDBusArgument& argument, Entry& entry) {
    argument.beginStructure();
    argument >> entry.method >> entry.layout;
    argument.endStructure();
}

std::string profile(const std::vector<std::string>& methods) {
    std::string text = "[Groups/0]\nName=Default\nDefault Layout=us\nDefaultIM=" + methods.back() + "\n";
    for (std::size_t i = 0; i < methods.size(); ++i)
        text += "[Groups/0/Items/" + std::to_string(i) + "]\nName=" + methods[i] + "\nLayout=\n";
    return text + "[GroupOrder]\n0=Default\n";
}

}  // namespace

Fcitx::Fcitx(const std::filesystem::path& folder, const Environment& environment, const QDBusConnection& bus,
             const std::vector<std::string>& methods)
    : folder_(folder / "fcitx"), environment_(environment), bus_(bus) {
    environment_["HOME"] = folder_;
    environment_["XDG_CONFIG_HOME"] = folder_ / "config";
    environment_["XDG_DATA_HOME"] = folder_ / "data";
    environment_["XDG_RUNTIME_DIR"] = folder_ / "runtime";
    for (const char* name : {"config/fcitx5", "data", "runtime"})
        std::filesystem::create_directories(folder_ / name);
    std::filesystem::permissions(folder_ / "runtime", std::filesystem::perms::owner_all);
    std::ofstream(folder_ / "config/fcitx5/profile") << profile(methods);
    start();
}

Fcitx::~Fcitx() = default;

void Fcitx::start() {
    process_.reset();
    process_ = std::make_unique<ChildProcess>(ChildProcess::Options{
        .arguments = {"fcitx5", "--disable=notifications,notificationitem,clipboard,spell,quickphrase,unicode"},
        .environment = environment_,
        .output = folder_ / "log",
        .inheritedDescriptors = {},
        .prepare = {}});
    const bool isUp =
        waitUntil([this] { return !process_->isRunning() || !call("CurrentInputMethodGroup").isEmpty(); });
    if (!isUp || !process_->isRunning()) throw SupportError("fcitx does not start: " + process_->output());
}

void Fcitx::setMethods(const std::vector<std::string>& methods) const {
    qDBusRegisterMetaType<Entry>();
    qDBusRegisterMetaType<QList<Entry>>();
    QList<Entry> entries;
    for (const std::string& method : methods)
        entries.push_back({QString::fromStdString(method), {}});
    call("SetInputMethodGroupInfo", {QStringLiteral("Default"), QStringLiteral("us"), QVariant::fromValue(entries)});
}

std::string Fcitx::current() const {
    return call("CurrentInputMethod").value(0).toString().toStdString();
}

void Fcitx::use(const std::string& method) const {
    call("SetCurrentIM", {QString::fromStdString(method)});
}

QString Fcitx::openField() const {
    qDBusRegisterMetaType<Entry>();
    qDBusRegisterMetaType<QList<Entry>>();
    const QList<Entry> program{{QStringLiteral("program"), QStringLiteral("test")}};
    const QDBusMessage answer = callMethod(bus_, busName, QStringLiteral("/org/freedesktop/portal/inputmethod"),
                                           QStringLiteral("org.fcitx.Fcitx.InputMethod1"),
                                           QStringLiteral("CreateInputContext"), {QVariant::fromValue(program)});
    const QString field = answer.arguments().value(0).value<QDBusObjectPath>().path();
    if (field.isEmpty()) throw SupportError("fcitx takes no text field");
    focus(field);
    return field;
}

void Fcitx::focus(const QString& field) const {
    callMethod(bus_, busName, field, QStringLiteral("org.fcitx.Fcitx.InputContext1"), QStringLiteral("FocusIn"));
}

QVariantList Fcitx::call(const char* method, const QVariantList& arguments) const {
    const QDBusMessage answer =
        callMethod(bus_, busName, QStringLiteral("/controller"), QStringLiteral("org.fcitx.Fcitx.Controller1"),
                   QString::fromLatin1(method), arguments);
    return answer.type() == QDBusMessage::ReplyMessage ? answer.arguments() : QVariantList();
}

}  // namespace quillmere::support
