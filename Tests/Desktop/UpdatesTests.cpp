#include "Tests/Desktop/UpdatesTest.h"

#include <QFile>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <unistd.h>

namespace quillmere::support {

namespace {

using namespace std::chrono_literals;
using Scheme = SettingsPortal::Scheme;

/// The focus in the update window, from the title on.
constexpr int downloadButton = 1;
constexpr int laterButton = 2;
constexpr int skipButton = 3;

/// Above the half minute after which the first automatic check comes.
constexpr std::chrono::milliseconds halfAMinute{60'000};

const QByteArray notes =
    R"(, "size": 2300000, "notes": {"en": ["Switches faster.", "Shows <b>notes</b> as they are: https://example.org",
        "A longer note, which tells at some length what has become better and so needs more than one line."]})";

void write(const std::filesystem::path& path, const QByteArray& bytes) {
    QFile file(QString::fromStdString(path.string()));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(bytes), bytes.size());
}

TEST_F(UpdatesTest, AManualCheckOffersTheNewerVersionInFront) {
    answerWithFeed(newerFeed(notes));
    ASSERT_NO_FATAL_FAILURE(startWithFeed());
    ASSERT_NO_FATAL_FAILURE(checkManually());
    ASSERT_TRUE(waitUntil([&] { return updateWindow().has_value(); }));
    EXPECT_TRUE(waitForFocus(updateWindow()));
    const HttpRequest request = server.requests().front();
    EXPECT_EQ(request.method, "GET");
    EXPECT_EQ(request.headers.at("user-agent"), "Quillmere/1.0");
    EXPECT_TRUE(desktop().settings().value("updateLastCheck"));
}

TEST_F(UpdatesTest, DownloadOpensTheUsersBrowser) {
    answerWithFeed(newerFeed());
    startDesktop();
    const auto tools = desktop().folder() / "tools";
    const auto opened = desktop().folder() / "opened";
    std::filesystem::create_directories(tools);
    write(tools / "xdg-open", "#!/bin/sh\nprintf %s \"$1\" > " + QByteArray::fromStdString(opened.string()) + ".part\n"
                              "mv " + QByteArray::fromStdString(opened.string()) + ".part "
                              + QByteArray::fromStdString(opened.string()) + "\n");
    std::filesystem::permissions(tools / "xdg-open", std::filesystem::perms::owner_all);
    const std::string path = tools.string() + ":" + desktop().environment().at("PATH");
    ASSERT_NO_FATAL_FAILURE(startUpdatable({.additions = {{"PATH", path}}, .prepare = {}}));
    ASSERT_NO_FATAL_FAILURE(checkManually());
    ASSERT_TRUE(waitUntil([&] { return updateWindow().has_value(); }));
    ASSERT_TRUE(waitForFocus(updateWindow()));
    tabAndPress(downloadButton);
    ASSERT_TRUE(waitUntil([&] { return std::filesystem::exists(opened); }));
    QFile file(QString::fromStdString(opened.string()));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll().toStdString(), server.url("/app/downloads/quillmere.deb"));
    EXPECT_TRUE(waitUntil([&] { return !updateWindow(); }));
    EXPECT_FALSE(desktop().settings().value("updateSkipped"));
}

TEST_F(UpdatesTest, LaterStoresNothingAndTheNextManualCheckOffersAgain) {
    answerWithFeed(newerFeed());
    ASSERT_NO_FATAL_FAILURE(startWithFeed());
    ASSERT_NO_FATAL_FAILURE(checkManually());
    ASSERT_TRUE(waitUntil([&] { return updateWindow().has_value(); }));
    ASSERT_TRUE(waitForFocus(updateWindow()));
    tabAndPress(laterButton);
    ASSERT_TRUE(waitUntil([&] { return !updateWindow(); }));
    EXPECT_FALSE(desktop().settings().value("updateSkipped"));
    ASSERT_TRUE(waitForFocus(settingsWindow()));
    typist().tap(keys::space);
    EXPECT_TRUE(waitUntil([&] { return updateWindow().has_value(); }));
}

TEST_F(UpdatesTest, ASkippedVersionIsRememberedOverARestart) {
    answerWithFeed(newerFeed());
    ASSERT_NO_FATAL_FAILURE(startWithFeed());
    ASSERT_NO_FATAL_FAILURE(checkManually());
    ASSERT_TRUE(waitUntil([&] { return updateWindow().has_value(); }));
    ASSERT_TRUE(waitForFocus(updateWindow()));
    tabAndPress(skipButton);
    ASSERT_TRUE(waitUntil([&] { return !updateWindow(); }));
    EXPECT_EQ(desktop().settings().value("updateSkipped"), "2.0");
    ASSERT_NO_FATAL_FAILURE(quit());

    // Long ago, so that the automatic check is due at the next start.
    desktop().settings().set("updateLastCheck", "0", "date");
    const std::size_t before = server.requests().size();
    ASSERT_NO_FATAL_FAILURE(startUpdatable());
    ASSERT_TRUE(waitUntil([&] { return server.requests().size() > before; }, halfAMinute)) << "no automatic check";
    ASSERT_TRUE(waitUntil([&] { return server.openConnections() == 0; }));
    EXPECT_TRUE(holdsFor([&] { return !updateWindow() && !alert(); }, 2s));

    ASSERT_NO_FATAL_FAILURE(checkManually());
    EXPECT_TRUE(waitUntil([&] { return updateWindow().has_value(); })) << "a manual check offers it all the same";
}

TEST_F(UpdatesTest, AnAutomaticCheckOffersANewerVersionAndRunsOnceADay) {
    answerWithFeed(newerFeed());
    ASSERT_NO_FATAL_FAILURE(startWithFeed());
    EXPECT_TRUE(server.requests().empty());
    ASSERT_TRUE(waitUntil([&] { return updateWindow().has_value(); }, halfAMinute));
    ASSERT_NO_FATAL_FAILURE(quit());
    ASSERT_NO_FATAL_FAILURE(startUpdatable());
    EXPECT_TRUE(holdsFor([&] { return server.requests().size() == 1; }, 35s));
}

TEST_F(UpdatesTest, AFailedAutomaticCheckIsSilent) {
    answerWith(HttpAnswer::with("500 Internal Server Error"));
    ASSERT_NO_FATAL_FAILURE(startWithFeed());
    ASSERT_TRUE(waitUntil([&] { return !server.requests().empty(); }, halfAMinute));
    ASSERT_TRUE(waitUntil([&] { return server.openConnections() == 0; }));
    EXPECT_TRUE(holdsFor([&] { return !alert() && !updateWindow(); }, 2s));
}

TEST_F(UpdatesTest, QuitsAtOnceWhileACheckIsUnderWay) {
    answerWith({{HttpAnswer::Silence{}}});
    ASSERT_NO_FATAL_FAILURE(startWithFeed());
    ASSERT_NO_FATAL_FAILURE(checkManually());
    const auto begin = std::chrono::steady_clock::now();
    ASSERT_TRUE(tray().click("Quit Quillmere"));
    EXPECT_EQ(updatable().waitForExit(patience), 0);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 8s) << "it has waited for the server";
}

/// A name server that never answers, for the programs that this test starts.
class SilentNameServer {
public:
    SilentNameServer() : socket_(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(53);
        inet_pton(AF_INET, ip, &address.sin_addr);
        isBound_ = bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
    }
    ~SilentNameServer() { ::close(socket_); }
    SilentNameServer(const SilentNameServer&) = delete;
    SilentNameServer& operator=(const SilentNameServer&) = delete;

    bool isBound() const { return isBound_; }
    bool isAsked() const {
        char byte = 0;
        return recv(socket_, &byte, 1, MSG_PEEK | MSG_DONTWAIT) > 0;
    }

    static constexpr const char* ip = "127.0.0.77";

private:
    int socket_;
    bool isBound_ = false;
};

TEST_F(UpdatesTest, QuitsAtOnceWhileTheServersNameIsLookedUp) {
    const SilentNameServer names;
    if (geteuid() != 0 || !names.isBound()) GTEST_SKIP() << "needs root, to name a name server of its own";
    startDesktop();
    const std::string resolver = (desktop().folder() / "resolv.conf").string();
    write(resolver, QByteArray("nameserver ") + SilentNameServer::ip + "\n");
    const auto useIt = [&resolver] {
        if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0
            || mount(resolver.c_str(), "/etc/resolv.conf", nullptr, MS_BIND, nullptr) != 0) {
            _exit(1);
        }
    };
    ASSERT_NO_FATAL_FAILURE(
        startUpdatable({.additions = {}, .prepare = useIt}, "http://updates.example.org/feed.json"));
    ASSERT_NO_FATAL_FAILURE(openGeneralTab());
    tabAndPress(checkButton);
    ASSERT_TRUE(waitUntil([&] { return names.isAsked(); }));
    const auto begin = std::chrono::steady_clock::now();
    ASSERT_TRUE(tray().click("Quit Quillmere"));
    EXPECT_EQ(updatable().waitForExit(patience), 0);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 4s) << "it has waited for the name server";
}

/// What the windows look like, in both appearances.
class UpdatesLookTest : public UpdatesTest, public testing::WithParamInterface<Scheme> {
protected:
    static std::string named(const std::string& what) {
        return what + (GetParam() == Scheme::dark ? "-dark" : "-light");
    }
    QColor background() const { return GetParam() == Scheme::dark ? QColor(27, 29, 34) : QColor(255, 255, 255); }

    /// Waits until the window is drawn, and keeps its picture.
    void expectDrawn(const std::optional<WindowInfo>& window, const std::string& name) {
        ASSERT_TRUE(window);
        const QPoint corner = window->frame.topLeft() + QPoint(4, 4);
        EXPECT_TRUE(waitUntil([&] { return desktop().screen().color(corner) == background(); }))
            << desktop().screen().color(corner).name().toStdString();
        keepPicture(window, named(name));
    }

    void checkAgain(HttpAnswer answer) {
        answerWith(std::move(answer));
        ASSERT_TRUE(waitForFocus(settingsWindow()));
        typist().tap(keys::space);
    }

    void expectOffer(const QByteArray& more, const std::string& name) {
        ASSERT_NO_FATAL_FAILURE(checkAgain(HttpAnswer::with("200 OK", newerFeed(more))));
        ASSERT_TRUE(waitUntil([&] { return updateWindow().has_value(); }));
        ASSERT_TRUE(waitForFocus(updateWindow()));
        expectDrawn(updateWindow(), name);
        const QRect screen(QPoint(), desktop().connection().screenSize());
        EXPECT_TRUE(screen.contains(updateWindow()->frame));
        tabAndPress(laterButton);
        ASSERT_TRUE(waitUntil([&] { return !updateWindow(); }));
    }

    void expectAlert(const std::string& name) {
        ASSERT_TRUE(waitUntil([&] { return alert().has_value(); }));
        ASSERT_TRUE(waitForFocus(alert()));
        expectDrawn(alert(), name);
        typist().tap(keys::escape);
        ASSERT_TRUE(waitUntil([&] { return !alert(); }));
    }
};

TEST_P(UpdatesLookTest, EveryWindowIsInThePalettesColours) {
    answerWithFeed(R"({"version": "1.0"})");
    ASSERT_NO_FATAL_FAILURE(startWithFeed(GetParam()));
    ASSERT_NO_FATAL_FAILURE(checkManually());
    ASSERT_NO_FATAL_FAILURE(expectAlert("up-to-date"));
    ASSERT_NO_FATAL_FAILURE(expectDrawn(settingsWindow(), "card"));
    ASSERT_NO_FATAL_FAILURE(checkAgain(HttpAnswer::with("500 Internal Server Error")));
    ASSERT_NO_FATAL_FAILURE(expectAlert("failed"));
    ASSERT_NO_FATAL_FAILURE(expectOffer("", "offer-plain"));
    ASSERT_NO_FATAL_FAILURE(expectOffer(notes, "offer-notes-and-size"));
    QByteArray many = R"(, "size": 48100000, "notes": {"en": ["First")";
    for (int i = 0; i < 80; ++i)
        many += ", \"One of the many things that have become better\"";
    ASSERT_NO_FATAL_FAILURE(expectOffer(many + "]}", "offer-long"));
}

INSTANTIATE_TEST_SUITE_P(Appearances, UpdatesLookTest, testing::Values(Scheme::light, Scheme::dark),
                         [](const auto& info) { return info.param == Scheme::dark ? "Dark" : "Light"; });

}  // namespace

}  // namespace quillmere::support
