#include "Quillmere/Platform/Mac/ServiceLoginItem.h"

#include "Quillmere/Platform/Mac/SystemVersion.h"

#include <ServiceManagement/ServiceManagement.h>

namespace quillmere {

bool ServiceLoginItem::isAvailable() const {
    return SystemVersion::isAtLeast(SystemVersion::loginItems);
}

QString ServiceLoginItem::requirement() const {
    return QStringLiteral("Needs macOS 13 or later");
}

bool ServiceLoginItem::isEnabled() const {
    return isAvailable() && SMAppService.mainAppService.status == SMAppServiceStatusEnabled;
}

bool ServiceLoginItem::setEnabled(bool enabled) {
    if (!isAvailable()) return false;
    SMAppService* const service = SMAppService.mainAppService;
    return enabled ? [service registerAndReturnError:nil] : [service unregisterAndReturnError:nil];
}

}  // namespace quillmere
