#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quillmere {

/// The address of something on the web, kept exactly as it was written. An
/// immutable value, made by `parse` alone, so that whoever holds one may open
/// it without further checks.
class URL {
public:
    /// Reads an absolute address: the scheme "http" or "https" in lower case, a
    /// host that is not empty, and the rest as RFC 3986 has it. No value for
    /// anything else. Deliberately refused, though lenient parsers, browsers
    /// among them, accept or repair them:
    /// - "HTTPS://host", other schemes, no scheme ("//host", "host/file");
    /// - no host: "https:/path", "https:///path", "https://:80/", "https://user@/";
    /// - blanks or line breaks around or inside, control characters;
    /// - characters outside ASCII (a host must be in its "xn--" form, a path
    ///   percent-encoded) and ASCII ones that must be encoded: " < > \ ^ ` { | };
    /// - "[" and "]" outside an IPv6 host, a zone in such a host, "%" without two hexadecimal digits;
    /// - a port that is no number up to 65535.
    static std::optional<URL> parse(std::string_view text);

    /// The address as written.
    const std::string& text() const { return text_; }

    /// Scheme and authority as written, with no slash at the end:
    /// "https://user@host:8080".
    std::string_view origin() const { return std::string_view(text_).substr(0, originLength_); }

    /// The path as written, still encoded: empty, or beginning with "/".
    std::string_view path() const { return std::string_view(text_).substr(originLength_, pathLength_); }

    /// The file `name` in the folder "downloads" that stands beside the last
    /// component of this address's path; query and fragment are left behind.
    /// A "/" at the end of the path belongs to its last component, and a path
    /// without components counts as "/":
    ///
    /// | this address                | the file "a.zip"                |
    /// |-----------------------------|---------------------------------|
    /// | https://h/app/feed.json?x#y | https://h/app/downloads/a.zip   |
    /// | https://h/app/feed/         | https://h/app/downloads/a.zip   |
    /// | https://h/feed.json         | https://h/downloads/a.zip       |
    /// | https://h                   | https://h/downloads/a.zip       |
    ///
    /// `name` is a plain name, not yet encoded: what a path component cannot
    /// hold ("/", "?", "#", "%", blanks, bytes outside ASCII) is
    /// percent-encoded, so that it can add no folder, query or fragment.
    URL download(std::string_view name) const;

    friend bool operator==(const URL&, const URL&) = default;

private:
    URL(std::string text, std::size_t originLength, std::size_t pathLength);

    std::string text_;
    std::size_t originLength_;
    std::size_t pathLength_;
};

}  // namespace quillmere
