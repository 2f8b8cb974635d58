#include "Quillmere/Platform/Linux/Desktop/BusSingleInstance.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QFile>

#include <utility>

namespace quillmere {

namespace {

const QString serviceName = QStringLiteral("org.quillmere.Quillmere");
const QString objectPath = QStringLiteral("/org/quillmere/Quillmere");
const QString interfaceName = QStringLiteral("org.freedesktop.Application");
const QString tokenKey = QStringLiteral("activation-token");
constexpr const char* tokenVariable = "XDG_ACTIVATION_TOKEN";
constexpr int activationDeadline = 3000;  // milliseconds

/// Where no bus is running, connecting would start one, just for us.
bool hasSessionBus() {
    if (!qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS")) return true;
    return QFile::exists(qEnvironmentVariable("XDG_RUNTIME_DIR") + QLatin1String("/bus"));
}

QDBusConnection sessionBus() {
    return hasSessionBus() ? QDBusConnection::sessionBus() : QDBusConnection(QString());
}

}  // namespace

BusSingleInstance::BusSingleInstance() : BusSingleInstance(sessionBus()) {}

BusSingleInstance::BusSingleInstance(QDBusConnection bus) : bus_(std::move(bus)) {}

BusSingleInstance::~BusSingleInstance() {
    if (!bus_.isConnected()) return;
    bus_.unregisterObject(objectPath);
    bus_.unregisterService(serviceName);
}

bool BusSingleInstance::claim() {
    if (!bus_.isConnected()) return true;
    // before the name: whoever sees the name may call at once
    if (!bus_.registerObject(objectPath, this, QDBusConnection::ExportAllSlots)) return true;
    const QDBusReply<QDBusConnectionInterface::RegisterServiceReply> reply = bus_.interface()->registerService(
        serviceName, QDBusConnectionInterface::DontQueueService, QDBusConnectionInterface::DontAllowReplacement);
    if (!reply.isValid() || reply.value() == QDBusConnectionInterface::ServiceRegistered) return true;
    activateOther();
    return false;
}

void BusSingleInstance::activateOther() {
    QDBusMessage call =
        QDBusMessage::createMethodCall(serviceName, objectPath, interfaceName, QStringLiteral("Activate"));
    QVariantMap platformData;
    // a desktop lets only that program come to the front which the user has just acted on
    if (const QString token = qEnvironmentVariable(tokenVariable); !token.isEmpty()) platformData[tokenKey] = token;
    call << platformData;
    bus_.call(call, QDBus::Block, activationDeadline);
}

void BusSingleInstance::setOnActivate(std::function<void()> onActivate) {
    onActivate_ = std::move(onActivate);
    if (onActivate_ && std::exchange(isActivationPending_, false)) onActivate_();
}

void BusSingleInstance::Activate(const QVariantMap& platformData) {
    const QString token = platformData.value(tokenKey).toString();
    if (!token.isEmpty()) qputenv(tokenVariable, token.toUtf8());
    if (onActivate_)
        onActivate_();
    else
        isActivationPending_ = true;
}

std::unique_ptr<SingleInstance> makeSingleInstance() {
    return std::make_unique<BusSingleInstance>();
}

}  // namespace quillmere
