#include "Tests/Support/HttpScript.h"

#include <utility>

namespace quillmere::support {

void HttpScript::answer(const std::string& path, HttpAnswer answer) {
    const std::scoped_lock lock(mutex_);
    answers_.insert_or_assign(path, std::move(answer));
}

HttpAnswer HttpScript::take(const HttpRequest& request) {
    const std::scoped_lock lock(mutex_);
    requests_.push_back(request);
    const auto found = answers_.find(request.path);
    return found != answers_.end() ? found->second : HttpAnswer::with("404 Not Found", "<p>Nothing here.</p>");
}

std::vector<HttpRequest> HttpScript::requests() const {
    const std::scoped_lock lock(mutex_);
    return requests_;
}

int HttpScript::openConnections() const {
    const std::scoped_lock lock(mutex_);
    return open_;
}

void HttpScript::changeOpen(int by) {
    const std::scoped_lock lock(mutex_);
    open_ += by;
}

}  // namespace quillmere::support
