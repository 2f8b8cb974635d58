#pragma once

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusVariant>
#include <QObject>
#include <QString>

namespace quillmere::support {

/// A desktop's portal for the user's preference of dark or light:
/// org.freedesktop.portal.Settings as the xdg-desktop-portal of Debian 12
/// offers it, whose `Read` wraps the value twice. Answers only while its
/// thread's event loop runs (`waitUntil` does).
class SettingsPortal : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")
    Q_PROPERTY(uint version READ version)
public:
    /// The values of org.freedesktop.appearance's "color-scheme".
    enum class Scheme : uint { noPreference = 0, dark = 1, light = 2 };

    /// Takes the portal's name on the bus. Throws when it is taken.
    SettingsPortal(QDBusConnection bus, Scheme scheme);
    ~SettingsPortal() override;

    /// Changes the preference and tells everybody.
    void setScheme(Scheme scheme);

    uint version() const { return 1; }

public slots:
    Q_SCRIPTABLE QDBusVariant Read(const QString& group, const QString& key);

signals:
    Q_SCRIPTABLE void SettingChanged(const QString& group, const QString& key, const QDBusVariant& value);

private:
    QDBusConnection bus_;
    Scheme scheme_;
};

}  // namespace quillmere::support
