#include "Tests/Support/SettingsPortal.h"

#include "Tests/Support/SupportError.h"

namespace quillmere::support {

namespace {

const QString portalName = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString appearanceGroup = QStringLiteral("org.freedesktop.appearance");
const QString schemeKey = QStringLiteral("color-scheme");

}  // namespace

SettingsPortal::SettingsPortal(QDBusConnection bus, Scheme scheme) : bus_(std::move(bus)), scheme_(scheme) {
    const QDBusConnection::RegisterOptions everything =
        QDBusConnection::ExportScriptableContents | QDBusConnection::ExportAllProperties;
    if (!bus_.registerObject(portalPath, this, everything) || !bus_.registerService(portalName))
        throw SupportError("no settings portal on the bus");
}

SettingsPortal::~SettingsPortal() {
    bus_.unregisterService(portalName);
    bus_.unregisterObject(portalPath);
}

void SettingsPortal::setScheme(Scheme scheme) {
    scheme_ = scheme;
    emit SettingChanged(appearanceGroup, schemeKey, QDBusVariant(static_cast<uint>(scheme_)));
}

QDBusVariant SettingsPortal::Read(const QString& group, const QString& key) {
    if (group != appearanceGroup || key != schemeKey) {
        sendErrorReply(QStringLiteral("org.freedesktop.portal.Error.NotFound"),
                       QStringLiteral("Requested setting not found"));
        return {};
    }
    return QDBusVariant(QVariant::fromValue(QDBusVariant(static_cast<uint>(scheme_))));
}

}  // namespace quillmere::support
