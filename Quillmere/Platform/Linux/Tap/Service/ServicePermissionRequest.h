#pragma once

#include "Quillmere/Platform/PermissionRequest.h"
#include "Quillmere/Platform/Workspace.h"

#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QObject>
#include <QUrl>

#include <functional>
#include <memory>

namespace quillmere {

/// Asks the key-tap service for access; the desktop then asks the user for an
/// administrator's password. Without the service it opens the page that tells
/// how to install it.
class ServicePermissionRequest final : public QObject, public PermissionRequest {
public:
    /// `workspace` must outlive this.
    ServicePermissionRequest(Workspace& workspace, QUrl documentation,
                             const QDBusConnection& bus = QDBusConnection::systemBus());

    /// The installed page, seen from the program.
    static QUrl standardDocumentation();

    /// Asks the bus whether the service is installed, and waits for that.
    QString directions() const override;
    void open() override;

    /// The user has said yes.
    std::function<void()> onGranted;

private:
    bool isInstalled() const;
    void answered();

    Workspace& workspace_;
    QUrl documentation_;
    QDBusConnection bus_;
    std::unique_ptr<QDBusPendingCallWatcher> question_;
};

}  // namespace quillmere
