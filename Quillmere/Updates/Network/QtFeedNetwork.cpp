#include "Quillmere/Updates/Network/QtFeedNetwork.h"

#include "Quillmere/Updates/Network/FeedTransfer.h"

#include <QNetworkRequest>
#include <QUrl>

#include <utility>

namespace quillmere {

namespace {

constexpr int mostRedirections = 20;

QNetworkRequest request(const QUrl& url, const std::string& userAgent) {
    QNetworkRequest request(url);
    request.setRawHeader("User-Agent", QByteArray::fromStdString(userAgent));
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    request.setMaximumRedirectsAllowed(mostRedirections);
    return request;
}

}  // namespace

void QtFeedNetwork::get(const QUrl& url, const std::string& userAgent, const FeedLimits& limits, Done done) {
    new FeedTransfer(manager_.get(request(url, userAgent)), limits, std::move(done), this);
}

std::unique_ptr<FeedNetwork> QtFeedNetworkPlugin::make() const {
    return std::make_unique<QtFeedNetwork>();
}

}  // namespace quillmere
