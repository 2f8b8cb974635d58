#include "Quillmere/Platform/Linux/Doctor/SessionFindings.h"

#include "Quillmere/Platform/Linux/Sources/Hyprland/HyprlandRequests.h"
#include "Quillmere/Platform/Linux/Sources/Sway/SwayConnection.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDBusVariant>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QStringList>

#include <chrono>
#include <span>
#include <string>

namespace quillmere {

namespace {

constexpr std::chrono::milliseconds patience{1000};

/// The answer of one who is on the bus already: nobody is started.
QVariant answer(const QDBusConnection& bus, QDBusMessage question) {
    question.setAutoStartService(false);
    const QDBusMessage reply = bus.call(question, QDBus::Block, static_cast<int>(patience.count()));
    return reply.type() == QDBusMessage::ReplyMessage ? reply.arguments().value(0) : QVariant();
}

QString gnomeVersion(const QDBusConnection& bus) {
    QDBusMessage question =
        QDBusMessage::createMethodCall(QStringLiteral("org.gnome.Shell"), QStringLiteral("/org/gnome/Shell"),
                                       QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    question << QStringLiteral("org.gnome.Shell") << QStringLiteral("ShellVersion");
    const QString version = answer(bus, question).value<QDBusVariant>().variant().toString();
    return version.isEmpty() ? QString() : QStringLiteral("GNOME Shell ") + version;
}

QString kwinVersion(const QDBusConnection& bus) {
    const QDBusMessage question =
        QDBusMessage::createMethodCall(QStringLiteral("org.kde.KWin"), QStringLiteral("/KWin"),
                                       QStringLiteral("org.kde.KWin"), QStringLiteral("supportInformation"));
    // In the middle of a page of text for bug reports.
    static const QRegularExpression line(QStringLiteral("^KWin version: (\\S+)"), QRegularExpression::MultilineOption);
    const auto match = line.match(answer(bus, question).toString());
    return match.hasMatch() ? QStringLiteral("KWin ") + match.captured(1) : QString();
}

QString swayVersion(const std::string& socket) {
    const auto connection = socket.empty() ? nullptr : SwayConnection::open(socket);
    if (!connection) return {};
    const SwayConnection::Message question{SwayConnection::Request::getVersion, {}};
    const auto answers = connection->exchange(std::span(&question, 1), SwayConnection::Clock::now() + patience);
    if (!answers) return {};
    const QString version =
        QJsonDocument::fromJson(answers->front()).object().value(QLatin1String("human_readable")).toString();
    return version.isEmpty() ? QString() : QStringLiteral("sway ") + version;
}

QString hyprlandVersion(const std::string& folder) {
    if (folder.empty()) return {};
    const auto answer = HyprlandRequests(folder).ask("j/version", HyprlandRequests::Clock::now() + patience);
    if (!answer) return {};
    const QJsonObject object = QJsonDocument::fromJson(*answer).object();
    // Older versions tell only how the sources were marked.
    const QString version = object.value(QLatin1String("version")).toString();
    const QString tag = object.value(QLatin1String("tag")).toString();
    if (version.isEmpty() && tag.isEmpty()) return {};
    return QStringLiteral("Hyprland ") + (version.isEmpty() ? tag : version);
}

std::string displaysOf(const LinuxSession& session) {
    if (session.isX11()) return "X11";
    if (!session.hasWayland) return "neither X11 nor Wayland";
    return session.hasX11 ? "Wayland, with Xwayland" : "Wayland, without Xwayland";
}

}  // namespace

bool isOnBus(const QDBusConnection& bus, const QString& name) {
    return bus.isConnected() && bus.interface()->isServiceRegistered(name).value();
}

Finding programFinding(const QDBusConnection& bus) {
    if (!bus.isConnected()) {
        return {"Program", "there is no session bus to ask whether it runs",
                "Install dbus-user-session or dbus-x11, and log in again."};
    }
    if (isOnBus(bus, QStringLiteral("org.quillmere.Quillmere"))) return {"Program", "runs", {}};
    return {"Program", "does not run", "Start Quillmere."};
}

Finding desktopFinding(const LinuxSession& session, const QDBusConnection& bus) {
    std::string names;
    for (const std::string& name : session.desktops)
        names += (names.empty() ? "" : ":") + name;
    Finding row{.subject = "Desktop", .state = names.empty() ? "without a name" : names, .advice = {}};
    // These have a layer for what is above all windows.
    QStringList layered{kwinVersion(bus), swayVersion(session.swaySocket), hyprlandVersion(session.hyprlandFolder)};
    layered.removeAll(QString());
    for (const QString& version : QStringList(gnomeVersion(bus)) + layered)
        if (!version.isEmpty()) row.state += ", " + version.toStdString();
    row.state += ", on " + displaysOf(session);
    if (!session.hasX11 && !session.hasWayland)
        row.advice = "Start this from a terminal of the desktop.";
    else if (!session.hasX11 && layered.isEmpty())
        row.advice = "Install xwayland and log in again: without it the plate is not shown.";
    return row;
}

}  // namespace quillmere
