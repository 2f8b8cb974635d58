#pragma once

#include "Tests/Support/SessionBus.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/TapService/FakeAuthority.h"
#include "Tests/TapService/TapServiceHost.h"

#include <gtest/gtest.h>

#include <optional>

namespace quillmere {

/// A case with a private bus, and the service and polkit on it.
class TapServiceTest : public testing::Test {
protected:
    void startService() { host.emplace(bus.address(), folder.path()); }

    support::TemporaryFolder folder;
    support::SessionBus bus{folder.path(), support::baseEnvironment(folder.path().string())};
    std::optional<TapServiceHost> host{std::in_place, bus.address(), folder.path()};
};

}  // namespace quillmere
