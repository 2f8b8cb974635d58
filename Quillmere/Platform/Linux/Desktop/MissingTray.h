#pragma once

#include "Quillmere/Platform/Offer.h"
#include "Quillmere/Platform/TrayHost.h"

namespace quillmere {

/// Says how the settings are reached on a desktop without a tray.
class MissingTray final : public Offer {
public:
    /// `trayHost` must outlive this.
    explicit MissingTray(const TrayHost& trayHost);

    bool isOpen() const override { return !trayHost_.isAvailable() && !trayHost_.hasPlaceForMenu(); }
    QString text() const override;
    /// Only the user can do something about it.
    QString action() const override { return {}; }
    void accept() override {}

private:
    const TrayHost& trayHost_;
};

}  // namespace quillmere
