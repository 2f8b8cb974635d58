#pragma once

#include <QByteArray>

#include <chrono>
#include <string>
#include <variant>
#include <vector>

namespace quillmere::support {

/// What a test's HTTP server does with a request, step by step. After the last
/// step it closes the connection.
struct HttpAnswer {
    struct Send {
        QByteArray bytes;
    };
    struct Pause {
        std::chrono::milliseconds duration;
    };
    struct Drip {  ///< one byte at a time
        QByteArray bytes;
        std::chrono::milliseconds interval;
    };
    struct Endless {  ///< the same bytes again and again, as fast as they are taken
        QByteArray bytes;
    };
    struct Reset {};    ///< ends the connection with a TCP reset
    struct Silence {};  ///< nothing more, but the connection stays
    using Step = std::variant<Send, Pause, Drip, Endless, Reset, Silence>;

    std::vector<Step> steps;

    /// A whole answer: `status` as "200 OK", `headers` as lines without ends.
    static HttpAnswer with(const QByteArray& status, const QByteArray& body = {},
                           const std::vector<QByteArray>& headers = {"Content-Type: application/json"});
    /// A redirection: `status` as "301 Moved Permanently".
    static HttpAnswer redirection(const QByteArray& status, const std::string& location);
};

}  // namespace quillmere::support
