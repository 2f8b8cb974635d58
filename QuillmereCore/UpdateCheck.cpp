#include "QuillmereCore/UpdateCheck.h"

#include "QuillmereCore/Characters.h"
#include "QuillmereCore/UpdateFeed.h"
#include "QuillmereCore/Whitespace.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace quillmere::UpdateCheck {

namespace {

// The items as the feed has them: a list of blanks in the user's language is
// the feed's wish to say nothing, so it does not fall back to English.
const std::vector<std::string>* chosenNotes(const UpdateFeed& feed, std::string_view language) {
    for (const std::string_view code : {language, std::string_view("en")})
        if (const auto found = feed.notes.find(code); found != feed.notes.end() && !found->second.empty())
            return &found->second;
    return nullptr;
}

std::vector<std::string> notes(const UpdateFeed& feed, std::string_view language) {
    std::vector<std::string> result;
    const std::vector<std::string>* chosen = chosenNotes(feed, language);
    if (!chosen) return result;
    for (const std::string& item : *chosen)
        if (const std::string_view text = trimmed(item, Whitespace::blanksAndNewlines); !text.empty())
            result.emplace_back(text);
    return result;
}

}  // namespace

std::expected<UpdateOutcome, UpdateFeedError> evaluate(std::string_view data, const URL& feedURL,
                                                       const AppVersion& current, std::string_view language) {
    const std::optional<UpdateFeed> feed = decodeUpdateFeed(data);
    std::optional<AppVersion> version = feed ? AppVersion::parse(feed->version) : std::nullopt;
    if (!version) return std::unexpected(UpdateFeedError::unreadable);
    if (!(current < *version)) return UpdateOutcome::upToDate();
    std::optional<URL> url = downloadURL(feedURL, feed->file, feed->downloadURL);
    if (!url) return std::unexpected(UpdateFeedError::noDownload);
    const bool tellsSize = feed->size && *feed->size > 0;
    return UpdateOutcome::available(
        {*std::move(version), tellsSize ? feed->size : std::nullopt, notes(*feed, language), *std::move(url)});
}

std::string language(std::span<const std::string> preferred) {
    const std::string first = preferred.empty() ? std::string() : characters::lowercased(preferred.front());
    const bool isUkrainian =
        first == "uk" || characters::hasPrefix(first, "uk-") || characters::hasPrefix(first, "uk_");
    return isUkrainian ? "uk" : "en";
}

std::optional<URL> downloadURL(const URL& feed, const std::optional<std::string>& file,
                               const std::optional<std::string>& explicitURL) {
    if (explicitURL && !explicitURL->empty()) return URL::parse(*explicitURL);
    const bool isPlainName = file && !file->empty() && !file->starts_with('.') && !file->contains('/');
    return isPlainName ? std::optional(feed.download(*file)) : std::nullopt;
}

bool shouldPresent(const AppVersion& version, const std::optional<AppVersion>& skipped, bool manual) {
    return manual || !skipped || version != *skipped;
}

bool isDue(std::optional<Date> last, Date now, double interval) {
    if (!last || *last > now) return true;
    // Unsigned, since two dates may lie further apart than a signed count holds.
    const std::uint64_t elapsed = static_cast<std::uint64_t>(now.time_since_epoch().count())
                                  - static_cast<std::uint64_t>(last->time_since_epoch().count());
    using Ticks = std::chrono::duration<double, Date::period>;
    return Ticks(static_cast<double>(elapsed)) >= std::chrono::duration<double>(interval);
}

}  // namespace quillmere::UpdateCheck
