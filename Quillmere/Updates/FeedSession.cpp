#include "Quillmere/Updates/FeedSession.h"

#include <QCoreApplication>
#include <QDir>
#include <QPluginLoader>

#include <utility>

namespace quillmere {

FeedSession::FeedSession(const FeedLimits& limits, QString plugin) : limits_(limits), plugin_(std::move(plugin)) {
    thread_.setObjectName("Feed");
}

FeedSession::~FeedSession() {
    // Jobs that the thread still posts until it has ended go to this object,
    // and are dropped with it.
    thread_.quit();
    thread_.wait();
}

QString FeedSession::standardPlugin() {
    return QDir::cleanPath(QCoreApplication::applicationDirPath()
                           + QStringLiteral("/" QUILLMERE_PLUGINS_FROM_PROGRAM "/feednetwork"));
}

void FeedSession::fetch(const QUrl& url, const std::string& userAgent, Handler handler) {
    start();
    emit posted([this, url, userAgent, handler = std::move(handler)] {
        const auto done = [this, handler](const FeedAnswer& answer) {
            QMetaObject::invokeMethod(this, handler(answer), Qt::QueuedConnection);
        };
        std::string problem;
        if (network_ == nullptr) network_ = makeNetwork(problem);
        if (network_ == nullptr) return done({.transportError = problem, .status = 0, .body = std::nullopt});
        network_->get(url, userAgent, limits_, done);
    });
}

/// On the thread that it is for; null, and why, without a usable plug-in.
FeedNetwork* FeedSession::makeNetwork(std::string& problem) {
    QPluginLoader loader(plugin_);
    const auto* plugin = qobject_cast<FeedNetworkPlugin*>(loader.instance());
    if (plugin == nullptr) {
        problem = loader.errorString().toStdString();
        return nullptr;
    }
    FeedNetwork* network = plugin->make().release();
    network->setParent(worker_);
    return network;
}

void FeedSession::start() {
    if (thread_.isRunning()) return;
    worker_ = new QObject;
    worker_->moveToThread(&thread_);
    connect(&thread_, &QThread::finished, worker_, &QObject::deleteLater);
    connect(this, &FeedSession::posted, worker_, [](const std::function<void()>& job) { job(); });
    thread_.start();
}

}  // namespace quillmere
