#include "Quillmere/Platform/Linux/Tap/ServiceOffer.h"

namespace quillmere {

ServiceOffer::ServiceOffer(const FallbackEventTap& tap, PermissionRequest& request) : tap_(tap), request_(request) {
    connect(&tap, &FallbackEventTap::tapChanged, this, &Offer::changed);
}

QString ServiceOffer::text() const {
    return QStringLiteral("Fn and instant letters come with the keyboard service.");
}

QString ServiceOffer::action() const {
    return QStringLiteral("Set Up…");
}

}  // namespace quillmere
