#include "Fuzz/Require.h"
#include "QuillmereCore/IPLiteral.h"
#include "QuillmereCore/UpdateCheck.h"

#include <algorithm>
#include <string>
#include <string_view>

#include <arpa/inet.h>

namespace quillmere {
namespace {

// Where the authority ends by the plainest reading of an address, as a second
// opinion on the library's.
std::size_t originEnd(std::string_view text) {
    const std::size_t start = text.find("://") + 3;
    return std::min(text.find_first_of("/?#", start), text.size());
}

bool isPlain(std::string_view text) {
    return std::ranges::all_of(text, [](char letter) { return letter > ' ' && letter < '\x7F'; });
}

void checkURL(const URL& url, std::string_view text) {
    require(url.text() == text, "an address is kept as written");
    require(isPlain(text), "an address has neither blanks nor bytes outside ASCII");
    require(text.starts_with("https://") || text.starts_with("http://"), "an address is one of the web");
    require(url.origin() == text.substr(0, originEnd(text)), "the origin ends where the path begins");
    const std::string_view authority = url.origin().substr(url.origin().find("://") + 3);
    const std::string_view host = authority.substr(authority.find('@') + 1);
    require(!host.empty() && host.front() != ':' && !host.contains('@'), "an address has one host");
    const std::string_view rest = text.substr(url.origin().size());
    require(url.path() == rest.substr(0, rest.find_first_of("?#")), "the path ends where the query begins");
    require(url.path().empty() || url.path().starts_with('/'), "a path begins with a slash");
}

void checkDownload(const URL& feed, const std::string& name) {
    const auto download = UpdateCheck::downloadURL(feed, name, std::nullopt);
    const bool isPlainName = !name.empty() && !name.starts_with('.') && !name.contains('/');
    require(download.has_value() == isPlainName, "a plain visible name, and no other, can be downloaded");
    if (!download) return;
    checkURL(*download, download->text());
    require(URL::parse(download->text()) == download, "a download's address is acceptable");
    require(download->origin() == feed.origin(), "a download comes from the feed's host");
    require(download->path().size() == download->text().size() - download->origin().size(), "it is a path alone");
    const std::string_view path = download->path();
    const std::string_view folder = path.substr(0, path.rfind('/'));
    require(folder.ends_with("/downloads"), "it is in the folder of the downloads");
    require(feed.path().starts_with(folder.substr(0, folder.rfind('/'))), "the folder stands beside the feed");
}

// The C library's opinion on what stands between a host's brackets. It knows of
// no later versions.
void checkIPLiteral(const std::string& text) {
    if (text.starts_with('v') || text.starts_with('V') || text.contains('\0')) return;
    in6_addr address{};
    require(isIPLiteral(text) == (inet_pton(AF_INET6, text.c_str(), &address) == 1), "an IPv6 address is one");
}

// The first line is an address, the rest a file's name or another address.
void check(std::string_view bytes) {
    const std::string_view text = bytes.substr(0, bytes.find('\n'));
    const std::string rest(bytes.substr(std::min(text.size() + 1, bytes.size())));
    checkIPLiteral(rest);
    const auto feed = URL::parse(text);
    if (!feed) return;
    checkURL(*feed, text);
    checkDownload(*feed, rest);
    const auto explicitURL = UpdateCheck::downloadURL(*feed, "a.zip", rest);
    require(rest.empty() || explicitURL == URL::parse(rest), "an explicit address decides alone");
    if (explicitURL) checkURL(*explicitURL, explicitURL->text());
}

}  // namespace
}  // namespace quillmere

extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
    quillmere::check({data, size});
    return 0;
}
