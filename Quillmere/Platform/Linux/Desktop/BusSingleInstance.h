#pragma once

#include "Quillmere/Platform/SingleInstance.h"

#include <QDBusConnection>
#include <QObject>
#include <QVariantMap>

namespace quillmere {

/// One instance for each session bus: who owns the name org.quillmere.Quillmere
/// is the first; a later one calls its Activate (org.freedesktop.Application,
/// Desktop Entry Specification 1.5, "D-Bus activation"). Without a session bus
/// every instance is the first.
class BusSingleInstance : public QObject, public SingleInstance {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")
public:
    /// On the session's own bus, without starting one.
    BusSingleInstance();
    explicit BusSingleInstance(QDBusConnection bus);
    ~BusSingleInstance() override;

    bool claim() override;
    void setOnActivate(std::function<void()> onActivate) override;

public slots:
    /// Called over the bus. `platformData` may carry "activation-token".
    void Activate(const QVariantMap& platformData);

private:
    void activateOther();

    QDBusConnection bus_;
    std::function<void()> onActivate_;
    bool isActivationPending_ = false;
};

}  // namespace quillmere
