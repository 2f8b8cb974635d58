#include "Quillmere/Updates/Network/FeedTransfer.h"

#include <QNetworkReply>
#include <QVariant>

#include <utility>

namespace quillmere {

namespace {

constexpr qint64 chunk = qint64{16} * 1024;

/// The first status that Qt reports as an error of the transfer although an
/// answer has arrived.
constexpr int firstErrorStatus = 400;

}  // namespace

// Qt's own transfer time-out is not used: it ends the reply as "Operation
// canceled", which tells the user nothing.
FeedTransfer::FeedTransfer(QNetworkReply* reply, const FeedLimits& limits, Done done, QObject* parent)
    : QObject(parent), reply_(reply), limits_(limits), done_(std::move(done)) {
    reply_->setParent(this);
    // Without a bound Qt would store a body faster than it is read here.
    reply_->setReadBufferSize(static_cast<qint64>(limits_.body));

    for (QTimer* timer : {&idle_, &whole_}) {
        timer->setSingleShot(true);
        timer->setTimerType(Qt::PreciseTimer);
        connect(timer, &QTimer::timeout, this, &FeedTransfer::timeOut);
    }
    idle_.setInterval(limits_.idle);
    whole_.setInterval(limits_.whole);

    const auto signOfLife = [this] { idle_.start(); };
    connect(reply_, &QNetworkReply::encrypted, this, signOfLife);
    connect(reply_, &QNetworkReply::requestSent, this, signOfLife);
    connect(reply_, &QNetworkReply::redirected, this, signOfLife);
    connect(reply_, &QNetworkReply::metaDataChanged, this, signOfLife);
    connect(reply_, &QNetworkReply::readyRead, this, &FeedTransfer::readAvailable);
    connect(reply_, &QNetworkReply::finished, this, &FeedTransfer::replyFinished);
    idle_.start();
    whole_.start();
}

void FeedTransfer::readAvailable() {
    idle_.start();
    while (body_.size() <= limits_.body) {
        const QByteArray bytes = reply_->read(chunk);
        if (bytes.isEmpty()) return;
        body_.append(bytes.constData(), static_cast<std::size_t>(bytes.size()));
    }
    end({.transportError = std::nullopt, .status = status(), .body = std::nullopt});
}

void FeedTransfer::replyFinished() {
    readAvailable();
    if (!done_) return;
    const QNetworkReply::NetworkError error = reply_->error();
    // A body that does not decompress arrived whole; its own error, but not one
    // of the transport.
    const bool isUndecodable = error == QNetworkReply::UnknownContentError && status() < firstErrorStatus;
    if (error != QNetworkReply::NoError && status() < firstErrorStatus && !isUndecodable) {
        end({.transportError = reply_->errorString().toStdString(), .status = 0, .body = std::nullopt});
        return;
    }
    if (isCutShort()) {
        end({.transportError = "Connection closed", .status = 0, .body = std::nullopt});
        return;
    }
    FeedAnswer answer{.transportError = std::nullopt, .status = status(), .body = std::nullopt};
    if (!isUndecodable && !body_.empty()) answer.body = std::move(body_);
    end(answer);
}

void FeedTransfer::timeOut() {
    end({.transportError = "The request timed out.", .status = 0, .body = std::nullopt});
}

void FeedTransfer::end(const FeedAnswer& answer) {
    idle_.stop();
    whole_.stop();
    // Aborting reports an end of its own.
    reply_->disconnect(this);
    reply_->abort();
    deleteLater();
    std::exchange(done_, nullptr)(answer);
}

// Qt 6.4 reports a connection that was lost in the middle of a body as an error
// only now and then, depending on which of its threads is first.
bool FeedTransfer::isCutShort() const {
    constexpr int okay = 200;  // others may state the length of a body that they do not send
    const QVariant length = reply_->header(QNetworkRequest::ContentLengthHeader);
    return status() == okay && length.isValid() && body_.size() < length.toULongLong();
}

int FeedTransfer::status() const {
    return reply_->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
}

}  // namespace quillmere
