#include "Fuzz/Require.h"
#include "QuillmereCore/UpdateCheck.h"
#include "QuillmereCore/UpdateFeed.h"
#include "QuillmereCore/Utf8.h"
#include "QuillmereCore/Whitespace.h"

#include <string_view>

namespace quillmere {
namespace {

void checkOffer(const UpdateOffer& offer, const UpdateFeed& feed, const AppVersion& current) {
    require(current < offer.version, "an offer is newer");
    require(offer.version == AppVersion::parse(feed.version), "an offer has the feed's version");
    require(!offer.size || (*offer.size > 0 && offer.size == feed.size), "a size is the feed's and positive");
    require(URL::parse(offer.downloadURL.text()) == offer.downloadURL, "an offer's address is acceptable");
    for (const std::string& note : offer.notes)
        require(utf8::isWellFormed(note) && !note.empty() && trimmed(note, Whitespace::blanksAndNewlines) == note,
                "a note is trimmed text");
    if (feed.downloadURL.value_or("").empty())
        require(offer.downloadURL.text().starts_with("https://example.org/app/downloads/"), "a file is a download");
    else
        require(offer.downloadURL.text() == feed.downloadURL, "an explicit address is kept as written");
}

void check(std::string_view bytes) {
    static const URL feedURL = URL::parse("https://example.org/app/feed.json?channel#top").value();
    static const AppVersion current = AppVersion::parse("1.5-beta").value();
    const std::optional<UpdateFeed> feed = decodeUpdateFeed(bytes);
    for (const std::string_view language : {"en", "uk"}) {
        const auto result = UpdateCheck::evaluate(bytes, feedURL, current, language);
        const bool isReadable = feed && AppVersion::parse(feed->version);
        const bool isUnreadable = !result && result.error() == UpdateFeedError::unreadable;
        require(isReadable == !isUnreadable, "a feed with a version, and no other, is readable");
        if (result && result->offer()) checkOffer(*result->offer(), *feed, current);
        if (result && result->isUpToDate())
            require(AppVersion::parse(feed->version) <= current, "what is up to date is not newer");
    }
}

}  // namespace
}  // namespace quillmere

extern "C" int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
    quillmere::check({data, size});
    return 0;
}
