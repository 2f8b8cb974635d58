#pragma once

#include "Tests/Support/HttpScript.h"
#include "Tests/Support/ThrowAwayCertificate.h"

#include <QThread>

#include <string>
#include <vector>

namespace quillmere::support {

/// A real HTTP server on the loopback interface, with a port and a thread of
/// its own. Every path has its scripted answer. A connection that lasts longer
/// than a minute is dropped.
class HttpServer {
public:
    HttpServer();
    /// An HTTPS server that shows this certificate.
    explicit HttpServer(const ThrowAwayCertificate& certificate);
    ~HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    /// "http://127.0.0.1:4711" + `path`
    std::string url(const std::string& path) const { return origin_ + path; }

    /// Sets what requests for `path` get from now on.
    void answer(const std::string& path, HttpAnswer answer);

    /// All requests so far, in the order of their arrival.
    std::vector<HttpRequest> requests() const { return script_.requests(); }
    int openConnections() const { return script_.openConnections(); }

private:
    void start(const QSslConfiguration* tls);

    HttpScript script_;
    QThread thread_;
    std::string origin_;
};

}  // namespace quillmere::support
