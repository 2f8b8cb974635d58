#include "Tests/Support/HttpAnswer.h"

namespace quillmere::support {

HttpAnswer HttpAnswer::with(const QByteArray& status, const QByteArray& body, const std::vector<QByteArray>& headers) {
    QByteArray bytes = "HTTP/1.1 " + status + "\r\nConnection: close\r\n";
    for (const QByteArray& header : headers) {
        bytes += header + "\r\n";
    }
    bytes += "Content-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
    return {{Send{bytes}}};
}

HttpAnswer HttpAnswer::redirection(const QByteArray& status, const std::string& location) {
    return with(status, "<p>This way.</p>",
                {"Content-Type: text/html", "Location: " + QByteArray::fromStdString(location)});
}

}  // namespace quillmere::support
