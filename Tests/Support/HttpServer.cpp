#include "Tests/Support/HttpServer.h"

#include "Tests/Support/HttpConnection.h"
#include "Tests/Support/SupportError.h"

#include <QSslServer>
#include <QTcpServer>
#include <QTcpSocket>

#include <utility>

namespace quillmere::support {

HttpServer::HttpServer() {
    start(nullptr);
}

HttpServer::HttpServer(const ThrowAwayCertificate& certificate) {
    start(&certificate.serverConfiguration());
}

HttpServer::~HttpServer() {
    thread_.quit();
    thread_.wait();
}

void HttpServer::start(const QSslConfiguration* tls) {
    QTcpServer* server = nullptr;
    if (tls != nullptr) {
        auto* secure = new QSslServer;
        secure->setSslConfiguration(*tls);
        server = secure;
    } else {
        server = new QTcpServer;
    }
    // A socket belongs to the thread in which it listens.
    if (!server->listen(QHostAddress::LocalHost)) {
        const std::string reason = server->errorString().toStdString();
        delete server;
        throw SupportError("no HTTP server: " + reason);
    }
    origin_ = (tls != nullptr ? "https://127.0.0.1:" : "http://127.0.0.1:") + std::to_string(server->serverPort());
    QObject::connect(server, &QTcpServer::pendingConnectionAvailable, server, [server, this] {
        while (QTcpSocket* socket = server->nextPendingConnection()) {
            new HttpConnection(*socket, script_);
        }
    });
    server->moveToThread(&thread_);
    QObject::connect(&thread_, &QThread::finished, server, &QObject::deleteLater);
    thread_.start();
}

void HttpServer::answer(const std::string& path, HttpAnswer answer) {
    script_.answer(path, std::move(answer));
}

}  // namespace quillmere::support
