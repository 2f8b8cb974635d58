#pragma once

#include <QObject>
#include <QThread>
#include <QUrl>

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>

namespace quillmere {

/// What came of one fetch.
struct FeedAnswer {
    /// Why there is no answer, in words for the user; absent when there is one.
    std::optional<std::string> transportError;
    /// The HTTP status; 0 without an answer.
    int status = 0;
    /// The body, decompressed; absent when it is empty, cannot be decompressed
    /// or is longer than the session's limit.
    std::optional<std::string> body;
};

/// The one network session of the program: GET requests over HTTP(S) on a
/// thread of its own, without cookies, cache, stored credentials or anything
/// else that would outlive it. The thread, and all that the network needs, is
/// made by the first fetch: a program that never asks pays nothing for it.
///
/// Lives on the main thread. Destroying it drops what is in flight at once,
/// and nothing that was in flight is called any more.
class FeedSession : public QObject {
    Q_OBJECT
public:
    struct Limits {
        std::chrono::milliseconds idle{10'000};    ///< without a sign of life from the server
        std::chrono::milliseconds whole{20'000};   ///< for everything, redirections included
        std::size_t body = std::size_t{1} << 20U;  ///< bytes, after decompression
    };

    /// Takes the answer, on the network's thread. The job that it returns runs
    /// on the main thread. Copies of both may be destroyed on either.
    using Handler = std::function<std::function<void()>(const FeedAnswer&)>;

    explicit FeedSession(const Limits& limits);
    FeedSession();
    ~FeedSession() override;

    /// Starts a GET of `url`. The handler is called exactly once. Redirections
    /// are followed, but never from https to http.
    void fetch(const QUrl& url, const std::string& userAgent, Handler handler);

    /// Whether anything has been fetched yet, and so the thread exists.
    bool isRunning() const { return thread_.isRunning(); }

signals:
    /// Work for the network's thread.
    void posted(std::function<void()> job);

private:
    void start();

    Limits limits_;
    QThread thread_;
    // Lives on the thread and is deleted there when the thread ends.
    QObject* network_ = nullptr;
};

}  // namespace quillmere
