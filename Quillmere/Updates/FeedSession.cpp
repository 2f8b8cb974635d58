#include "Quillmere/Updates/FeedSession.h"

#include "Quillmere/Updates/FeedTransfer.h"

#include <QNetworkAccessManager>
#include <QNetworkRequest>

#include <utility>

namespace quillmere {

namespace {

constexpr int mostRedirections = 20;

QNetworkRequest request(const QUrl& url, const std::string& userAgent) {
    QNetworkRequest request(url);
    request.setRawHeader("User-Agent", QByteArray::fromStdString(userAgent));
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    request.setMaximumRedirectsAllowed(mostRedirections);
    return request;
}

}  // namespace

FeedSession::FeedSession(const Limits& limits) : limits_(limits) {
    thread_.setObjectName("Feed");
}

FeedSession::FeedSession() : FeedSession(Limits{}) {}

FeedSession::~FeedSession() {
    // Jobs that the thread still posts until it has ended go to this object,
    // and are dropped with it.
    thread_.quit();
    thread_.wait();
}

void FeedSession::fetch(const QUrl& url, const std::string& userAgent, Handler handler) {
    start();
    emit posted([this, network = network_, request = request(url, userAgent), handler = std::move(handler)] {
        auto* manager = network->findChild<QNetworkAccessManager*>();
        // Here and not in `start`, because it belongs to the thread that makes it.
        if (manager == nullptr) manager = new QNetworkAccessManager(network);
        const auto done = [this, handler](const FeedAnswer& answer) {
            QMetaObject::invokeMethod(this, handler(answer), Qt::QueuedConnection);
        };
        new FeedTransfer(manager->get(request), limits_, done, network);
    });
}

void FeedSession::start() {
    if (thread_.isRunning()) return;
    network_ = new QObject;
    network_->moveToThread(&thread_);
    connect(&thread_, &QThread::finished, network_, &QObject::deleteLater);
    connect(this, &FeedSession::posted, network_, [](const std::function<void()>& job) { job(); });
    thread_.start();
}

}  // namespace quillmere
