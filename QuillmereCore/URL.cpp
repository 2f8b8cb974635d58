#include "QuillmereCore/URL.h"

#include <boost/url/encode.hpp>
#include <boost/url/parse.hpp>
#include <boost/url/rfc/pchars.hpp>
#include <boost/url/url_view.hpp>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <system_error>
#include <utility>

namespace quillmere {

namespace {

namespace urls = boost::urls;

bool isPort(std::string_view text) {
    if (text.empty()) return true;  // "host:" means the scheme's own port
    std::uint16_t port = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    return error == std::errc() && stop == text.data() + text.size();
}

// The library takes whatever follows a host or a port for a path, slash or no
// slash: in "https://a@b@c/" a host b and a path "@c/", where others see c.
bool isPath(std::string_view text) {
    return text.empty() || text.starts_with('/');
}

bool isAccepted(const urls::url_view& url) {
    const bool isWeb = url.scheme() == "https" || url.scheme() == "http";
    return isWeb && url.has_authority() && !url.encoded_host().empty() && isPort(url.port())
           && isPath(url.encoded_path());
}

// The path up to and including the slash before its last component.
std::string_view folder(std::string_view path) {
    const std::size_t end = path.find_last_not_of('/');
    if (end == std::string_view::npos) return "/";
    return path.substr(0, path.rfind('/', end) + 1);
}

}  // namespace

URL::URL(std::string text, std::size_t originLength, std::size_t pathLength)
    : text_(std::move(text)), originLength_(originLength), pathLength_(pathLength) {}

std::optional<URL> URL::parse(std::string_view text) {
    const auto parsed = urls::parse_uri(text);
    if (!parsed || !isAccepted(*parsed)) return std::nullopt;
    const std::size_t originLength = parsed->encoded_origin().size();
    return URL(std::string(text), originLength, parsed->encoded_path().size());
}

URL URL::download(std::string_view name) const {
    std::string path(folder(this->path()));
    path += "downloads/";
    path += urls::encode(name, urls::pchars);
    return URL(std::string(origin()) + path, originLength_, path.size());
}

}  // namespace quillmere
