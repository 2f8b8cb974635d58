#include "Tests/TapService/FakeLogin.h"

#include <QDBusVariant>
#include <QStringList>
#include <QVariantMap>

#include <stdexcept>

namespace quillmere {

namespace {

const QString service = QStringLiteral("org.freedesktop.login1");
const QString session = QStringLiteral("/org/freedesktop/login1/session/a");
const QString properties = QStringLiteral("org.freedesktop.DBus.Properties");
const QString change = QStringLiteral("PropertiesChanged");

void fill(QDBusMessage& signal) {
    signal << service + QStringLiteral(".Session") << QVariantMap() << QStringList(QStringLiteral("LockedHint"));
}

}  // namespace

FakeLogin::FakeLogin(const QDBusConnection& bus) : bus_(bus) {
    if (!bus_.registerVirtualObject(session, this) || !bus_.registerService(service))
        throw std::runtime_error("no login service on the bus");
}

FakeLogin::~FakeLogin() {
    QDBusConnection::disconnectFromBus(bus_.name());
}

void FakeLogin::setLocked(bool isLocked) {
    isLocked_ = isLocked;
    QDBusMessage signal = QDBusMessage::createSignal(session, properties, change);
    fill(signal);
    bus_.send(signal);
}

void FakeLogin::sendChange(const QDBusConnection& sender, const QString& receiver) {
    QDBusMessage signal = QDBusMessage::createTargetedSignal(receiver, session, properties, change);
    fill(signal);
    sender.send(signal);
}

void FakeLogin::answer(bool isLocked) {
    bus_.send(open_.takeFirst().createReply(QVariant::fromValue(QDBusVariant(isLocked))));
}

QString FakeLogin::introspect(const QString&) const {
    return {};
}

bool FakeLogin::handleMessage(const QDBusMessage& message, const QDBusConnection&) {
    if (message.member() != QLatin1String("Get")) return false;
    ++questions;
    open_ << message;
    if (!waits) answer(isLocked_);
    return true;
}

}  // namespace quillmere
