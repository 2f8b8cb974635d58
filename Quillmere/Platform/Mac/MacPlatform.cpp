#include "Quillmere/Platform/Mac/InfoDictionary.h"
#include "Quillmere/Platform/Mac/MacKeyboards.h"
#include "Quillmere/Platform/Mac/MacWorkspace.h"
#include "Quillmere/Platform/Mac/MenuBarTrayHost.h"
#include "Quillmere/Platform/Mac/NativePlatePanel.h"
#include "Quillmere/Platform/Mac/PreferencesDefaults.h"
#include "Quillmere/Platform/Mac/QuartzEventTap.h"
#include "Quillmere/Platform/Mac/ServiceLoginItem.h"
#include "Quillmere/Platform/Mac/SettingsPermissionRequest.h"
#include "Quillmere/Platform/Mac/SystemAppearance.h"
#include "Quillmere/Platform/Mac/TextInputSources.h"
#include "Quillmere/Platform/Platform.h"
#include "Quillmere/Platform/Qt/QtMainQueue.h"

#include <utility>

namespace quillmere {

Platform makePlatform() {
    auto workspace = std::make_unique<MacWorkspace>();
    auto permissionRequest = std::make_unique<SettingsPermissionRequest>(*workspace);
    return {
        .mainQueue = std::make_unique<QtMainQueue>(),
        .userDefaults = std::make_unique<PreferencesDefaults>(),
        .inputSources = std::make_unique<TextInputSources>(),
        .eventTap = std::make_unique<QuartzEventTap>(),
        .keyboards = std::make_unique<MacKeyboards>(),
        .platePanel = std::make_unique<NativePlatePanel>(),
        .appearance = std::make_unique<SystemAppearance>(),
        .trayHost = std::make_unique<MenuBarTrayHost>(),
        .loginItem = std::make_unique<ServiceLoginItem>(),
        .bundle = std::make_unique<InfoDictionary>(),
        .workspace = std::move(workspace),
        .permissionRequest = std::move(permissionRequest),
        .offers = {},
    };
}

}  // namespace quillmere
