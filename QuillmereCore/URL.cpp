#include "QuillmereCore/URL.h"

#include "QuillmereCore/AddressText.h"
#include "QuillmereCore/IPLiteral.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <system_error>
#include <utility>

namespace quillmere {

// The grammar of RFC 3986, by hand: what counts as an address here must not
// change with a library's version, and the ones at hand differ in which hosts
// and fragments they take.
namespace {

bool isPercentEncoded(std::string_view text) {
    return text.size() >= 3 && text[0] == '%' && addressText::isHexDigit(text[1]) && addressText::isHexDigit(text[2]);
}

// Whether `text` is nothing but percent-encoded bytes and what `isAllowed`.
template <typename Predicate>
bool consistsOf(std::string_view text, Predicate isAllowed) {
    while (!text.empty()) {
        const bool isEncoded = isPercentEncoded(text);
        if (!isEncoded && !isAllowed(text.front())) return false;
        text.remove_prefix(isEncoded ? 3 : 1);
    }
    return true;
}

// What follows a host: nothing, or a colon and a number; "host:" means the
// scheme's own port.
bool isPortSuffix(std::string_view text) {
    if (text.empty() || text == ":") return true;
    if (text.front() != ':') return false;
    text.remove_prefix(1);
    std::uint16_t port = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    return error == std::errc() && stop == text.data() + text.size();
}

bool isHostAndPort(std::string_view text) {
    if (text.starts_with('[')) {
        const std::size_t end = text.find(']');
        return end != std::string_view::npos && isIPLiteral(text.substr(1, end - 1))
               && isPortSuffix(text.substr(end + 1));
    }
    const std::string_view host = text.substr(0, text.find(':'));
    return !host.empty() && consistsOf(host, addressText::isPlain) && isPortSuffix(text.substr(host.size()));
}

bool isAuthority(std::string_view text) {
    const std::size_t at = text.find('@');
    if (at == std::string_view::npos) return isHostAndPort(text);
    const auto isAllowed = [](char character) { return addressText::isPlain(character) || character == ':'; };
    return consistsOf(text.substr(0, at), isAllowed) && isHostAndPort(text.substr(at + 1));
}

bool isPath(std::string_view text) {
    return consistsOf(text, [](char character) { return addressText::isPathCharacter(character) || character == '/'; });
}

bool isQueryOrFragment(std::string_view text) {
    return consistsOf(text, [](char character) {
        return addressText::isPathCharacter(character) || character == '/' || character == '?';
    });
}

// Where the first of `ends` stands in `text`, from `start` on, or where it ends.
std::size_t find(std::string_view text, std::string_view ends, std::size_t start) {
    return std::min(text.find_first_of(ends, start), text.size());
}

std::string percentEncoded(std::string_view text) {
    constexpr std::string_view hex = "0123456789ABCDEF";
    std::string result;
    for (const char character : text) {
        if (addressText::isPathCharacter(character)) {
            result += character;
            continue;
        }
        const auto byte = static_cast<unsigned char>(character);
        result += {'%', hex[byte >> 4], hex[byte & 0x0FU]};
    }
    return result;
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
    const bool isWeb = text.starts_with("https://") || text.starts_with("http://");
    if (!isWeb) return std::nullopt;
    const std::size_t authority = text.find("//") + 2;
    const std::size_t path = find(text, "/?#", authority);
    const std::size_t query = find(text, "?#", path);
    const std::size_t fragment = find(text, "#", query);
    const auto between = [text](std::size_t start, std::size_t end) { return text.substr(start, end - start); };
    const auto after = [&](std::size_t start, std::size_t end) { return between(std::min(start + 1, end), end); };
    if (!isAuthority(between(authority, path)) || !isPath(between(path, query))
        || !isQueryOrFragment(after(query, fragment)) || !isQueryOrFragment(after(fragment, text.size())))
        return std::nullopt;
    return URL(std::string(text), path, query - path);
}

URL URL::download(std::string_view name) const {
    std::string path(folder(this->path()));
    path += "downloads/";
    path += percentEncoded(name);
    return URL(std::string(origin()) + path, originLength_, path.size());
}

}  // namespace quillmere
