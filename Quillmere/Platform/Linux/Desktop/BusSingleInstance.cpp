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

void BusSingleInstance::setOnRequest(std::function<void(Request)> onRequest) {
    onRequest_ = std::move(onRequest);
    if (!onRequest_) return;
    for (const Request request : std::exchange(pending_, {}))
        onRequest_(request);
}

void BusSingleInstance::Activate(const QVariantMap& platformData) {
    take(Request::settings, platformData);
}

void BusSingleInstance::ActivateAction(const QString& name, const QVariantList& /*parameters*/,
                                       const QVariantMap& platformData) {
    if (name == QLatin1String("settings")) take(Request::settings, platformData);
    if (name == QLatin1String("active")) take(Request::toggleActive, platformData);
    if (name == QLatin1String("quit")) take(Request::quit, platformData);
}

void BusSingleInstance::take(Request request, const QVariantMap& platformData) {
    const QString token = platformData.value(tokenKey).toString();
    if (!token.isEmpty()) qputenv(tokenVariable, token.toUtf8());
    if (onRequest_)
        onRequest_(request);
    else
        pending_.push_back(request);
}

std::unique_ptr<SingleInstance> makeSingleInstance() {
    return std::make_unique<BusSingleInstance>();
}

}  // namespace quillmere
