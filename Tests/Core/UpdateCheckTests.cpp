#include "QuillmereCore/UpdateCheck.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace quillmere {
namespace {

using namespace std::string_literals;
using Items = std::vector<std::string>;
using Result = std::expected<UpdateOutcome, UpdateFeedError>;

AppVersion version(std::string_view text) {
    return AppVersion::parse(text).value();
}

URL url(std::string_view text) {
    return URL::parse(text).value();
}

const URL feedURL = url("https://example.org/app/feed.json");

Result evaluate(std::string_view data, std::string_view current = "1.0", std::string_view language = "en") {
    return UpdateCheck::evaluate(data, feedURL, version(current), language);
}

// The offer of a feed that names version 2.0, the file a.zip and `members`.
UpdateOffer offer(const std::string& members, std::string_view language = "en") {
    return evaluate(R"({"version":"2.0","file":"a.zip")" + members + "}", "1.0", language).value().offer().value();
}

const Result upToDate = UpdateOutcome::upToDate();
const Result unreadable = std::unexpected(UpdateFeedError::unreadable);
const Result noDownload = std::unexpected(UpdateFeedError::noDownload);

TEST(Evaluate, AFeedOfNothingButTheVersionIsUpToDateOrNamesNoDownload) {
    EXPECT_EQ(evaluate(R"({"version":"1.0"})", "1.0"), upToDate);
    EXPECT_EQ(evaluate(R"({"version":"1.0"})", "0.9"), noDownload);
}

TEST(Evaluate, AnEqualVersionIsUpToDateHoweverItIsWritten) {
    EXPECT_EQ(evaluate(R"({"version":"1.0.0","downloadURL":"https://h/a"})", "1.0"), upToDate);
    EXPECT_EQ(evaluate(R"({"version":"1.0-b","downloadURL":"https://h/a"})", "1.0-a"), upToDate);
}

TEST(Evaluate, AnOlderVersionIsUpToDateWhateverElseTheFeedHolds) {
    EXPECT_EQ(evaluate(R"({"version":"0.9","downloadURL":"ftp://h/a"})", "1.0"), upToDate);
}

TEST(Evaluate, APreReleaseIsNewerThanWhatCameBeforeItsNumbersOnly) {
    EXPECT_EQ(evaluate(R"({"version":"1.1-beta","file":"a.zip"})", "1.1"), upToDate);
    const Result result = evaluate(R"({"version":"1.1-beta","file":"a.zip"})", "1.0.9");
    ASSERT_TRUE(result);
    ASSERT_TRUE(result->offer());
    EXPECT_EQ(result->offer()->version.description(), "1.1-beta");
}

TEST(Evaluate, WithoutAVersionTheFeedIsUnreadable) {
    for (const char* data : {"", " ", "<html>", "[]", R"(["version","2.0"])", "null", "{}", R"({"version":2})",
                             R"({"version":2.0})", R"({"version":null})", R"({"version":"v2"})", R"({"version":""})",
                             R"({"version":"2.0-"})", R"({"version":"2.0\n"})", R"({"version":"2.0"} x)"})
        EXPECT_EQ(evaluate(data), unreadable) << data;
}

TEST(Evaluate, AnOfferHoldsEverythingTheFeedTells) {
    const Result result = evaluate(R"({"version":" 2.0 ","size":2300000,"file":"ignored.zip",)"
                                   R"("downloadURL":"https://Example.org/%7Ea?b#c","notes":{"en":["Fix"]}})");
    const UpdateOffer expected{version("2.0"), 2300000, {"Fix"}, url("https://Example.org/%7Ea?b#c")};
    EXPECT_EQ(result, UpdateOutcome::available(expected));
    EXPECT_EQ(result->offer()->version.description(), "2.0");
    EXPECT_FALSE(result->isUpToDate());
}

TEST(Evaluate, AFileIsResolvedBesideTheFeed) {
    EXPECT_EQ(offer("").downloadURL.text(), "https://example.org/app/downloads/a.zip");
}

TEST(Evaluate, OnlyAPositiveIntegerIsASize) {
    for (const char* size : {"-5", "0", "\"12\"", "1.5", "null", "true", "1e400", "9223372036854775808", "[1]", "-0.0"})
        EXPECT_EQ(offer(R"(,"size":)"s + size).size, std::nullopt) << size;
    EXPECT_EQ(offer(R"(,"size":1)").size, 1);
    EXPECT_EQ(offer(R"(,"size":12.0)").size, 12);
    EXPECT_EQ(offer(R"(,"size":9223372036854775807)").size, std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(offer("").size, std::nullopt);
}

TEST(Evaluate, NotesAreThoseOfTheLanguageOrElseEnglish) {
    const struct {
        const char* name;
        const char* notes;
        const char* language;
        Items chosen;
    } cases[] = {
        {"the language's own", R"({"uk":["Так"],"en":["Yes"]})", "uk", {"Так"}},
        {"English for want of the language", R"({"de":["Ja"],"en":["Yes"]})", "uk", {"Yes"}},
        {"English when the language's list is empty", R"({"uk":[],"en":["Yes"]})", "uk", {"Yes"}},
        {"a list of blanks is a list", R"({"uk":["  "],"en":["Fix"]})", "uk", {}},
        {"no third language", R"({"de":["x"]})", "uk", {}},
        {"no language of another's", R"({"uk":["Так"]})", "en", {}},
        {"no codes in another case", R"({"EN":["Yes"],"UK":["Так"]})", "uk", {}},
        {"nothing at all", R"({})", "uk", {}},
        {"both empty", R"({"uk":[],"en":[]})", "uk", {}},
        {"one bad item", R"({"en":["a",1]})", "en", {}},
        {"one bad item in another language", R"({"en":["a"],"de":[1]})", "en", {}},
        {"trimmed items in their order", R"({"en":[" a ","","b\n"]})", "en", {"a", "b"}},
        {"line breaks inside an item stay", R"({"en":["\r\n\u2028 a\n\nb\u0085\t"]})", "en", {"a\n\nb"}},
    };
    for (const auto& [name, notes, language, chosen] : cases)
        EXPECT_EQ(offer(R"(,"notes":)"s + notes, language).notes, chosen) << name;
}

TEST(Evaluate, ARefusedAddressIsNoDownloadEvenWithAFile) {
    for (const char* address : {"ftp://h/a", "HTTPS://h/a", "https:///a", "h/a", " ", "https://h/a b"})
        EXPECT_EQ(evaluate(R"({"version":"2.0","file":"a.zip","downloadURL":")"s + address + "\"}"), noDownload)
            << address;
}

TEST(Evaluate, AnEmptyOrUnusableAddressMemberLeavesTheFile) {
    for (const char* address : {"\"\"", "null", "1", "[\"https://h/a\"]"})
        EXPECT_EQ(offer(R"(,"downloadURL":)"s + address).downloadURL.text(), "https://example.org/app/downloads/a.zip")
            << address;
}

TEST(UpdateOffer, IsEqualFieldByFieldAndVersionsAsVersionsAre) {
    const UpdateOffer one{version("1.2-a"), 5, {"x"}, url("https://h/a")};
    EXPECT_EQ((UpdateOffer{version("1.2.0-b"), 5, {"x"}, url("https://h/a")}), one);
    EXPECT_NE((UpdateOffer{version("1.2"), 5, {"x"}, url("https://h/a")}), one);
    EXPECT_NE((UpdateOffer{version("1.2-a"), std::nullopt, {"x"}, url("https://h/a")}), one);
    EXPECT_NE((UpdateOffer{version("1.2-a"), 5, {}, url("https://h/a")}), one);
    EXPECT_NE((UpdateOffer{version("1.2-a"), 5, {"x"}, url("https://h/b")}), one);
    EXPECT_EQ(UpdateOutcome::available(one), UpdateOutcome::available(one));
    EXPECT_NE(UpdateOutcome::available(one), UpdateOutcome::upToDate());
    EXPECT_TRUE(UpdateOutcome::upToDate().isUpToDate());
}

TEST(Language, OnlyTheFirstPreferredLanguageDecides) {
    const std::pair<Items, const char*> cases[] = {
        {{}, "en"},          {{"uk-UA", "en"}, "uk"}, {{"UK"}, "uk"},       {{"uk"}, "uk"},     {{"uk_UA.UTF-8"}, "uk"},
        {{"UK-Latn"}, "uk"}, {{"en-GB", "uk"}, "en"}, {{"ukr"}, "en"},      {{"", "uk"}, "en"}, {{"en-UK"}, "en"},
        {{"C", "uk"}, "en"}, {{" uk"}, "en"},         {{"uk.UTF-8"}, "en"},
    };
    for (const auto& [preferred, language] : cases)
        EXPECT_EQ(UpdateCheck::language(preferred), language) << testing::PrintToString(preferred);
}

TEST(Language, LettersOfAnyScriptAreComparedInLowerCaseAndAsWholeCharacters) {
    const std::pair<const char*, const char*> cases[] = {
        {"U\u212A", "uk"},       // the Kelvin sign, a capital k
        {"\uFF35\uFF2B", "en"},  // wide letters are others
        {"uk\u0301", "en"},      // a k with an accent is another
        {"uk-\u0301UA", "en"},   // and so is such a hyphen
        {"uk_\u093E", "en"},    {"uk-\xFF", "uk"}, {"\xFFuk", "en"}, {"uk-", "uk"}, {"uk_", "uk"},
    };
    for (const auto& [preferred, language] : cases)
        EXPECT_EQ(UpdateCheck::language(Items{preferred}), language) << preferred;
}

TEST(DownloadURL, AnExplicitAddressDecidesAlone) {
    const auto download = [](const char* address) { return UpdateCheck::downloadURL(feedURL, "a.zip", address); };
    EXPECT_EQ(download("http://other.org/b?c"), url("http://other.org/b?c"));
    for (const char* refused :
         {"ftp://h/a", "https://", "https:///a", "https://:80", "Http://h/a", "h", "/a.zip", "file:///a"})
        EXPECT_EQ(download(refused), std::nullopt) << refused;
    EXPECT_EQ(download(""), url("https://example.org/app/downloads/a.zip"));
}

TEST(DownloadURL, AFileMustBeAPlainVisibleName) {
    const auto download = [](const std::optional<std::string>& file) {
        return UpdateCheck::downloadURL(feedURL, file, std::nullopt);
    };
    EXPECT_EQ(download("app-2.0.zip"), url("https://example.org/app/downloads/app-2.0.zip"));
    EXPECT_EQ(download("My App?x#y.zip"), url("https://example.org/app/downloads/My%20App%3Fx%23y.zip"));
    for (const char* refused : {".hidden.zip", "sub/a.zip", "", ".", "..", "../a.zip", "/a.zip", "a/", "a/../b"})
        EXPECT_EQ(download(refused), std::nullopt) << refused;
    EXPECT_EQ(download(std::nullopt), std::nullopt);
}

TEST(ShouldPresent, OnlyTheVeryVersionThatWasSkippedIsHeldBack) {
    const struct {
        const char* offered;
        std::optional<AppVersion> skipped;
        bool automatic;
    } cases[] = {
        {"1.4.0", std::nullopt, true},    {"1.4.0", version("1.4"), false},       {"1.4.0", version("1.5"), true},
        {"1.4.0", version("1.3"), true},  {"2.0-beta", version("2.0-rc"), false}, {"2.0", version("2.0-rc"), true},
        {"2.0-rc", version("2.0"), true},
    };
    for (const auto& [offered, skipped, automatic] : cases) {
        EXPECT_EQ(UpdateCheck::shouldPresent(version(offered), skipped, false), automatic) << offered;
        EXPECT_TRUE(UpdateCheck::shouldPresent(version(offered), skipped, true)) << offered;
    }
}

TEST(IsDue, ACheckIsDueAfterTheIntervalOrWhenTheClockWentBack) {
    // The finest that every system's clock counts.
    using std::chrono::microseconds;
    using std::chrono::seconds;
    constexpr double day = 86400.0;
    const Date now = Date(seconds(1'700'000'000)) + microseconds(123'456);
    EXPECT_TRUE(UpdateCheck::isDue(std::nullopt, now, day));
    EXPECT_TRUE(UpdateCheck::isDue(now - seconds(86400), now, day));
    EXPECT_FALSE(UpdateCheck::isDue(now - seconds(86399), now, day));
    EXPECT_FALSE(UpdateCheck::isDue(now - seconds(86400) + microseconds(1), now, day));
    EXPECT_TRUE(UpdateCheck::isDue(now - seconds(86401), now, day));
    EXPECT_FALSE(UpdateCheck::isDue(now, now, day));
    EXPECT_TRUE(UpdateCheck::isDue(now + seconds(1), now, day));
    EXPECT_TRUE(UpdateCheck::isDue(now + microseconds(1), now, day));
    EXPECT_TRUE(UpdateCheck::isDue(now, now, 0.0));
    EXPECT_TRUE(UpdateCheck::isDue(now - seconds(1), now, 0.5));
    EXPECT_FALSE(UpdateCheck::isDue(now - seconds(1), now, 1.5));
    EXPECT_FALSE(UpdateCheck::isDue(now - seconds(1), now, std::numeric_limits<double>::quiet_NaN()));
}

TEST(IsDue, TheEndsOfTheCalendarAreFarApart) {
    EXPECT_TRUE(UpdateCheck::isDue(Date::min(), Date::max(), 86400.0));
    EXPECT_TRUE(UpdateCheck::isDue(Date::max(), Date::min(), 86400.0));
    EXPECT_FALSE(UpdateCheck::isDue(Date::min(), Date::max(), 1e30));
}

}  // namespace
}  // namespace quillmere
