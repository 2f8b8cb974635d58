#pragma once

#include "Quillmere/Platform/Appearance.h"

#include <QDBusVariant>
#include <QString>

#include <optional>

class QDBusPendingCallWatcher;
class QVariant;

namespace quillmere {

/// The desktop's choice of dark or light as its settings portal tells it
/// (org.freedesktop.portal.Settings). Light until the portal has answered, and
/// where there is none. Never blocks. Main thread only.
class PortalAppearance : public Appearance {
    Q_OBJECT
public:
    PortalAppearance();

    bool isDark() const override { return isDark_; }
    bool hasGlass() const override { return false; }

    /// Whether there is a portal that tells; absent while it has not answered.
    std::optional<bool> hasPortal() const { return hasPortal_; }

private:
    Q_SLOT void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);
    void read();
    void take(const QVariant& value);
    void setDark(bool isDark);

    bool isDark_ = false;
    std::optional<bool> hasPortal_;
    /// A change that the portal announces overtakes an answer on its way.
    int readNumber_ = 0;
};

}  // namespace quillmere
