#pragma once

#include "Quillmere/Platform/Linux/Desktop/StatusNotifierHost.h"
#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeExtension.h"

#include <QDBusConnection>
#include <QMenu>
#include <QPointer>
#include <QString>

namespace quillmere {

/// The tray on GNOME, which has none of its own: as long as nobody else brings
/// one, our extension shows the program's menu in the top bar. It decides that by
/// itself, and takes everything back when the program leaves the bus.
class GnomeTrayHost final : public StatusNotifierHost {
    Q_OBJECT
public:
    explicit GnomeTrayHost(const QDBusConnection& bus);

    void showMenu(QMenu& menu, bool isActive) override;
    bool hasPlaceForMenu() const override { return extension_.isLive(); }

private slots:
    void choose(const QString& entry);

private:
    void send() const;

    QDBusConnection bus_;
    GnomeExtension extension_;
    QPointer<QMenu> menu_;
    bool isActive_ = false;
};

}  // namespace quillmere
