#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeHelperWords.h"
#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeSettingsHelper.h"
#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeSettingsSources.h"
#include "Quillmere/Platform/Linux/Sources/SwitchWait.h"
#include "Tests/Support/ChildProcess.h"
#include "Tests/Support/OwnVariable.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <regex>
#include <string>
#include <thread>
#include <vector>

// The settings' part of switching a GNOME Shell without our extension, with the
// real helper and the real settings' library, which keeps them in a file here.
namespace quillmere::support {

namespace {

using Lines = std::vector<std::string>;

class GnomeSettingsTest : public testing::Test {
protected:
    GnomeSettingsTest() { store(three); }

    /// What the user's list has come to be, by the desktop's settings or by a
    /// switch in the shell.
    void store(const Lines& sources, const Lines& recent = {}) const {
        std::filesystem::create_directories(settingsFile.parent_path());
        const std::filesystem::path fresh = folder.path() / "fresh";
        std::ofstream(fresh) << "[org/gnome/desktop/input-sources]\nsources=" << variant(sources)
                             << "\nmru-sources=" << variant(recent) << '\n';
        std::filesystem::rename(fresh, settingsFile);
    }
    static std::string variant(const Lines& list) {
        std::string text;
        for (const std::string& line : list) {
            const std::size_t space = line.find(' ');
            text += (text.empty() ? "('" : ", ('") + line.substr(0, space) + "', '" + line.substr(space + 1) + "')";
        }
        return text.empty() ? "@a(ss) []" : "[" + text + "]";
    }
    Lines stored(const std::string& key = "sources") const {
        std::ifstream stream(settingsFile);
        Lines result;
        for (std::string line; std::getline(stream, line);) {
            if (!line.starts_with(key + "=")) continue;
            const std::regex pair("\\('([^']*)', '([^']*)'\\)");
            for (std::sregex_iterator match(line.begin(), line.end(), pair), end; match != end; ++match)
                result.push_back((*match)[1].str() + " " + (*match)[2].str());
        }
        return result;
    }
    bool waitForStored(const Lines& list) const {
        return waitUntil([&] { return stored() == list; });
    }
    bool hasPair() const {
        const Lines list = stored();
        return list.size() == 2 && list[0] == list[1];
    }

    void connect() { sources.emplace(GnomeSettingsHelper::standardProgram()); }
    Lines ids() {
        Lines result;
        if (const auto answer = sources->sources())
            for (const GnomeListedSource& listed : answer->list)
                result.push_back(listed.source.type + " " + listed.source.id);
        return result;
    }
    std::string current() {
        const auto answer = sources->sources();
        return answer && answer->current < answer->list.size() ? answer->list[answer->current].source.id : "none";
    }
    /// In a turn of the event loop of its own, as each press is.
    bool activate(const char* type, const char* id) {
        QCoreApplication::processEvents();
        return sources->activate({type, id});
    }
    /// Activates and kills the helper while the pair stands in the settings.
    void activateAndKill() {
        const pid_t helper = sources->helper().process();
        std::jthread killer([&](const std::stop_token& stop) {
            while (!stop.stop_requested() && !hasPair())
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            if (hasPair()) kill(helper, SIGKILL);
        });
        activate("xkb", "de+neo");
    }

    static inline const Lines three{"xkb us", "xkb de+neo", "ibus anthy"};

    TemporaryFolder folder;
    std::filesystem::path settingsFile = folder.path() / "config/glib-2.0/settings/keyfile";
    std::filesystem::path journalFile = folder.path() / "state/quillmere/gnome-sources";
    OwnVariable home{"HOME", folder.path()};
    OwnVariable config{"XDG_CONFIG_HOME", folder.path() / "config"};
    OwnVariable state{"XDG_STATE_HOME", folder.path() / "state"};
    OwnVariable backend{"GSETTINGS_BACKEND", "keyfile"};
    std::optional<GnomeSettingsSources> sources;
};

TEST_F(GnomeSettingsTest, ListsWhatTheUserHasAndTheCurrentOneByTheShellsMemory) {
    connect();
    EXPECT_EQ(ids(), three);
    EXPECT_EQ(current(), "us") << "the shell has no memory yet";
    store(three, {"xkb fr", "ibus anthy", "xkb us"});
    EXPECT_TRUE(waitUntil([this] { return current() == "anthy"; })) << "one that is gone does not count";
    store({"ibus anthy", "xkb us"}, {"xkb us"});
    EXPECT_TRUE(waitUntil([this] { return ids() == Lines{"ibus anthy", "xkb us"}; }));
    EXPECT_EQ(current(), "us");
}

TEST_F(GnomeSettingsTest, ASwitchLeavesTheListAsItWasAndIsRemembered) {
    connect();
    for (const char* id : {"de+neo", "us", "de+neo"}) {
        EXPECT_TRUE(activate("xkb", id));
        EXPECT_EQ(current(), id);
        EXPECT_EQ(stored(), three);
    }
    EXPECT_TRUE(activate("ibus", "anthy"));
    EXPECT_EQ(stored(), three);
    EXPECT_EQ(stored("mru-sources"), (Lines{"ibus anthy", "xkb us", "xkb de+neo"}));
}

TEST_F(GnomeSettingsTest, WhatIsNotInTheListIsNotSwitchedTo) {
    connect();
    EXPECT_FALSE(activate("xkb", "fr"));
    EXPECT_FALSE(activate("ibus", "us"));
    EXPECT_EQ(stored(), three);
    EXPECT_FALSE(std::filesystem::exists(journalFile));
}

TEST_F(GnomeSettingsTest, AHelperThatIsKilledInTheMiddleIsFollowedByOneThatPutsTheListRight) {
    connect();
    ASSERT_EQ(ids(), three);
    const pid_t first = sources->helper().process();
    activateAndKill();
    ASSERT_TRUE(waitUntil([&] { return sources->helper().process() != first; }));
    EXPECT_TRUE(waitForStored(three));
    EXPECT_TRUE(waitUntil([this] { return current() == "de+neo"; }));
    EXPECT_TRUE(activate("ibus", "anthy")) << "and it goes on";
    EXPECT_EQ(stored(), three);
}

TEST_F(GnomeSettingsTest, AProgramThatIsKilledInTheMiddleLeavesAHelperThatPutsTheListRight) {
    std::array<int, 2> sockets{};
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, sockets.data()), 0);
    ChildProcess helper({.arguments = {GnomeSettingsHelper::standardProgram()},
                         .environment = {{"XDG_CONFIG_HOME", folder.path() / "config"},
                                         {"XDG_STATE_HOME", folder.path() / "state"},
                                         {"HOME", folder.path()},
                                         {"GSETTINGS_BACKEND", "keyfile"}},
                         .output = folder.path() / "log",
                         .inheritedDescriptors = {sockets[1]},
                         .prepare = [&] { dup2(sockets[1], STDIN_FILENO); }});
    close(sockets[1]);
    const std::string question = std::string("1 ") + gnomehelper::askSelect + "\nxkb de+neo";
    ASSERT_EQ(send(sockets[0], question.data(), question.size(), 0), static_cast<ssize_t>(question.size()));
    ASSERT_TRUE(waitUntil([this] { return hasPair(); }));
    // The end of a session, too, must find it deaf.
    helper.signal(SIGTERM);
    close(sockets[0]);
    EXPECT_EQ(helper.waitForExit(patience), 0);
    EXPECT_EQ(stored(), three);
    EXPECT_FALSE(std::filesystem::exists(journalFile));
}

TEST_F(GnomeSettingsTest, WhatBothOfThemLeftIsPutRightByTheNextStartWithoutAnyQuestion) {
    store({"xkb de+neo", "xkb de+neo"});
    std::filesystem::create_directories(journalFile.parent_path());
    std::ofstream(journalFile) << "xkb us\nxkb de+neo\nibus anthy\n";
    connect();
    EXPECT_TRUE(waitForStored(three));
    EXPECT_EQ(current(), "de+neo");
}

TEST_F(GnomeSettingsTest, AListThatTheUserHasMadeSinceIsLeftAlone) {
    const Lines theirs{"xkb us", "xkb ua"};
    store(theirs);
    std::filesystem::create_directories(journalFile.parent_path());
    std::ofstream(journalFile) << "xkb us\nxkb de+neo\n";
    connect();
    EXPECT_EQ(ids(), theirs);
    EXPECT_EQ(stored(), theirs);
    EXPECT_FALSE(std::filesystem::exists(journalFile));
}

TEST_F(GnomeSettingsTest, WithoutGnomesSettingsThereIsNoSuchWay) {
    const OwnVariable none("GSETTINGS_SCHEMA_DIR", folder.path());
    const OwnVariable nowhere("XDG_DATA_DIRS", folder.path());
    connect();
    EXPECT_TRUE(sources->isAvailable());
    EXPECT_EQ(ids(), Lines{});
    EXPECT_TRUE(waitUntil([this] { return !sources->isAvailable(); })) << "and it is not tried for ever";
    EXPECT_EQ(ids(), Lines{});
}

TEST_F(GnomeSettingsTest, AHelperThatStandsStillIsWaitedForOnce) {
    connect();
    ASSERT_EQ(ids(), three);
    kill(sources->helper().process(), SIGSTOP);
    QCoreApplication::processEvents();
    const auto start = std::chrono::steady_clock::now();
    for (int press = 0; press < 4; ++press) {
        EXPECT_EQ(ids(), Lines{});
        EXPECT_FALSE(activate("xkb", "de+neo"));
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, 2 * longestSwitch);
    kill(sources->helper().process(), SIGCONT);
    EXPECT_TRUE(waitUntil([this] { return ids() == three; }));
    EXPECT_EQ(current(), "us") << "nothing was switched late";
}

}  // namespace

}  // namespace quillmere::support
