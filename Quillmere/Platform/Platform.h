#pragma once

#include "Quillmere/Platform/Appearance.h"
#include "Quillmere/Platform/Bundle.h"
#include "Quillmere/Platform/EventTap.h"
#include "Quillmere/Platform/InputSourceService.h"
#include "Quillmere/Platform/Keyboards.h"
#include "Quillmere/Platform/LoginItem.h"
#include "Quillmere/Platform/MainQueue.h"
#include "Quillmere/Platform/Offer.h"
#include "Quillmere/Platform/PermissionRequest.h"
#include "Quillmere/Platform/PlatePanel.h"
#include "Quillmere/Platform/TrayHost.h"
#include "Quillmere/Platform/Workspace.h"
#include "QuillmereCore/UserDefaults.h"

#include <memory>
#include <vector>

namespace quillmere {

/// What the application takes from the system, one object a seam; tests fill it
/// with fakes. Beside it stand what only the start needs (Application,
/// SingleInstance) and giveBackMemory.
struct Platform {
    std::unique_ptr<MainQueue> mainQueue;
    std::unique_ptr<UserDefaults> userDefaults;
    std::unique_ptr<InputSourceService> inputSources;
    std::unique_ptr<EventTap> eventTap;
    std::unique_ptr<Keyboards> keyboards;
    std::unique_ptr<PlatePanel> platePanel;
    std::unique_ptr<Appearance> appearance;
    std::unique_ptr<TrayHost> trayHost;
    std::unique_ptr<LoginItem> loginItem;
    std::unique_ptr<Bundle> bundle;
    std::unique_ptr<Workspace> workspace;
    std::unique_ptr<PermissionRequest> permissionRequest;
    std::vector<std::unique_ptr<Offer>> offers;  ///< in the order of the settings
};

/// The running system's own. Needs the application object; main thread.
Platform makePlatform();

}  // namespace quillmere
