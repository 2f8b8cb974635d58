#pragma once

#include "Quillmere/Updates/FeedNetwork.h"

#include <QObject>
#include <QThread>
#include <QUrl>

#include <functional>
#include <string>

namespace quillmere {

/// The one network session of the program: GET requests over HTTP(S) on a
/// thread of its own. The thread, and all that the network needs, is made by the
/// first fetch: a program that never asks pays nothing for it.
///
/// Lives on the main thread. Destroying it drops what is in flight at once,
/// and nothing that was in flight is called any more.
class FeedSession : public QObject {
    Q_OBJECT
public:
    /// Takes the answer, on the network's thread. The job that it returns runs
    /// on the main thread. Copies of both may be destroyed on either.
    using Handler = std::function<std::function<void()>(const FeedAnswer&)>;

    /// `plugin` is the file of the `FeedNetworkPlugin`. Without a usable one
    /// every fetch fails, and says why.
    explicit FeedSession(const FeedLimits& limits = {}, QString plugin = standardPlugin());
    ~FeedSession() override;

    /// The plug-in that belongs to this program, by its place beside it.
    static QString standardPlugin();

    /// Starts a GET of `url`. The handler is called exactly once.
    void fetch(const QUrl& url, const std::string& userAgent, Handler handler);

    /// Whether anything has been fetched yet, and so the thread exists.
    bool isRunning() const { return thread_.isRunning(); }

signals:
    /// Work for the network's thread.
    void posted(std::function<void()> job);

private:
    void start();
    FeedNetwork* makeNetwork(std::string& problem);

    FeedLimits limits_;
    QString plugin_;
    QThread thread_;
    // Lives on the thread and is deleted there when the thread ends.
    QObject* worker_ = nullptr;
    // The worker's child, made and used on the thread.
    FeedNetwork* network_ = nullptr;
};

}  // namespace quillmere
