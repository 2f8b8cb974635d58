#include "Quillmere/Platform/Linux/Desktop/MissingTray.h"

namespace quillmere {

MissingTray::MissingTray(const TrayHost& trayHost) : trayHost_(trayHost) {
    connect(&trayHost, &TrayHost::becameAvailable, this, &Offer::changed);
    connect(&trayHost, &TrayHost::placeForMenuChanged, this, &Offer::changed);
}

QString MissingTray::text() const {
    return QStringLiteral(
        "This desktop has no tray for Quillmere's icon. Start Quillmere again to come back to these settings.");
}

}  // namespace quillmere
