#include "Quillmere/Updates/FeedSession.h"
#include "Quillmere/Updates/UpdateChecker.h"
#include "Tests/Support/FakeBundle.h"
#include "Tests/Support/HttpServer.h"
#include "Tests/Support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QProcess>

namespace quillmere::support {

namespace {

using namespace std::chrono_literals;

const QByteArray newerFeed = R"({"version": "2.0", "file": "quillmere.deb"})";
const QByteArray header = "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\n";
constexpr const char* unreadable = "The update feed could not be read.";

/// Checks against a real server, within the program's own limits.
class UpdateFeedTest : public testing::Test {
protected:
    /// What a check finds, in words: "offer 2.0", "up to date", or the message.
    static std::string check(const std::string& feed) {
        FakeBundle bundle;
        bundle.values = {{"QuillmereUpdateFeed", feed}, {"CFBundleShortVersionString", "1.0"}};
        const auto checker = UpdateChecker::configured(bundle);
        FeedSession session;
        std::optional<UpdateResult> result;
        checker->check(session, {"en"}, [&](UpdateResult value) { result = std::move(value); });
        if (!waitUntil([&] { return result.has_value(); }, 40s)) return "nothing";
        return describe(*result);
    }

    std::string checkAnswer(HttpAnswer answer) {
        server.answer("/feed.json", std::move(answer));
        return check(server.url("/feed.json"));
    }

    static std::string describe(const UpdateResult& result) {
        if (const auto* offer = result.offer()) return "offer " + offer->version.description();
        if (const auto* message = result.failure()) return *message;
        return "up to date";
    }

    static QByteArray gzipped(const QByteArray& bytes) {
        QProcess gzip;
        gzip.start("gzip", {"-c"});
        gzip.write(bytes);
        gzip.closeWriteChannel();
        EXPECT_TRUE(gzip.waitForFinished());
        return gzip.readAllStandardOutput();
    }

    HttpServer server;
};

TEST_F(UpdateFeedTest, EveryAnswerHasItsMeaning) {
    server.answer("/elsewhere.json", HttpAnswer::with("200 OK", newerFeed));
    const std::vector<std::pair<HttpAnswer, const char*>> cases = {
        {HttpAnswer::with("200 OK", newerFeed), "offer 2.0"},
        {HttpAnswer::with("200 OK", R"({"version": "1.0"})"), "up to date"},
        {HttpAnswer::with("200 OK", R"({"version": "2.0"})"), "The update feed names no download."},
        {HttpAnswer::with("200 OK", newerFeed, {"Content-Type: image/png"}), "offer 2.0"},
        {HttpAnswer::with("200 OK", gzipped(newerFeed), {"Content-Encoding: gzip"}), "offer 2.0"},
        {HttpAnswer::with("200 OK", "<html>Log in first</html>", {"Content-Type: text/html"}), unreadable},
        {HttpAnswer::with("200 OK"), unreadable},
        {{{HttpAnswer::Send{header + "\r\n"}, HttpAnswer::Endless{QByteArray(8192, ' ')}}}, unreadable},
        {HttpAnswer::with("204 No Content"), "The server answered 204."},
        {HttpAnswer::redirection("301 Moved Permanently", "/elsewhere.json"), "offer 2.0"},
        {HttpAnswer::with("304 Not Modified"), "The server answered 304."},
        {HttpAnswer::with("404 Not Found", "<p>Nothing here.</p>"), "The server answered 404."},
        {HttpAnswer::with("500 Internal Server Error", "<p>Oh no.</p>"), "The server answered 500."},
        {{{HttpAnswer::Reset{}}}, "Connection closed"},
        {{{HttpAnswer::Send{header + "Content-Length: 100\r\n\r\n{"}, HttpAnswer::Pause{20ms}, HttpAnswer::Reset{}}},
         "Connection closed"},
    };
    for (std::size_t i = 0; i < cases.size(); ++i) {
        EXPECT_EQ(checkAnswer(cases[i].first), cases[i].second) << "case " << i;
    }
}

TEST_F(UpdateFeedTest, HttpsNeedsATrustedCertificateAndIsNeverLeftForHttp) {
    const ThrowAwayCertificate certificate;
    HttpServer secure(certificate);
    secure.answer("/feed.json", HttpAnswer::with("200 OK", newerFeed));
    secure.answer("/moved.json", HttpAnswer::redirection("301 Moved Permanently", server.url("/feed.json")));
    server.answer("/feed.json", HttpAnswer::with("200 OK", newerFeed));

    EXPECT_NE(check(secure.url("/feed.json")), "offer 2.0");
    EXPECT_TRUE(secure.requests().empty());

    const TrustedCertificate trust(certificate);
    EXPECT_EQ(check(secure.url("/feed.json")), "offer 2.0");
    EXPECT_NE(check(secure.url("/moved.json")), "offer 2.0");
    EXPECT_TRUE(server.requests().empty());
}

TEST_F(UpdateFeedTest, AServerThatIsSilentIsGivenUpAfterTenSeconds) {
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(checkAnswer({{HttpAnswer::Send{"HTTP/1.1 200"}, HttpAnswer::Silence{}}}), "The request timed out.");
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 10s);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 20s) << "that was the other limit";
}

TEST_F(UpdateFeedTest, ABodyOfAByteASecondIsGivenUpAfterTwentySeconds) {
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(checkAnswer({{HttpAnswer::Send{header + "\r\n"}, HttpAnswer::Drip{newerFeed + QByteArray(40, ' '), 1s}}}),
              "The request timed out.");
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 20s);
}

}  // namespace

}  // namespace quillmere::support
