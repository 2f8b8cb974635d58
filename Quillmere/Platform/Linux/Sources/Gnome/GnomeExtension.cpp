#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeExtension.h"

#include "Quillmere/Platform/Linux/Sources/SwitchWait.h"

#include <QDBusMessage>
#include <QDBusVariant>

namespace quillmere {

const QString GnomeExtension::name = QStringLiteral("org.quillmere.GnomeExtension");
const QString GnomeExtension::path = QStringLiteral("/org/quillmere/GnomeExtension");
const QString GnomeExtension::interface = QStringLiteral("org.quillmere.GnomeExtension1");

namespace {

BusService::Address address() {
    return {.name = GnomeExtension::name,
            .path = GnomeExtension::path,
            .interface = GnomeExtension::interface,
            .harmlessMethod = QStringLiteral("Current")};
}

QDBusMessage versionQuestion() {
    QDBusMessage question =
        QDBusMessage::createMethodCall(GnomeExtension::name, GnomeExtension::path,
                                       QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    question << GnomeExtension::interface << QStringLiteral("Version");
    question.setAutoStartService(false);
    return question;
}

unsigned int versionIn(const QDBusMessage& answer) {
    return answer.arguments().value(0).value<QDBusVariant>().variant().toUInt();
}

}  // namespace

GnomeExtension::GnomeExtension(const QDBusConnection& bus)
    : bus_(bus), service_(bus, address(), SwitchWait().deadline()) {
    connect(&service_, &BusService::ownedChanged, this, &GnomeExtension::askForVersion);
    if (!service_.isOwned()) return;
    // At the start the answer is needed at once, and the list after it.
    const SwitchWait wait;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(wait.deadline() - BusService::Clock::now());
    if (left.count() > 0)
        version_ = versionIn(bus_.call(versionQuestion(), QDBus::Block, static_cast<int>(left.count())));
    if (version_ == 0) askForVersion();
}

std::optional<std::vector<QVariantList>> GnomeExtension::call(std::span<const BusService::Call> calls,
                                                              BusService::Clock::time_point deadline) {
    if (!isLive()) return std::nullopt;
    return service_.call(calls, deadline);
}

void GnomeExtension::askForVersion() {
    version_ = 0;
    if (!service_.isOwned()) {
        emit liveChanged();
        return;
    }
    bus_.callWithCallback(versionQuestion(), this, SLOT(noteVersion(QDBusMessage)), SLOT(noteNoVersion()));
}

void GnomeExtension::noteVersion(const QDBusMessage& answer) {
    version_ = versionIn(answer);
    emit liveChanged();
}

void GnomeExtension::noteNoVersion() {
    emit liveChanged();
}

}  // namespace quillmere
