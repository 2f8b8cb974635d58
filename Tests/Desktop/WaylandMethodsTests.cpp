#include "Quillmere/Platform/Linux/Sources/ComposedInputSources.h"
#include "Quillmere/Platform/Linux/Sources/Fcitx/FcitxFramework.h"
#include "Quillmere/Platform/Linux/Sources/Ibus/IbusFramework.h"
#include "Quillmere/Platform/Linux/Sources/Kde/KdeInputSources.h"
#include "Quillmere/Platform/Linux/Sources/Sway/SwayInputSources.h"
#include "Tests/Support/Fcitx.h"
#include "Tests/Support/Ibus.h"
#include "Tests/Support/Kwin.h"
#include "Tests/Support/OwnVariable.h"
#include "Tests/Support/SessionBus.h"
#include "Tests/Support/Sway.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/WaitUntil.h"
#include "Tests/Support/XServer.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <optional>
#include <utility>

namespace quillmere::support {

namespace {

using Ids = std::vector<std::string>;

/// The real frameworks of input methods beside the layouts of real Wayland
/// desktops, "us" and "ua", asked by the real program's sources.
class WaylandMethodsTest : public testing::Test {
protected:
    WaylandMethodsTest() { environment["DBUS_SESSION_BUS_ADDRESS"] = bus.address(); }

    std::unique_ptr<InputSourceService> startSway() {
        server.emplace(folder.path(), environment, QSize(640, 480));
        sway.emplace(folder.path(), environment, Sway::Options{.layouts = "us,ua", .display = server->display()});
        socket.emplace("SWAYSOCK", sway->socket());
        enter(sway->waylandDisplay());
        return SwayInputSources::create();
    }
    std::unique_ptr<InputSourceService> startKwin() {
        kwin.emplace(folder.path(), environment, bus.address(), connection, Kwin::Options{.layouts = "us,ua"});
        enter(kwin->waylandDisplay());
        return std::make_unique<KdeInputSources>(connection);
    }
    /// As a session has it: the name alone.
    void enter(const std::filesystem::path& waylandDisplay) {
        environment["WAYLAND_DISPLAY"] = waylandDisplay.filename();
        display.emplace("WAYLAND_DISPLAY", environment["WAYLAND_DISPLAY"]);
    }
    std::unique_ptr<InputMethodFramework> startFcitx() {
        fcitx.emplace(folder.path(), environment, connection, Ids{"keyboard-us", "hangul"});
        fcitx->openField();
        return std::make_unique<FcitxFramework>(connection);
    }
    std::unique_ptr<InputMethodFramework> startIbus() {
        ibus.emplace(folder.path(), environment, connection, Ids{"xkb:us::eng", "hangul"});
        configHome.emplace("XDG_CONFIG_HOME", ibus->configHome());
        return std::make_unique<IbusFramework>([] { return false; });
    }
    void compose(std::unique_ptr<InputSourceService> desktop, std::unique_ptr<InputMethodFramework> framework) {
        std::vector<std::unique_ptr<InputMethodFramework>> frameworks;
        frameworks.push_back(std::move(framework));
        sources = std::make_unique<ComposedInputSources>(std::move(desktop), std::move(frameworks));
    }

    // A busy machine may need more than the time of a switch.
    bool switchTo(const std::string& id) const {
        return waitUntil([&] { return sources->select({.id = id}) == 0; }) && sources->currentID() == id;
    }
    bool waitForLayout(int index) const {
        return waitUntil([&] {
            return kwin ? kwin->layoutInUse() == index
                        : sway->layoutsInUse(Sway::serverKeyboard) == std::vector<int>{index};
        });
    }

    /// Goes through the list, as the framework itself and the desktop see it.
    /// `plain` is what the framework calls its keyboard.
    void takeTurns(const std::string& method, const std::string& plain, const std::function<std::string()>& current) {
        const Ids all{"xkb:us", "xkb:ua", method};
        ASSERT_TRUE(waitUntil([&] {
            Ids ids;
            for (const InputSourceRecord& record : sources->sources())
                ids.push_back(record.id.value_or("none"));
            return ids == all;
        }));
        EXPECT_TRUE(switchTo(method));
        EXPECT_EQ(current(), "hangul");
        EXPECT_TRUE(switchTo("xkb:ua"));
        EXPECT_EQ(current(), plain);
        EXPECT_TRUE(waitForLayout(1));
        EXPECT_TRUE(switchTo(method));
        EXPECT_TRUE(waitForLayout(0)) << "whose letters it reads";
        EXPECT_EQ(current(), "hangul");
    }

    TemporaryFolder folder;
    Environment environment = baseEnvironment(folder.path().string());
    SessionBus bus{folder.path(), environment};
    QDBusConnection connection = bus.connect();
    OwnVariable address{"IBUS_ADDRESS", ""};
    std::optional<XServer> server;
    std::optional<Sway> sway;
    std::optional<Kwin> kwin;
    std::optional<OwnVariable> socket;
    std::optional<OwnVariable> display;
    std::optional<OwnVariable> configHome;
    std::optional<Fcitx> fcitx;
    std::optional<Ibus> ibus;
    std::unique_ptr<ComposedInputSources> sources;
};

TEST_F(WaylandMethodsTest, OnSwayLayoutsAndAMethodOfFcitxTakeTurns) {
    auto desktop = startSway();
    compose(std::move(desktop), startFcitx());
    takeTurns("fcitx:hangul", "keyboard-us", [this] { return fcitx->current(); });
}

TEST_F(WaylandMethodsTest, OnKdeLayoutsAndAMethodOfFcitxTakeTurns) {
    auto desktop = startKwin();
    compose(std::move(desktop), startFcitx());
    takeTurns("fcitx:hangul", "keyboard-us", [this] { return fcitx->current(); });
}

TEST_F(WaylandMethodsTest, OnSwayLayoutsAndAMethodOfIbusTakeTurns) {
    auto desktop = startSway();
    compose(std::move(desktop), startIbus());
    takeTurns("ibus:hangul", "xkb:us::eng", [this] { return ibus->current(); });
}

TEST_F(WaylandMethodsTest, OnKdeLayoutsAndAMethodOfIbusTakeTurns) {
    auto desktop = startKwin();
    compose(std::move(desktop), startIbus());
    takeTurns("ibus:hangul", "xkb:us::eng", [this] { return ibus->current(); });
}

}  // namespace

}  // namespace quillmere::support
