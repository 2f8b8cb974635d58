#include "Quillmere/Platform/Linux/Sources/Ibus/IbusAddress.h"
#include "Quillmere/Platform/Linux/Sources/Ibus/IbusEngines.h"
#include "Tests/Support/OwnVariable.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <QByteArray>
#include <QDBusConnection>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace quillmere {

namespace {

using support::OwnVariable;
using support::TemporaryFolder;

using Texts = std::vector<std::string>;
using Note = ibusAddress::Note;

/// A socket that somebody listens at who takes nobody in.
class QueueingSocket {
public:
    QueueingSocket(const std::string& path, int longestQueue)
        : socket_(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_un where{.sun_family = AF_UNIX, .sun_path = {}};
        std::memcpy(where.sun_path, path.data(), path.size());
        EXPECT_EQ(bind(socket_, reinterpret_cast<const sockaddr*>(&where), sizeof where), 0);
        EXPECT_EQ(listen(socket_, longestQueue), 0);
    }
    ~QueueingSocket() { close(socket_); }
    QueueingSocket(const QueueingSocket&) = delete;
    QueueingSocket& operator=(const QueueingSocket&) = delete;

private:
    int socket_;
};

/// A user's folders, in which the daemon of a display ":7" would leave its note.
class IbusAddressTest : public testing::Test {
protected:
    IbusAddressTest() { std::filesystem::create_directories(folder.path() / "ibus/bus"); }

    std::filesystem::path fileOf(const std::string& display) const {
        const std::string machine = QDBusConnection::localMachineId().toStdString();
        return folder.path() / "ibus/bus" / (machine + "-unix-" + display);
    }
    void leaveNote(const std::string& display, const std::string& address) const {
        std::ofstream(fileOf(display)) << "# a comment\nIBUS_ADDRESS=" << address << "\nIBUS_DAEMON_PID=42\n";
    }

    TemporaryFolder folder;
    OwnVariable config{"XDG_CONFIG_HOME", folder.path()};
    OwnVariable display{"DISPLAY", ":7.0"};
    OwnVariable wayland{"WAYLAND_DISPLAY", ""};
    OwnVariable address{"IBUS_ADDRESS", ""};
    OwnVariable file{"IBUS_ADDRESS_FILE", ""};
};

TEST_F(IbusAddressTest, IsInTheFileOfTheMachineAndTheDisplay) {
    EXPECT_EQ(ibusAddress::find(), std::nullopt);
    leaveNote("8", "unix:path=/another");
    EXPECT_EQ(ibusAddress::find(), std::nullopt);
    leaveNote("7", "unix:path=/here");
    EXPECT_EQ(ibusAddress::find(), (Note{.address = "unix:path=/here", .process = 42}));
}

TEST_F(IbusAddressTest, OfAWaylandDesktopComesFirstAndThatOfItsXServerIsTakenToo) {
    const OwnVariable both("WAYLAND_DISPLAY", "wayland-1");
    leaveNote("7", "unix:path=/server");
    EXPECT_EQ(ibusAddress::find()->address, "unix:path=/server");
    leaveNote("wayland-1", "unix:path=/compositor");
    EXPECT_EQ(ibusAddress::find()->address, "unix:path=/compositor");
}

TEST_F(IbusAddressTest, IsWhatTheVariablesSayWhereTheySayIt) {
    leaveNote("7", "unix:path=/here");
    leaveNote("else", "unix:path=/elsewhere");
    const OwnVariable other("IBUS_ADDRESS_FILE", fileOf("else"));
    EXPECT_EQ(ibusAddress::find()->address, "unix:path=/elsewhere");
    const OwnVariable itself("IBUS_ADDRESS", "unix:path=/told");
    EXPECT_EQ(ibusAddress::find(), (Note{.address = "unix:path=/told"}));
    EXPECT_EQ(ibusAddress::files(), Texts{});
}

TEST(IbusAddress, TheFileIsNamedAfterTheDisplayWithoutItsScreen) {
    for (const auto& [display, name] : {std::pair{":0", "id-unix-0"},
                                        {":12.1", "id-unix-12"},
                                        {"remote:3.0", "id-remote-3"},
                                        {"unix:0", "id-unix-0"}})
        EXPECT_EQ(ibusAddress::fileNames("id", "", display), Texts{name});
    EXPECT_EQ(ibusAddress::fileNames("id", "wayland-0", ""), Texts{"id-unix-wayland-0"});
    EXPECT_EQ(ibusAddress::fileNames("id", "", ""), Texts{});
    EXPECT_EQ(ibusAddress::fileNames("id", "", "nonsense"), Texts{});
}

TEST(IbusAddress, ANoteThatIsNotWholeOrNotSoundIsNone) {
    for (const char* text :
         {"", "IBUS_ADDRESS", "IBUS_ADDRESS=", "IBUS_DAEMON_PID=42\n", "#IBUS_ADDRESS=unix:path=/a\n",
          "IBUS_ADDRESS=unix:path=/a\nIBUS_DAEMON_PID=\n", "IBUS_ADDRESS=unix:path=/a\nIBUS_DAEMON_PID=-1\n",
          "IBUS_ADDRESS=unix:path=/a\nIBUS_DAEMON_PID=0\n",
          "IBUS_ADDRESS=unix:path=/a\nIBUS_DAEMON_PID=99999999999999\n"})
        EXPECT_EQ(ibusAddress::parse(text), std::nullopt) << text;
    EXPECT_EQ(ibusAddress::parse("IBUS_ADDRESS=unix:abstract=/a,guid=1\r\n"),
              (Note{.address = "unix:abstract=/a,guid=1"}));
}

TEST(IbusAddress, OnlyALivingDaemonThatTakesWhoComesIsListening) {
    const TemporaryFolder folder;
    const std::string path = folder.path() / "a socket";
    const Note note{.address = "unix:path=" + (folder.path() / "a%20socket").string() + ",guid=1", .process = getpid()};
    EXPECT_FALSE(ibusAddress::isListening(note));
    std::optional<QueueingSocket> server(std::in_place, path, 8);
    EXPECT_TRUE(ibusAddress::isListening(note));
    EXPECT_TRUE(ibusAddress::isListening({.address = note.address})) << "whose process is not known";
    // Beyond what the kernel gives out.
    EXPECT_FALSE(ibusAddress::isListening({.address = note.address, .process = 1 << 30}));
    for (const char* address : {"", "tcp:host=localhost,port=1", "unix:path=", "unix:"})
        EXPECT_FALSE(ibusAddress::isListening({.address = address})) << address;
    EXPECT_FALSE(ibusAddress::isListening({.address = "unix:path=/" + std::string(200, 'a')})) << "no such name fits";
    server.reset();
    EXPECT_FALSE(ibusAddress::isListening(note));
}

TEST(IbusAddress, NobodyWaitsForADaemonWhoseQueueIsFull) {
    const TemporaryFolder folder;
    const std::string path = folder.path() / "socket";
    const QueueingSocket server(path, 1);
    const Note note{.address = "unix:path=" + path};
    int taken = 0;
    while (taken < 100 && ibusAddress::isListening(note))
        ++taken;
    EXPECT_LT(taken, 100);
}

TEST(IbusEngines, ALayoutIsTheOneThatEveryDesktopKnows) {
    for (const auto& [engine, id] : {std::pair{"xkb:us::eng", "xkb:us"},
                                     {"xkb:us:dvorak:eng", "xkb:us+dvorak"},
                                     {"xkb:us:altgr-intl:eng", "xkb:us+altgr-intl"},
                                     {"xkb:ua", "xkb:ua"},
                                     {"xkb:ua:phonetic", "xkb:ua+phonetic"},
                                     {"hangul", "ibus:hangul"},
                                     {"table:wubi", "ibus:table:wubi"}})
        EXPECT_EQ(ibusEngines::idOf(engine), id);
}

TEST(IbusEngines, ALanguageIsItsCodeAlone) {
    for (const auto& [told, code] :
         {std::pair{"ko", "ko"}, {"zh_CN", "zh"}, {"ukr", "ukr"}, {"other", ""}, {"t", ""}, {"", ""}})
        EXPECT_EQ(ibusEngines::languageOf(told), code);
}

TEST(IbusEngines, AnAnswerInAnotherFormIsNoEngine) {
    for (const QVariant& answer : {QVariant(), QVariant(1), QVariant("hangul"), QVariant(QVariantList{1, "hangul"})}) {
        EXPECT_FALSE(ibusEngines::description(answer));
        EXPECT_TRUE(ibusEngines::descriptions(answer).empty());
    }
    EXPECT_TRUE(ibusEngines::names(QVariant(1)).empty());
}

}  // namespace

}  // namespace quillmere
