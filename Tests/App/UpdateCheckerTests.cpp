#include "Quillmere/Updates/UpdateChecker.h"

#include "Quillmere/Updates/FeedSession.h"
#include "Tests/Support/FakeBundle.h"
#include "Tests/Support/HttpServer.h"
#include "Tests/Support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QThread>

namespace quillmere {

using namespace support;
using namespace std::chrono_literals;

namespace {

constexpr const char* feedKey = "QuillmereUpdateFeed";
constexpr const char* versionKey = "CFBundleShortVersionString";
constexpr const char* newerFeed = R"({"version": "2.0", "downloadURL": "https://example.org/quillmere.deb"})";

std::optional<UpdateChecker> configuredWith(const std::string& feed, const std::string& version = "1.0") {
    FakeBundle bundle;
    bundle.values = {{feedKey, feed}, {versionKey, version}};
    return UpdateChecker::configured(bundle);
}

class UpdateCheckerTest : public testing::Test {
protected:
    UpdateResult check(HttpAnswer answer, const std::string& version = "1.0",
                       const std::vector<std::string>& languages = {"en"}) {
        server.answer("/feed.json", std::move(answer));
        return check(server.url("/feed.json"), version, languages);
    }

    static UpdateResult check(const std::string& feed, const std::string& version = "1.0",
                              const std::vector<std::string>& languages = {"en"}) {
        const auto checker = configuredWith(feed, version);
        EXPECT_TRUE(checker);
        FeedSession session({.idle = patience, .whole = patience});
        std::optional<UpdateResult> result;
        checker->check(session, languages, [&](UpdateResult value) { result = std::move(value); });
        EXPECT_FALSE(result) << "the completion came before the check was under way";
        EXPECT_TRUE(waitUntil([&] { return result.has_value(); }));
        return result.value_or(UpdateResult::failed("no result"));
    }

    UpdateResult checkFeed(const QByteArray& body, const std::string& version = "1.0",
                           const std::vector<std::string>& languages = {"en"}) {
        return check(HttpAnswer::with("200 OK", body), version, languages);
    }

    HttpServer server;
};

UpdateResult failure(const std::string& message) {
    return UpdateResult::failed(message);
}

}  // namespace

TEST(UpdateChecker, IsConfiguredByTheBundle) {
    const auto checker = configuredWith("https://example.org/feed.json", "1.3.2");
    ASSERT_TRUE(checker);
    EXPECT_EQ(checker->feedURL.text(), "https://example.org/feed.json");
    EXPECT_EQ(checker->current.description(), "1.3.2");
}

TEST(UpdateChecker, BlanksAndTabsAroundTheFeedsAddressAreIgnored) {
    const auto checker = configuredWith(" \t http://example.org/feed.json\t ");
    ASSERT_TRUE(checker);
    EXPECT_EQ(checker->feedURL.text(), "http://example.org/feed.json");
}

TEST(UpdateChecker, ThereIsNoneWithoutAUsableFeed) {
    for (const char* address :
         {"", " ", "\t", "https://example.org/feed.json\n", "\nhttps://example.org/feed.json", "example.org/feed.json",
          "ftp://example.org/feed.json", "file:///etc/passwd", "HTTPS://example.org/feed.json", "https:///feed.json",
          "https://", "https:feed.json", "https://exa mple.org/", "javascript:1", "no address"}) {
        EXPECT_FALSE(configuredWith(address)) << '"' << address << '"';
    }
    EXPECT_FALSE(UpdateChecker::configured(FakeBundle()));
}

TEST(UpdateChecker, WithoutAUsableVersionItTakesTheProgramForVersionZero) {
    FakeBundle bundle;
    bundle.values[feedKey] = "https://example.org/feed.json";
    for (const char* version : {"", "v1", "1.0\n", "one", "1."}) {
        bundle.values[versionKey] = version;
        EXPECT_EQ(UpdateChecker::configured(bundle)->current.description(), "0") << '"' << version << '"';
    }
    bundle.values.erase(versionKey);
    EXPECT_EQ(UpdateChecker::configured(bundle)->current.description(), "0");
}

TEST_F(UpdateCheckerTest, TellsWhoAsks) {
    for (const char* version : {"1.3.2", "2.0-beta", "0"}) {
        checkFeed(newerFeed, version);
        EXPECT_EQ(server.requests().back().headers.at("user-agent"), std::string("Quillmere/") + version);
    }
}

TEST_F(UpdateCheckerTest, AProgramWithoutAVersionIsOfferedEveryOne) {
    FakeBundle bundle;
    bundle.values[feedKey] = server.url("/feed.json");
    server.answer("/feed.json", HttpAnswer::with("200 OK", R"({"version": "0.0.1", "file": "a.deb"})"));
    FeedSession session({.idle = patience, .whole = patience});
    std::optional<UpdateResult> result;
    UpdateChecker::configured(bundle)->check(session, {}, [&](UpdateResult value) { result = std::move(value); });
    ASSERT_TRUE(waitUntil([&] { return result.has_value(); }));
    EXPECT_TRUE(result->offer() != nullptr);
    EXPECT_EQ(server.requests().back().headers.at("user-agent"), "Quillmere/0");
}

TEST_F(UpdateCheckerTest, OffersANewerVersion) {
    const UpdateResult result = checkFeed(R"({"version": "1.1", "file": "quillmere-1.1.deb", "size": 2300000,
                                              "notes": {"en": [" Faster. "], "uk": ["Швидше."]}})");
    ASSERT_TRUE(result.offer() != nullptr);
    const UpdateOffer& offer = *result.offer();
    EXPECT_EQ(offer.version.description(), "1.1");
    EXPECT_EQ(offer.size, 2'300'000);
    EXPECT_EQ(offer.notes, std::vector<std::string>{"Faster."});
    EXPECT_EQ(offer.downloadURL.text(), server.url("/downloads/quillmere-1.1.deb"));
}

TEST_F(UpdateCheckerTest, TheNotesAreInTheUsersFirstLanguage) {
    const QByteArray feed = R"({"version": "2", "file": "a", "notes": {"en": ["Faster."], "uk": ["Швидше."]}})";
    const auto notes = [&](const std::vector<std::string>& languages) {
        return checkFeed(feed, "1.0", languages).offer()->notes.front();
    };
    EXPECT_EQ(notes({"uk-UA", "en"}), "Швидше.");
    EXPECT_EQ(notes({"en-GB", "uk"}), "Faster.");
    EXPECT_EQ(notes({}), "Faster.");
}

TEST_F(UpdateCheckerTest, TheSameOrAnOlderVersionIsUpToDate) {
    for (const char* version : {"1.0", "1.0.0", "0.9", "1.0-beta"}) {
        const UpdateResult result = checkFeed(QByteArray("{\"version\": \"") + version + "\"}");
        EXPECT_EQ(result, UpdateResult::upToDate()) << version;
    }
}

TEST_F(UpdateCheckerTest, AnotherStatusThan200IsNamed) {
    const std::vector<std::pair<const char*, const char*>> cases = {
        {"204 No Content", "The server answered 204."},
        {"304 Not Modified", "The server answered 304."},
        {"404 Not Found", "The server answered 404."},
        {"500 Internal Server Error", "The server answered 500."},
    };
    for (const auto& [status, message] : cases) {
        const bool hasBody = QByteArray(status).front() > '3';
        EXPECT_EQ(check(HttpAnswer::with(status, hasBody ? newerFeed : "")), failure(message));
    }
}

TEST_F(UpdateCheckerTest, ABodyThatIsNoFeedCannotBeRead) {
    for (const QByteArray& body : {QByteArray(""), QByteArray(" "), QByteArray("<html></html>"), QByteArray("[]"),
                                   QByteArray(R"({"version": 2})"), QByteArray(R"({"version": "v2", "file": "a"})"),
                                   QByteArray(newerFeed).chopped(1), QByteArray("\xff\xfe\0\0", 4)}) {
        EXPECT_EQ(checkFeed(body), failure("The update feed could not be read.")) << body.toStdString();
    }
}

TEST_F(UpdateCheckerTest, AFeedBeyondAMebibyteCannotBeRead) {
    const QByteArray feed = newerFeed + QByteArray(1 << 20, ' ');
    EXPECT_EQ(checkFeed(feed), failure("The update feed could not be read."));
}

TEST_F(UpdateCheckerTest, ANewerVersionWithoutAUsableAddressNamesNoDownload) {
    for (const char* feed : {R"({"version": "2.0"})", R"({"version": "2.0", "file": "../a.deb"})",
                             R"({"version": "2.0", "downloadURL": "ftp://example.org/a.deb", "file": "a.deb"})"}) {
        EXPECT_EQ(checkFeed(feed), failure("The update feed names no download.")) << feed;
    }
}

TEST_F(UpdateCheckerTest, AServerThatIsNotThereFailsInTheSystemsWords) {
    std::string address;
    {
        const HttpServer gone;
        address = gone.url("/feed.json");
    }
    EXPECT_EQ(check(address), failure("Connection refused"));
}

TEST_F(UpdateCheckerTest, TheDownloadStandsBesideTheFeedThatWasAskedEvenAfterARedirection) {
    server.answer("/app/feed.json", HttpAnswer::redirection("302 Found", "/elsewhere/feed.json"));
    server.answer("/elsewhere/feed.json", HttpAnswer::with("200 OK", R"({"version": "2.0", "file": "a.deb"})"));
    const UpdateResult result = check(server.url("/app/feed.json"));
    ASSERT_TRUE(result.offer() != nullptr);
    EXPECT_EQ(result.offer()->downloadURL.text(), server.url("/app/downloads/a.deb"));
}

TEST_F(UpdateCheckerTest, CompletesOnceOnTheMainThreadEvenWhenTheCheckerIsGone) {
    server.answer("/feed.json", {{HttpAnswer::Pause{50ms}, HttpAnswer::Send{"HTTP/1.1 200 OK\r\n\r\n{}"}}});
    FeedSession session({.idle = patience, .whole = patience});
    int completions = 0;
    const QThread* thread = nullptr;
    {
        const auto checker = configuredWith(server.url("/feed.json"));
        checker->check(session, {}, [&](const UpdateResult&) {
            ++completions;
            thread = QThread::currentThread();
        });
    }
    ASSERT_TRUE(waitUntil([&] { return completions > 0; }));
    EXPECT_TRUE(waitUntil([&] { return server.openConnections() == 0; }));
    QCoreApplication::processEvents();
    EXPECT_EQ(completions, 1);
    EXPECT_EQ(thread, QCoreApplication::instance()->thread());
}

}  // namespace quillmere
