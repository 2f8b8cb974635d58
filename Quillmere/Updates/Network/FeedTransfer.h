#pragma once

#include "Quillmere/Updates/FeedNetwork.h"

#include <QObject>
#include <QTimer>

#include <string>

class QNetworkReply;

namespace quillmere {

/// One GET under way: reads the body up to its bound, watches the time, and
/// tells what came of it. Lives on the network's thread.
class FeedTransfer : public QObject {
    Q_OBJECT
public:
    using Done = FeedNetwork::Done;

    /// Takes the reply over. `done` is called exactly once, after which the
    /// transfer deletes itself; a transfer that is destroyed before calls
    /// nothing.
    FeedTransfer(QNetworkReply* reply, const FeedLimits& limits, Done done, QObject* parent);

private:
    void readAvailable();
    void replyFinished();
    void timeOut();
    void end(const FeedAnswer& answer);
    bool isCutShort() const;
    int status() const;

    QNetworkReply* reply_;
    FeedLimits limits_;
    Done done_;
    QTimer idle_;
    QTimer whole_;
    std::string body_;
};

}  // namespace quillmere
