#include "Packaging/feed/FeedDocument.h"

#include "QuillmereCore/UpdateCheck.h"
#include "QuillmereCore/UpdateFeed.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>
#include <boost/json/serialize.hpp>

#include <string_view>
#include <utility>

namespace quillmere {

namespace {

using Keys = UpdateFeed::Keys;

// Where a feed lies only matters for what lies beside it.
constexpr std::string_view anyFeed = "https://feed.invalid/feed.json";

boost::json::array items(const std::vector<std::string>& notes) {
    return boost::json::array(notes.begin(), notes.end());
}

std::string written(const Release& release) {
    boost::json::object notes;
    notes["en"] = items(release.notes);
    if (!release.notesInUkrainian.empty()) notes["uk"] = items(release.notesInUkrainian);
    boost::json::object document;
    document[Keys::version] = release.version;
    document[Keys::size] = release.size;
    document[Keys::notes] = std::move(notes);
    if (release.downloads.empty())
        document[Keys::file] = release.file;
    else
        document[Keys::downloadURL] = release.downloads + "/" + release.file;
    return boost::json::serialize(document) + "\n";
}

/// What the program would not take of it; empty when it takes everything.
std::string refused(const std::string& document, const Release& release, std::string_view language,
                    const std::vector<std::string>& notes) {
    const auto feed = URL::parse(anyFeed);
    const auto oldest = AppVersion::parse("0");
    if (!feed || !oldest) return "The check itself is wrong.";
    const auto outcome = UpdateCheck::evaluate(document, *feed, *oldest, language);
    if (!outcome) {
        return outcome.error() == UpdateFeedError::noDownload ? "The download's address is none."
                                                              : "The version is none.";
    }
    if (outcome->isUpToDate()) return "The version is not newer than 0.";
    if (outcome->offer()->size != release.size) return "The package is empty.";
    if (outcome->offer()->notes != notes) return "The notes are not shown as they stand.";
    return {};
}

}  // namespace

std::expected<std::string, std::string> feedDocument(const Release& release) {
    std::string document = written(release);
    const auto& inUkrainian = release.notesInUkrainian.empty() ? release.notes : release.notesInUkrainian;
    for (const std::string& problem :
         {refused(document, release, "en", release.notes), refused(document, release, "uk", inUkrainian)}) {
        if (!problem.empty()) return std::unexpected(problem);
    }
    return document;
}

}  // namespace quillmere
