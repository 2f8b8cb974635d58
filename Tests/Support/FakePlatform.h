#pragma once

#include "Quillmere/Platform/Platform.h"
#include "Tests/Support/FakeAppearance.h"
#include "Tests/Support/FakeBundle.h"
#include "Tests/Support/FakeEventTap.h"
#include "Tests/Support/FakeInputSourceService.h"
#include "Tests/Support/FakeKeyboards.h"
#include "Tests/Support/FakeLoginItem.h"
#include "Tests/Support/FakePermissionRequest.h"
#include "Tests/Support/FakePlatePanel.h"
#include "Tests/Support/FakeTrayHost.h"
#include "Tests/Support/FakeWorkspace.h"
#include "Tests/Support/ManualQueue.h"
#include "Tests/Support/MemoryDefaults.h"

#include <memory>

namespace quillmere {

/// A whole system made of fakes. `take` hands it to the application; the
/// references stay good as long as the application lives.
class FakePlatform {
public:
    Platform take() { return std::move(platform_); }

private:
    template <class Fake, class Seam>
    static Fake& make(std::unique_ptr<Seam>& seam) {
        auto fake = std::make_unique<Fake>();
        Fake& reference = *fake;
        seam = std::move(fake);
        return reference;
    }

    Platform platform_;

public:
    ManualQueue& queue = make<ManualQueue>(platform_.mainQueue);
    MemoryDefaults& defaults = make<MemoryDefaults>(platform_.userDefaults);
    FakeInputSourceService& inputSources = make<FakeInputSourceService>(platform_.inputSources);
    FakeEventTap& tap = make<FakeEventTap>(platform_.eventTap);
    FakeKeyboards& keyboards = make<FakeKeyboards>(platform_.keyboards);
    FakePlatePanel& panel = make<FakePlatePanel>(platform_.platePanel);
    FakeAppearance& appearance = make<FakeAppearance>(platform_.appearance);
    FakeTrayHost& trayHost = make<FakeTrayHost>(platform_.trayHost);
    FakeLoginItem& loginItem = make<FakeLoginItem>(platform_.loginItem);
    FakeBundle& bundle = make<FakeBundle>(platform_.bundle);
    FakeWorkspace& workspace = make<FakeWorkspace>(platform_.workspace);
    FakePermissionRequest& permissionRequest = make<FakePermissionRequest>(platform_.permissionRequest);
};

}  // namespace quillmere
