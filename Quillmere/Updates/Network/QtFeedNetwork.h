#pragma once

#include "Quillmere/Updates/FeedNetwork.h"

#include <QNetworkAccessManager>

namespace quillmere {

/// Fetches with Qt's network classes, without cookies, cache, stored
/// credentials or anything else that would outlive it.
class QtFeedNetwork final : public FeedNetwork {
    Q_OBJECT
public:
    void get(const QUrl& url, const std::string& userAgent, const FeedLimits& limits, Done done) override;

private:
    QNetworkAccessManager manager_;
};

/// The plug-in's root object.
class QtFeedNetworkPlugin final : public QObject, public FeedNetworkPlugin {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "quillmere.FeedNetworkPlugin")
    Q_INTERFACES(quillmere::FeedNetworkPlugin)
public:
    std::unique_ptr<FeedNetwork> make() const override;
};

}  // namespace quillmere
