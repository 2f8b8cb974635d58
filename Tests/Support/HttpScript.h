#pragma once

#include "Tests/Support/HttpAnswer.h"

#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace quillmere::support {

/// A request as a test's HTTP server has read it.
struct HttpRequest {
    std::string method;
    std::string path;
    std::map<std::string, std::string> headers;  ///< names in lower case
};

/// What a test's HTTP server answers, and what it has been asked. Any thread.
class HttpScript {
public:
    /// Sets what requests for `path` get from now on.
    void answer(const std::string& path, HttpAnswer answer);
    /// What a request gets: 404 for a path that has no answer. The request is
    /// kept.
    HttpAnswer take(const HttpRequest& request);

    std::vector<HttpRequest> requests() const;

    void connectionOpened() { changeOpen(1); }
    void connectionClosed() { changeOpen(-1); }
    int openConnections() const;

private:
    void changeOpen(int by);

    mutable std::mutex mutex_;
    std::map<std::string, HttpAnswer> answers_;
    std::vector<HttpRequest> requests_;
    int open_ = 0;
};

}  // namespace quillmere::support
