#include "Tests/Support/HttpConnection.h"

#include <QTcpSocket>

#include <sys/socket.h>

#include <variant>

namespace quillmere::support {

namespace {

constexpr int longestConnection = 60'000;
constexpr qint64 endlessBacklog = qint64{256} * 1024;

HttpRequest parse(const QByteArray& head) {
    const QList<QByteArray> lines = head.split('\n');
    const QList<QByteArray> words = lines.front().simplified().split(' ');
    HttpRequest request{words.value(0).toStdString(), words.value(1).toStdString(), {}};
    for (const QByteArray& line : lines.mid(1)) {
        const qsizetype colon = line.indexOf(':');
        if (colon < 0) continue;
        request.headers[line.first(colon).toLower().toStdString()] = line.sliced(colon + 1).trimmed().toStdString();
    }
    return request;
}

}  // namespace

HttpConnection::HttpConnection(QTcpSocket& socket, HttpScript& script)
    : QObject(&socket), socket_(socket), script_(script), timer_(this) {
    script_.connectionOpened();
    timer_.setSingleShot(true);
    connect(&timer_, &QTimer::timeout, this, &HttpConnection::next);
    connect(&socket_, &QTcpSocket::readyRead, this, &HttpConnection::read);
    connect(&socket_, &QTcpSocket::bytesWritten, this, [this] {
        const bool isEndless =
            step_ < answer_.steps.size() && std::holds_alternative<HttpAnswer::Endless>(answer_.steps[step_]);
        if (isEndless) next();
    });
    connect(&socket_, &QTcpSocket::disconnected, &socket_, &QObject::deleteLater);
    QTimer::singleShot(longestConnection, &socket_, [this] { socket_.abort(); });
    read();
}

HttpConnection::~HttpConnection() {
    script_.connectionClosed();
}

void HttpConnection::read() {
    head_ += socket_.readAll();
    if (!answer_.steps.empty() || !head_.contains("\r\n\r\n")) return;
    answer_ = script_.take(parse(head_));
    next();
}

void HttpConnection::next() {
    if (step_ == answer_.steps.size()) {
        socket_.disconnectFromHost();
        return;
    }
    std::visit([this](const auto& step) { play(step); }, answer_.steps[step_]);
}

void HttpConnection::play(const HttpAnswer::Send& step) {
    socket_.write(step.bytes);
    ++step_;
    next();
}

void HttpConnection::play(const HttpAnswer::Pause& step) {
    ++step_;
    timer_.start(step.duration);
}

void HttpConnection::play(const HttpAnswer::Drip& step) {
    socket_.write(step.bytes.sliced(dripped_, 1));
    socket_.flush();
    if (++dripped_ == step.bytes.size()) {
        dripped_ = 0;
        ++step_;
    }
    timer_.start(step.interval);
}

void HttpConnection::play(const HttpAnswer::Endless& step) {
    while (socket_.bytesToWrite() < endlessBacklog && socket_.write(step.bytes) > 0) {
    }
}

void HttpConnection::play(const HttpAnswer::Reset& step) {
    Q_UNUSED(step);
    socket_.flush();
    // Closing with a zero linger time is what makes the system send the reset.
    const linger none{1, 0};
    setsockopt(static_cast<int>(socket_.socketDescriptor()), SOL_SOCKET, SO_LINGER, &none, sizeof(none));
    socket_.abort();
}

void HttpConnection::play(const HttpAnswer::Silence& step) {
    Q_UNUSED(step);
}

}  // namespace quillmere::support
