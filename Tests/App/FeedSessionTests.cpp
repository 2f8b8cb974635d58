#include "Quillmere/Updates/FeedSession.h"

#include "Tests/Support/HttpServer.h"
#include "Tests/Support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QProcess>

#include <atomic>
#include <memory>
#include <optional>

namespace quillmere {

using namespace support;
using namespace std::chrono_literals;

namespace {

/// Far longer than anything takes that must not time out.
constexpr FeedLimits patient{.idle = patience, .whole = patience, .body = std::size_t{1} << 20U};

FeedAnswer fetch(FeedSession& session, const std::string& url, const std::string& userAgent = "Quillmere/1.0") {
    std::optional<FeedAnswer> result;
    session.fetch(QUrl(QString::fromStdString(url)), userAgent,
                  [&result](const FeedAnswer& answer) { return [&result, answer] { result = answer; }; });
    EXPECT_TRUE(waitUntil([&] { return result.has_value(); }));
    return result.value_or(FeedAnswer{});
}

FeedAnswer fetch(const HttpServer& server, const std::string& path) {
    FeedSession session(patient);
    return fetch(session, server.url(path));
}

QByteArray gzipped(const QByteArray& bytes) {
    QProcess gzip;
    gzip.start("gzip", {"-c"});
    gzip.write(bytes);
    gzip.closeWriteChannel();
    EXPECT_TRUE(gzip.waitForFinished());
    return gzip.readAllStandardOutput();
}

HttpAnswer compressed(const QByteArray& body) {
    return HttpAnswer::with("200 OK", body, {"Content-Encoding: gzip"});
}

const QByteArray headerWithoutLength = "HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n";

}  // namespace

TEST(FeedSession, GivesTheBodyOfAnAnswer) {
    HttpServer server;
    server.answer("/feed", HttpAnswer::with("200 OK", "{\"version\": \"1.0\"}"));
    const FeedAnswer answer = fetch(server, "/feed");
    EXPECT_EQ(answer.transportError, std::nullopt);
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, "{\"version\": \"1.0\"}");
}

TEST(FeedSession, AsksWithAPlainGetThatIdentifiesNobody) {
    HttpServer server;
    server.answer("/feed", HttpAnswer::with("200 OK", "x"));
    FeedSession session(patient);
    fetch(session, server.url("/feed?channel=a%20b"), "Quillmere/1.3.2");
    const auto requests = server.requests();
    ASSERT_EQ(requests.size(), 1U);
    EXPECT_EQ(requests[0].method, "GET");
    EXPECT_EQ(requests[0].path, "/feed?channel=a%20b");
    EXPECT_EQ(requests[0].headers.at("user-agent"), "Quillmere/1.3.2");
    for (const char* header : {"cookie", "authorization", "referer", "if-modified-since", "if-none-match"}) {
        EXPECT_FALSE(requests[0].headers.contains(header)) << header;
    }
}

TEST(FeedSession, NothingThatAnAnswerAsksToBeKeptIsSentBack) {
    HttpServer server;
    server.answer("/feed", HttpAnswer::with("200 OK", "x",
                                            {"Set-Cookie: id=1; Path=/", "ETag: \"a\"", "Cache-Control: max-age=9999",
                                             "Last-Modified: Mon, 01 Jan 2024 00:00:00 GMT"}));
    FeedSession session(patient);
    fetch(session, server.url("/feed"));
    fetch(session, server.url("/feed"));
    const auto requests = server.requests();
    ASSERT_EQ(requests.size(), 2U);
    for (const char* header : {"cookie", "if-modified-since", "if-none-match"}) {
        EXPECT_FALSE(requests[1].headers.contains(header)) << header;
    }
}

TEST(FeedSession, TellsEveryStatusAsItIs) {
    HttpServer server;
    const std::vector<std::pair<const char*, int>> cases = {
        {"204 No Content", 204},
        {"206 Partial Content", 206},
        {"304 Not Modified", 304},
        {"400 Bad Request", 400},
        {"401 Unauthorized", 401},
        {"403 Forbidden", 403},
        {"404 Not Found", 404},
        {"410 Gone", 410},
        {"418 I'm a teapot", 418},
        {"429 Too Many Requests", 429},
        {"500 Internal Server Error", 500},
        {"503 Service Unavailable", 503},
    };
    for (const auto& [status, code] : cases) {
        SCOPED_TRACE(status);
        server.answer("/feed", HttpAnswer::with(status, code == 204 || code == 304 ? "" : "a body"));
        const FeedAnswer answer = fetch(server, "/feed");
        EXPECT_EQ(answer.transportError, std::nullopt);
        EXPECT_EQ(answer.status, code);
    }
}

TEST(FeedSession, ARedirectionIsFollowed) {
    for (const char* status :
         {"301 Moved Permanently", "302 Found", "303 See Other", "307 Temporary Redirect", "308 Permanent Redirect"}) {
        SCOPED_TRACE(status);
        HttpServer server;
        server.answer("/old", HttpAnswer::redirection(status, "/new"));
        server.answer("/new", HttpAnswer::with("200 OK", "new"));
        const FeedAnswer answer = fetch(server, "/old");
        EXPECT_EQ(answer.status, 200);
        EXPECT_EQ(answer.body, "new");
        const auto requests = server.requests();
        ASSERT_EQ(requests.size(), 2U);
        EXPECT_EQ(requests[1].headers.at("user-agent"), "Quillmere/1.0");
    }
}

TEST(FeedSession, ACircleOfRedirectionsFails) {
    HttpServer server;
    server.answer("/feed", HttpAnswer::redirection("302 Found", "/feed"));
    EXPECT_NE(fetch(server, "/feed").transportError.value_or(""), "");
}

TEST(FeedSession, ARedirectionToAnythingButTheWebFails) {
    for (const char* location : {"file:///etc/passwd", "ftp://127.0.0.1/feed", "data:,{}", "javascript:1"}) {
        SCOPED_TRACE(location);
        HttpServer server;
        server.answer("/feed", HttpAnswer::redirection("302 Found", location));
        const FeedAnswer answer = fetch(server, "/feed");
        EXPECT_NE(answer.transportError.value_or(""), "");
        EXPECT_EQ(answer.body, std::nullopt);
    }
}

TEST(FeedSession, ARedirectionThatNamesNoPlaceIsNoAnswerToReadAFeedFrom) {
    HttpServer server;
    server.answer("/feed", HttpAnswer::with("302 Found", "x", {"Content-Type: text/html"}));
    const FeedAnswer answer = fetch(server, "/feed");
    EXPECT_TRUE(answer.transportError || answer.status == 302);
    EXPECT_NE(answer.status, 200);
}

TEST(FeedSession, HttpsIsReadWhenItsCertificateIsTrusted) {
    const ThrowAwayCertificate certificate;
    HttpServer server(certificate);
    server.answer("/feed", HttpAnswer::with("200 OK", "secret"));
    const TrustedCertificate trust(certificate);
    EXPECT_EQ(fetch(server, "/feed").body, "secret");
}

TEST(FeedSession, HttpsFailsWhenItsCertificateIsNotTrusted) {
    const ThrowAwayCertificate certificate;
    HttpServer server(certificate);
    server.answer("/feed", HttpAnswer::with("200 OK", "secret"));
    const FeedAnswer answer = fetch(server, "/feed");
    EXPECT_NE(answer.transportError.value_or(""), "");
    EXPECT_EQ(answer.body, std::nullopt);
    EXPECT_TRUE(server.requests().empty());
}

TEST(FeedSession, ARedirectionFromHttpsToHttpFails) {
    const ThrowAwayCertificate certificate;
    HttpServer secure(certificate);
    HttpServer plain;
    secure.answer("/feed", HttpAnswer::redirection("301 Moved Permanently", plain.url("/feed")));
    plain.answer("/feed", HttpAnswer::with("200 OK", "x"));
    const TrustedCertificate trust(certificate);
    EXPECT_NE(fetch(secure, "/feed").transportError.value_or(""), "");
    EXPECT_TRUE(plain.requests().empty());
}

TEST(FeedSession, ARedirectionFromHttpToHttpsIsFollowed) {
    const ThrowAwayCertificate certificate;
    HttpServer secure(certificate);
    HttpServer plain;
    plain.answer("/feed", HttpAnswer::redirection("301 Moved Permanently", secure.url("/feed")));
    secure.answer("/feed", HttpAnswer::with("200 OK", "secret"));
    const TrustedCertificate trust(certificate);
    EXPECT_EQ(fetch(plain, "/feed").body, "secret");
}

TEST(FeedSession, AnEmptyBodyIsNoBody) {
    HttpServer server;
    server.answer("/feed", HttpAnswer::with("200 OK"));
    const FeedAnswer answer = fetch(server, "/feed");
    EXPECT_EQ(answer.transportError, std::nullopt);
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, std::nullopt);
}

TEST(FeedSession, TheTypeThatTheServerNamesDoesNotMatter) {
    HttpServer server;
    server.answer("/feed", HttpAnswer::with("200 OK", "{}", {"Content-Type: image/png"}));
    EXPECT_EQ(fetch(server, "/feed").body, "{}");
}

TEST(FeedSession, ABodyWithoutALengthEndsWithTheConnection) {
    HttpServer server;
    server.answer("/feed", {{HttpAnswer::Send{headerWithoutLength + "{}"}}});
    EXPECT_EQ(fetch(server, "/feed").body, "{}");
}

TEST(FeedSession, AChunkedBodyIsPutTogether) {
    HttpServer server;
    server.answer("/feed", {{HttpAnswer::Send{"HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n1\r\n{\r\n"},
                             HttpAnswer::Pause{20ms}, HttpAnswer::Send{"1\r\n}\r\n0\r\n\r\n"}}});
    EXPECT_EQ(fetch(server, "/feed").body, "{}");
}

TEST(FeedSession, ABodyShorterThanItsLengthFails) {
    HttpServer server;
    server.answer("/feed", {{HttpAnswer::Send{"HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n{}"}}});
    EXPECT_NE(fetch(server, "/feed").transportError.value_or(""), "");
}

TEST(FeedSession, ACompressedBodyIsDecompressed) {
    HttpServer server;
    server.answer("/feed", compressed(gzipped("{\"version\": \"1.0\"}")));
    EXPECT_EQ(fetch(server, "/feed").body, "{\"version\": \"1.0\"}");
}

TEST(FeedSession, ABodyThatCannotBeDecompressedIsNoBody) {
    HttpServer server;
    server.answer("/feed", compressed("this is not compressed at all"));
    const FeedAnswer answer = fetch(server, "/feed");
    EXPECT_EQ(answer.transportError, std::nullopt);
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, std::nullopt);
}

TEST(FeedSession, ABodyUpToTheLimitIsReadAndALongerOneIsNone) {
    constexpr qsizetype limit = 1 << 20;
    HttpServer server;
    server.answer("/within", HttpAnswer::with("200 OK", QByteArray(limit, 'x')));
    server.answer("/beyond", HttpAnswer::with("200 OK", QByteArray(limit + 1, 'x')));
    EXPECT_EQ(fetch(server, "/within").body.value_or("").size(), std::size_t{limit});
    const FeedAnswer beyond = fetch(server, "/beyond");
    EXPECT_EQ(beyond.transportError, std::nullopt);
    EXPECT_EQ(beyond.status, 200);
    EXPECT_EQ(beyond.body, std::nullopt);
}

TEST(FeedSession, TheLimitHoldsForTheDecompressedBody) {
    HttpServer server;
    const QByteArray bomb = gzipped(QByteArray(64 << 20, '\0'));
    ASSERT_LT(bomb.size(), 1 << 20);
    server.answer("/feed", compressed(bomb));
    const FeedAnswer answer = fetch(server, "/feed");
    EXPECT_EQ(answer.transportError, std::nullopt);
    EXPECT_EQ(answer.body, std::nullopt);
}

TEST(FeedSession, ABodyWithoutAnEndIsGivenUpAtTheLimit) {
    HttpServer server;
    server.answer("/feed", {{HttpAnswer::Send{headerWithoutLength}, HttpAnswer::Endless{QByteArray(4096, 'x')}}});
    FeedSession session(patient);
    const FeedAnswer answer = fetch(session, server.url("/feed"));
    EXPECT_EQ(answer.transportError, std::nullopt);
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, std::nullopt);
    EXPECT_TRUE(waitUntil([&] { return server.openConnections() == 0; })) << "the rest is still being fetched";
}

TEST(FeedSession, AServerThatDoesNotAnswerIsGivenUpAfterTheIdleLimit) {
    HttpServer server;
    server.answer("/silent", {{HttpAnswer::Silence{}}});
    server.answer("/stuck", {{HttpAnswer::Send{headerWithoutLength + "{"}, HttpAnswer::Silence{}}});
    for (const char* path : {"/silent", "/stuck"}) {
        SCOPED_TRACE(path);
        FeedSession session({.idle = 100ms, .whole = patience, .body = 1024});
        const FeedAnswer answer = fetch(session, server.url(path));
        EXPECT_EQ(answer.transportError, "The request timed out.");
        EXPECT_TRUE(waitUntil([&] { return server.openConnections() == 0; }));
    }
}

TEST(FeedSession, ABodyThatComesInDropsLastsLongerThanTheIdleLimit) {
    HttpServer server;
    server.answer("/feed", {{HttpAnswer::Send{headerWithoutLength}, HttpAnswer::Drip{QByteArray(12, 'x'), 250ms}}});
    FeedSession session({.idle = 2s, .whole = 60s, .body = 1024});
    EXPECT_EQ(fetch(session, server.url("/feed")).body, "xxxxxxxxxxxx");
}

TEST(FeedSession, ABodyThatComesInDropsIsGivenUpAfterTheWholeLimit) {
    HttpServer server;
    server.answer("/feed", {{HttpAnswer::Send{headerWithoutLength}, HttpAnswer::Drip{QByteArray(4000, 'x'), 10ms}}});
    FeedSession session({.idle = patience, .whole = 300ms, .body = 1 << 20});
    EXPECT_EQ(fetch(session, server.url("/feed")).transportError, "The request timed out.");
}

TEST(FeedSession, ACircleOfSlowRedirectionsIsGivenUpAfterTheWholeLimit) {
    HttpServer server;
    HttpAnswer slow = HttpAnswer::redirection("302 Found", "/feed");
    slow.steps.insert(slow.steps.begin(), HttpAnswer::Pause{100ms});
    server.answer("/feed", slow);
    FeedSession session({.idle = patience, .whole = 500ms, .body = 1024});
    EXPECT_EQ(fetch(session, server.url("/feed")).transportError, "The request timed out.");
}

TEST(FeedSession, AConnectionThatIsResetFails) {
    HttpServer server;
    server.answer("/at-once", {{HttpAnswer::Reset{}}});
    server.answer("/later", {{HttpAnswer::Send{"HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{"},
                              HttpAnswer::Pause{20ms}, HttpAnswer::Reset{}}});
    for (const char* path : {"/at-once", "/later"}) {
        SCOPED_TRACE(path);
        EXPECT_NE(fetch(server, path).transportError.value_or(""), "");
    }
}

TEST(FeedSession, AServerThatIsNotThereFails) {
    std::string url;
    {
        const HttpServer gone;
        url = gone.url("/feed");
    }
    FeedSession session(patient);
    EXPECT_NE(fetch(session, url).transportError.value_or(""), "");
}

TEST(FeedSession, AnAnswerThatIsNoHttpFails) {
    HttpServer server;
    server.answer("/feed", {{HttpAnswer::Send{"{\"version\": \"1.0\"}\n"}}});
    const FeedAnswer answer = fetch(server, "/feed");
    EXPECT_TRUE(answer.transportError) << answer.status;
}

TEST(FeedSession, AnAddressThatIsNoneFails) {
    FeedSession session(patient);
    EXPECT_NE(fetch(session, "").transportError.value_or(""), "");
    EXPECT_NE(fetch(session, "http://").transportError.value_or(""), "");
}

TEST(FeedSession, HandlesTheAnswerOffTheMainThreadAndTheRestOnIt) {
    HttpServer server;
    server.answer("/feed", HttpAnswer::with("200 OK", "x"));
    FeedSession session(patient);
    QThread* handled = nullptr;
    QThread* completed = nullptr;
    session.fetch(QUrl(QString::fromStdString(server.url("/feed"))), "", [&](const FeedAnswer&) {
        handled = QThread::currentThread();
        return [&] { completed = QThread::currentThread(); };
    });
    EXPECT_TRUE(waitUntil([&] { return completed != nullptr; }));
    EXPECT_EQ(completed, QThread::currentThread());
    EXPECT_NE(handled, QThread::currentThread());
}

TEST(FeedSession, AnswersEveryFetchOnceWhenManyAreUnderWay) {
    HttpServer server;
    server.answer("/feed", HttpAnswer::with("200 OK", "x"));
    FeedSession session(patient);
    int completions = 0;
    constexpr int fetches = 30;
    for (int i = 0; i < fetches; ++i) {
        session.fetch(QUrl(QString::fromStdString(server.url("/feed"))), "",
                      [&](const FeedAnswer&) { return [&] { ++completions; }; });
    }
    EXPECT_TRUE(waitUntil([&] { return completions >= fetches; }));
    QCoreApplication::processEvents();
    EXPECT_EQ(completions, fetches);
}

TEST(FeedSession, MakesNoThreadBeforeTheFirstFetch) {
    const FeedSession session;
    EXPECT_FALSE(session.isRunning());
}

TEST(FeedSession, AProgramThatWasInstalledWithoutTheNetworkPartSaysSo) {
    FeedSession session({}, "/nowhere/feednetwork");
    for (int attempt = 0; attempt < 2; ++attempt) {
        const FeedAnswer answer = fetch(session, "http://127.0.0.1:1/feed");
        EXPECT_NE(answer.transportError.value_or(""), "");
        EXPECT_EQ(answer.status, 0);
    }
}

TEST(FeedSession, DestroyingItDropsWhatIsUnderWayAtOnce) {
    HttpServer server;
    server.answer("/feed", {{HttpAnswer::Send{headerWithoutLength + "{"}, HttpAnswer::Silence{}}});
    auto session = std::make_unique<FeedSession>(FeedLimits{.idle = 30s, .whole = 30s, .body = 1024});
    bool isCompleted = false;
    session->fetch(QUrl(QString::fromStdString(server.url("/feed"))), "",
                   [&](const FeedAnswer&) { return [&] { isCompleted = true; }; });
    ASSERT_TRUE(waitUntil([&] { return !server.requests().empty(); }));

    const auto begin = std::chrono::steady_clock::now();
    session.reset();
    // Only the limits, which it must not wait for, take that long.
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 15s);
    EXPECT_TRUE(waitUntil([&] { return server.openConnections() == 0; }));
    EXPECT_FALSE(isCompleted);
}

TEST(FeedSession, AJobThatIsAlreadyPostedGoesWithIt) {
    HttpServer server;
    server.answer("/feed", HttpAnswer::with("200 OK", "x"));
    auto session = std::make_unique<FeedSession>(patient);
    std::atomic<bool> isHandled = false;
    bool isCompleted = false;
    session->fetch(QUrl(QString::fromStdString(server.url("/feed"))), "", [&](const FeedAnswer&) {
        isHandled = true;
        return [&] { isCompleted = true; };
    });
    // No event loop here: the job stays posted.
    while (!isHandled) {
        QThread::yieldCurrentThread();
    }
    session.reset();
    QCoreApplication::processEvents();
    EXPECT_FALSE(isCompleted);
}

}  // namespace quillmere
