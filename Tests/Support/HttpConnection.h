#pragma once

#include "Tests/Support/HttpScript.h"

#include <QByteArray>
#include <QObject>
#include <QTimer>

#include <cstddef>

class QTcpSocket;

namespace quillmere::support {

/// One connection of a test's HTTP server: reads one request and plays its
/// answer. Lives on the server's thread and deletes itself with the socket.
class HttpConnection : public QObject {
    Q_OBJECT
public:
    HttpConnection(QTcpSocket& socket, HttpScript& script);
    ~HttpConnection() override;

private:
    void read();
    void next();
    void play(const HttpAnswer::Send& step);
    void play(const HttpAnswer::Pause& step);
    void play(const HttpAnswer::Drip& step);
    void play(const HttpAnswer::Endless& step);
    void play(const HttpAnswer::Reset& step);
    void play(const HttpAnswer::Silence& step);

    QTcpSocket& socket_;
    HttpScript& script_;
    QByteArray head_;
    HttpAnswer answer_;
    std::size_t step_ = 0;
    qsizetype dripped_ = 0;
    QTimer timer_;
};

}  // namespace quillmere::support
