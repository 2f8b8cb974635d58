#include "Quillmere/Platform/Linux/Sources/ComposedInputSources.h"
#include "Quillmere/Platform/Linux/Sources/Fcitx/FcitxFramework.h"
#include "Quillmere/Platform/Linux/Sources/SwitchWait.h"
#include "Quillmere/Platform/Linux/Sources/Xkb/XkbInputSources.h"
#include "Tests/Support/Fcitx.h"
#include "Tests/Support/OwnVariable.h"
#include "Tests/Support/SessionBus.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/WaitUntil.h"
#include "Tests/Support/XServer.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

#include <chrono>
#include <csignal>
#include <optional>

namespace quillmere::support {

namespace {

using namespace std::chrono_literals;

using Ids = std::vector<std::string>;

/// What a busy machine may add to a promised time.
constexpr auto allowance = 300ms;

/// The real fcitx beside the layouts of a real X server, asked by the real
/// program's sources.
class FcitxTest : public testing::Test {
protected:
    FcitxTest() {
        environment["DISPLAY"] = server.display();
        environment["DBUS_SESSION_BUS_ADDRESS"] = bus.address();
    }

    /// fcitx, and after it the desktop's layouts, which it has replaced.
    void start(const std::vector<std::string>& methods, const std::string& layouts) {
        fcitx.emplace(folder.path(), environment, connection, methods);
        server.setLayouts(layouts);
        std::vector<std::unique_ptr<InputMethodFramework>> frameworks;
        frameworks.push_back(std::make_unique<FcitxFramework>(connection));
        sources = std::make_unique<ComposedInputSources>(XkbInputSources::create(), std::move(frameworks));
    }
    /// The methods, and again the layouts, which it replaces at each change too.
    void setMethods(const std::vector<std::string>& methods) {
        fcitx->setMethods(methods);
        server.setLayouts("us,ua");
    }
    Ids ids() const {
        Ids result;
        for (const InputSourceRecord& record : sources->sources())
            result.push_back(record.id.value_or("none"));
        return result;
    }
    int select(const char* id) const { return sources->select({.id = id}); }
    // A busy machine may need more than the time of a switch.
    bool switchTo(const char* id) const {
        return waitUntil([&] { return select(id) == 0; });
    }
    bool waitForCurrent(const char* id) const {
        return waitUntil([&] { return sources->currentID() == id; });
    }
    bool waitForIds(const Ids& expected) const {
        return waitUntil([&] { return ids() == expected; });
    }

    TemporaryFolder folder;
    Environment environment = baseEnvironment(folder.path().string());
    SessionBus bus{folder.path(), environment};
    QDBusConnection connection = bus.connect();
    XServer server{folder.path(), environment, QSize(640, 480)};
    OwnVariable display{"DISPLAY", server.display()};
    std::optional<Fcitx> fcitx;
    std::unique_ptr<ComposedInputSources> sources;
};

TEST_F(FcitxTest, BesideSeveralLayoutsItsMethodsComeAfterTheDesktopsWithNameAndLanguage) {
    start({"keyboard-us", "hangul"}, "us,ua");
    EXPECT_TRUE(waitForIds({"xkb:us", "xkb:ua", "fcitx:hangul"}));
    InputSourceRecord hangul;
    EXPECT_TRUE(waitUntil([&] {
        hangul = sources->sources().back();
        return hangul.localizedName == "Hangul";
    })) << hangul.localizedName.value_or("no name");
    EXPECT_EQ(hangul.languages, std::vector<std::string>{"ko"});
    EXPECT_EQ(hangul.type, InputSourceType::keyboardInputMode);
    EXPECT_TRUE(hangul.enabled && hangul.selectCapable);
}

TEST_F(FcitxTest, AGroupOfLayoutsAndMethodsIsGoneThroughAndAMethodReadsTheLayoutOfItsKeyboard) {
    start({"keyboard-us", "hangul"}, "us,ua");
    fcitx->openField();
    EXPECT_TRUE(waitForCurrent("xkb:us"));
    for (int round = 0; round < 2; ++round) {
        EXPECT_TRUE(switchTo("fcitx:hangul"));
        EXPECT_TRUE(waitForCurrent("fcitx:hangul"));
        EXPECT_EQ(fcitx->current(), "hangul");
        EXPECT_EQ(server.group(), 0) << "whose letters it reads";
        EXPECT_TRUE(switchTo("xkb:ua"));
        EXPECT_TRUE(waitForCurrent("xkb:ua"));
        EXPECT_TRUE(switchTo("fcitx:hangul"));
        EXPECT_TRUE(switchTo("xkb:us"));
        EXPECT_TRUE(waitForCurrent("xkb:us"));
    }
}

TEST_F(FcitxTest, WithOneLayoutOfTheDesktopItsListIsTheList) {
    start({"keyboard-us", "keyboard-us-dvorak", "hangul", "keyboard-ua"}, "us");
    fcitx->openField();
    EXPECT_TRUE(waitForIds({"xkb:us", "xkb:us+dvorak", "fcitx:hangul", "xkb:ua"}));
    EXPECT_EQ(sources->sources()[1].localizedName, "English (Dvorak)");
    EXPECT_EQ(sources->sources()[3].languages, std::vector<std::string>{"ukr"});
    EXPECT_TRUE(waitForCurrent("xkb:us"));
    EXPECT_TRUE(switchTo("xkb:ua"));
    EXPECT_TRUE(waitForCurrent("xkb:ua"));
    EXPECT_TRUE(switchTo("xkb:us+dvorak"));
    EXPECT_TRUE(switchTo("fcitx:hangul"));
    EXPECT_TRUE(switchTo("xkb:us"));
}

TEST_F(FcitxTest, WithoutAWindowToTypeInAMethodIsRefusedAndTheDesktopsLayoutsSwitch) {
    start({"keyboard-us", "hangul"}, "us,ua");
    EXPECT_TRUE(waitForCurrent("xkb:us"));
    EXPECT_NE(select("fcitx:hangul"), 0);
    EXPECT_TRUE(switchTo("xkb:ua"));
    EXPECT_EQ(server.group(), 1);
    EXPECT_NE(select("fcitx:hangul"), 0);
    EXPECT_TRUE(waitForCurrent("xkb:ua")) << "a method that is refused changes nothing";
    server.setGroup(0);
    server.setLayouts("us");
    EXPECT_TRUE(waitForCurrent("xkb:us"));
    EXPECT_EQ(select("xkb:us"), 0) << "the desktop's own, which is in use";
    EXPECT_NE(select("fcitx:hangul"), 0);
}

TEST_F(FcitxTest, WhatIsNotThereIsRefusedAndChangesNothing) {
    start({"keyboard-us", "hangul"}, "us,ua");
    fcitx->openField();
    ASSERT_TRUE(switchTo("fcitx:hangul"));
    for (const char* id : {"fcitx:pinyin", "fcitx:", "fcitx:keyboard-us", "xkb:fr", "", "ibus:hangul"})
        EXPECT_NE(select(id), 0) << id;
    EXPECT_NE(sources->select({.id = std::nullopt}), 0);
    EXPECT_EQ(fcitx->current(), "hangul");
    EXPECT_EQ(server.group(), 0);
}

TEST_F(FcitxTest, TheCurrentOneIsThatOfTheWindowWhoeverHasChosenIt) {
    start({"keyboard-us", "hangul"}, "us,ua");
    const QString first = fcitx->openField();
    fcitx->use("hangul");
    EXPECT_TRUE(waitForCurrent("fcitx:hangul"));
    fcitx->openField();
    EXPECT_TRUE(waitForCurrent("xkb:us")) << "it has its own";
    server.setGroup(1);
    EXPECT_TRUE(waitForCurrent("xkb:ua"));
    fcitx->focus(first);
    EXPECT_TRUE(waitForCurrent("fcitx:hangul")) << "and the first still has";
}

TEST_F(FcitxTest, AListThatChangesIsFollowedAtOnce) {
    start({"keyboard-us", "hangul"}, "us,ua");
    fcitx->openField();
    ASSERT_TRUE(waitForIds({"xkb:us", "xkb:ua", "fcitx:hangul"}));
    setMethods({"keyboard-us"});
    EXPECT_TRUE(waitForIds({"xkb:us", "xkb:ua"}));
    EXPECT_NE(select("fcitx:hangul"), 0);
    setMethods({"hangul", "keyboard-us"});
    EXPECT_TRUE(waitForIds({"xkb:us", "xkb:ua", "fcitx:hangul"}));
    EXPECT_TRUE(switchTo("fcitx:hangul"));
    EXPECT_TRUE(switchTo("xkb:ua"));
}

TEST_F(FcitxTest, WhenItIsKilledTheLayoutsAreLeftAndItsMethodsComeBackWithIt) {
    start({"keyboard-us", "hangul"}, "us,ua");
    fcitx->openField();
    ASSERT_TRUE(switchTo("fcitx:hangul"));
    fcitx->process().kill();
    EXPECT_TRUE(waitForIds({"xkb:us", "xkb:ua"}));
    EXPECT_TRUE(waitForCurrent("xkb:us"));
    EXPECT_TRUE(switchTo("xkb:ua"));
    EXPECT_NE(select("fcitx:hangul"), 0);
    fcitx->start();
    server.setLayouts("us,ua");
    EXPECT_TRUE(waitForIds({"xkb:us", "xkb:ua", "fcitx:hangul"}));
    fcitx->openField();
    EXPECT_TRUE(switchTo("fcitx:hangul"));
    EXPECT_EQ(fcitx->current(), "hangul");
}

TEST_F(FcitxTest, WhileItStandsStillLayoutsSwitchAndItIsWaitedForOnce) {
    start({"keyboard-us", "hangul"}, "us,ua");
    fcitx->openField();
    ASSERT_TRUE(waitForIds({"xkb:us", "xkb:ua", "fcitx:hangul"}));
    fcitx->process().signal(SIGSTOP);
    ASSERT_TRUE(waitUntil([this] { return fcitx->process().state() == 'T'; }));
    QCoreApplication::processEvents();
    const auto start = std::chrono::steady_clock::now();
    for (const char* next : {"xkb:ua", "xkb:us", "xkb:ua"}) {
        sources->currentID();
        EXPECT_EQ(ids(), (Ids{"xkb:us", "xkb:ua"}));
        EXPECT_EQ(select(next), 0);
        EXPECT_EQ(sources->currentID(), next);
        QCoreApplication::processEvents();
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, longestSwitch + allowance);
    fcitx->process().signal(SIGCONT);
    EXPECT_TRUE(waitForIds({"xkb:us", "xkb:ua", "fcitx:hangul"}));
    EXPECT_TRUE(switchTo("fcitx:hangul"));
}

}  // namespace

}  // namespace quillmere::support
