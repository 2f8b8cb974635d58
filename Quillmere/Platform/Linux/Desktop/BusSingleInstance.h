#pragma once

#include "Quillmere/Platform/SingleInstance.h"

#include <QDBusConnection>
#include <QObject>
#include <QVariantList>
#include <QVariantMap>

#include <functional>
#include <vector>

namespace quillmere {

/// One instance for each session bus: who owns the name org.quillmere.Quillmere
/// is the first; a later one calls its Activate (org.freedesktop.Application,
/// Desktop Entry Specification 1.5, "D-Bus activation"), and the actions of the
/// desktop entry call ActivateAction. Without a session bus every instance is
/// the first.
class BusSingleInstance : public QObject, public SingleInstance {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")
public:
    /// On the session's own bus, without starting one.
    BusSingleInstance();
    explicit BusSingleInstance(QDBusConnection bus);
    ~BusSingleInstance() override;

    bool claim() override;
    void setOnRequest(std::function<void(Request)> onRequest) override;

public slots:
    /// Called over the bus. `platformData` may carry "activation-token".
    void Activate(const QVariantMap& platformData);
    /// Called over the bus. "settings", "active" or "quit"; anything else is
    /// ignored. None takes a parameter.
    void ActivateAction(const QString& name, const QVariantList& parameters, const QVariantMap& platformData);

private:
    void take(Request request, const QVariantMap& platformData);
    void activateOther();

    QDBusConnection bus_;
    std::function<void(Request)> onRequest_;
    std::vector<Request> pending_;
};

}  // namespace quillmere
