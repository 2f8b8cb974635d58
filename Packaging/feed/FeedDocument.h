#pragma once

#include <cstdint>
#include <expected>
#include <string>
#include <vector>

namespace quillmere {

/// A release as its makers tell of it.
struct Release {
    std::string version;                        ///< text of an AppVersion
    std::string file;                           ///< the package's plain name
    std::int64_t size = 0;                      ///< the package's, in bytes
    std::string downloads;                      ///< address of the folder with the package; empty: beside the feed
    std::vector<std::string> notes;             ///< what is new, item by item, in English
    std::vector<std::string> notesInUkrainian;  ///< the same; empty: the English ones
};

/// The feed's document (JSON) for a release, exactly as the program reads it:
/// what it would offer to somebody with an older version has been compared. Else
/// a sentence that says what the program would not take.
std::expected<std::string, std::string> feedDocument(const Release& release);

}  // namespace quillmere
