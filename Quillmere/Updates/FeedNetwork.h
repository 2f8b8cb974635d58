#pragma once

#include <QObject>

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>

class QUrl;

namespace quillmere {

/// What came of one fetch.
struct FeedAnswer {
    /// Why there is no answer, in words for the user; absent when there is one.
    std::optional<std::string> transportError;
    /// The HTTP status; 0 without an answer.
    int status = 0;
    /// The body, decompressed; absent when it is empty, cannot be decompressed
    /// or is longer than the limit.
    std::optional<std::string> body;
};

/// The bounds of one fetch.
struct FeedLimits {
    std::chrono::milliseconds idle{10'000};    ///< without a sign of life from the server
    std::chrono::milliseconds whole{20'000};   ///< for everything, redirections included
    std::size_t body = std::size_t{1} << 20U;  ///< bytes, after decompression
};

/// Does the fetches of a session. Lives on the session's thread; what is in
/// flight when it is destroyed is dropped, and nobody is told.
class FeedNetwork : public QObject {
public:
    using Done = std::function<void(const FeedAnswer&)>;

    /// Starts a GET; `done` is called exactly once, later. Redirections are
    /// followed, but never from https to http.
    virtual void get(const QUrl& url, const std::string& userAgent, const FeedLimits& limits, Done done) = 0;
};

/// The root object of the plug-in that brings a `FeedNetwork`. Apart from the
/// program, because the libraries of the network take a megabyte and some
/// milliseconds of every start, and most days need them once or never.
class FeedNetworkPlugin {
public:
    FeedNetworkPlugin() = default;
    FeedNetworkPlugin(const FeedNetworkPlugin&) = delete;
    FeedNetworkPlugin& operator=(const FeedNetworkPlugin&) = delete;
    virtual ~FeedNetworkPlugin() = default;

    /// For the calling thread.
    virtual std::unique_ptr<FeedNetwork> make() const = 0;
};

}  // namespace quillmere

Q_DECLARE_INTERFACE(quillmere::FeedNetworkPlugin, "quillmere.FeedNetworkPlugin")
