#pragma once

#include "QuillmereCore/AppVersion.h"
#include "QuillmereCore/URL.h"
#include "QuillmereCore/UpdateOutcome.h"
#include "QuillmereCore/UserDefaults.h"

#include <expected>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// The decisions around an update check. Pure functions for any thread.
namespace quillmere::UpdateCheck {

/// What the feed document `data`, fetched from `feedURL`, means for somebody
/// who runs `current`. An offer has the notes of `language` ("en", "uk") or
/// else the English ones. A feed whose version is not newer is up to date
/// whatever else it holds. Never throws, whatever the bytes.
std::expected<UpdateOutcome, UpdateFeedError> evaluate(std::string_view data, const URL& feedURL,
                                                       const AppVersion& current, std::string_view language);

/// The language of the release notes for a user's languages, the preferred one
/// first: "uk" when that one is Ukrainian ("uk", "uk-UA", "UK_ua"), else "en".
std::string language(std::span<const std::string> preferred);

/// Where to download from, for a feed at `feed`. An `explicitURL` that is not
/// empty decides alone, even when it is no acceptable URL; otherwise `file`,
/// the plain name of a file beside the feed (URL::download), unless it is
/// empty, hidden (begins with ".") or holds a "/". Absent when neither will do.
std::optional<URL> downloadURL(const URL& feed, const std::optional<std::string>& file,
                               const std::optional<std::string>& explicitURL);

/// Whether to show an offer of `version`: always after a manual check,
/// otherwise unless it equals the version that the user `skipped`.
bool shouldPresent(const AppVersion& version, const std::optional<AppVersion>& skipped, bool manual);

/// Whether an automatic check is due: `interval` seconds after the `last` one,
/// or when there was none, or when the clock has gone back before it.
bool isDue(std::optional<Date> last, Date now, double interval);

}  // namespace quillmere::UpdateCheck
