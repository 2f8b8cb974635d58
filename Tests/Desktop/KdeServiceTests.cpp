#include "Tests/Desktop/KdeTest.h"
#include "Tests/TapService/FakeAuthority.h"
#include "Tests/TapService/TapServiceHost.h"

namespace quillmere::support {

namespace {

/// KDE with the key-tap service on it, whose keyboard the tests play.
class KdeServiceTest : public KdeTest {
protected:
    KdeServiceTest() : systemBus(folder.makeFolder("system"), environment) {
        environment["DBUS_SYSTEM_BUS_ADDRESS"] = systemBus.address();
        service.emplace(systemBus.address(), folder.path());
    }

    SessionBus systemBus;
    std::optional<TapServiceHost> service;
};

TEST_F(KdeServiceTest, TheServiceTakesOverAsSoonAsTheSettingsHaveAskedForIt) {
    const FakeAuthority authority(systemBus.connect());
    ASSERT_NO_FATAL_FAILURE(startSwitching());
    ASSERT_FALSE(service->isGrabbed());
    ASSERT_TRUE(tray.click("Settings…"));
    ASSERT_TRUE(waitUntil([this] { return hasFocus("Quillmere"); }));
    // The tab "General", and there, backwards, the last of all controls.
    typist.type("+tab -tab +tab -tab +space -space +shift +tab -tab +tab -tab -shift +space -space");
    EXPECT_TRUE(waitUntil([this] { return service->isGrabbed(); }));
    EXPECT_TRUE(waitForOwner(controlAltSpace, "")) << "with both, each press would switch twice";
    service->type("+ctrl +alt +space -space -alt -ctrl");
    EXPECT_TRUE(waitForLayout(1));
}

TEST_F(KdeServiceTest, TheDesktopTakesOverWhenTheServiceRefusesAndGivesWayToItAgain) {
    service->grant();
    store({{.sources = {"xkb:us", "xkb:ua", "xkb:de"}}});
    ASSERT_NO_FATAL_FAILURE(startProgram());
    ASSERT_TRUE(waitUntil([this] { return service->isGrabbed(); }));
    EXPECT_EQ(ownerOf(controlAltSpace), "");
    service->revoke();
    ASSERT_TRUE(waitForOwner(controlAltSpace, "quillmere"));
    typist.type(shortcut);
    EXPECT_TRUE(waitForLayout(1));
    service->grant();
    EXPECT_TRUE(waitUntil([this] { return service->isGrabbed(); }));
    EXPECT_TRUE(waitForOwner(controlAltSpace, ""));
}

}  // namespace

}  // namespace quillmere::support
