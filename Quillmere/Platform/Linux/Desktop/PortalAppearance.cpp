#include "Quillmere/Platform/Linux/Desktop/PortalAppearance.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>

namespace quillmere {

namespace {

// Names of the desktop portal's settings interface and of the setting in it.
const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString settingsInterface = QStringLiteral("org.freedesktop.portal.Settings");
const QString settingGroup = QStringLiteral("org.freedesktop.appearance");
const QString settingKey = QStringLiteral("color-scheme");

// 0 is no preference, 2 is light.
constexpr uint prefersDark = 1;

// The portal's Read wraps its answer in one variant more than it documents.
QVariant unwrapped(QVariant value) {
    while (value.metaType() == QMetaType::fromType<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

}  // namespace

PortalAppearance::PortalAppearance() {
    qDBusRegisterMetaType<QDBusVariant>();
    auto bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return;

    bus.connect(portalService, portalPath, settingsInterface, QStringLiteral("SettingChanged"), this,
                SLOT(settingChanged(QString, QString, QDBusVariant)));
    auto* watcher = new QDBusServiceWatcher(portalService, bus, QDBusServiceWatcher::WatchForRegistration, this);
    connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, &PortalAppearance::read);
    read();
}

void PortalAppearance::read() {
    auto message = QDBusMessage::createMethodCall(portalService, portalPath, settingsInterface, QStringLiteral("Read"));
    message << settingGroup << settingKey;
    auto* watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(message), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, number = ++readNumber_](auto* call) {
        call->deleteLater();
        const QDBusPendingReply<QDBusVariant> reply = *call;
        if (number != readNumber_) return;
        hasPortal_ = !reply.isError();
        take(reply.isError() ? QVariant() : reply.value().variant());
    });
}

void PortalAppearance::settingChanged(const QString& group, const QString& key, const QDBusVariant& value) {
    if (group != settingGroup || key != settingKey) return;
    ++readNumber_;
    hasPortal_ = true;
    take(value.variant());
}

void PortalAppearance::take(const QVariant& value) {
    setDark(unwrapped(value).toUInt() == prefersDark);
}

void PortalAppearance::setDark(bool isDark) {
    if (isDark_ == isDark) return;
    isDark_ = isDark;
    emit changed();
}

}  // namespace quillmere
