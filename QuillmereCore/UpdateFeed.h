#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quillmere {

/// The document that names the newest version, as far as it could be read.
struct UpdateFeed {
    /// The document's keys; every other key is ignored.
    struct Keys {
        static constexpr std::string_view version = "version";
        static constexpr std::string_view file = "file";
        static constexpr std::string_view size = "size";
        static constexpr std::string_view downloadURL = "downloadURL";
        static constexpr std::string_view notes = "notes";
    };

    std::string version;                     ///< text of an AppVersion, not yet parsed
    std::optional<std::string> file;         ///< name of a file in the folder "downloads" beside the feed
    std::optional<std::int64_t> size;        ///< bytes, as written: perhaps zero or negative
    std::optional<std::string> downloadURL;  ///< an address that takes precedence over `file`, not yet checked
    /// Items of the release notes by language code ("en", "uk").
    std::map<std::string, std::vector<std::string>, std::less<>> notes;

    friend bool operator==(const UpdateFeed&, const UpdateFeed&) = default;
};

/// Reads a feed document, a JSON object. Only "version" is required, a string;
/// any other member that is missing or of the wrong type is left out, and one
/// bad item drops the notes whole. No value for anything else; never throws.
std::optional<UpdateFeed> decodeUpdateFeed(std::string_view bytes);

}  // namespace quillmere
