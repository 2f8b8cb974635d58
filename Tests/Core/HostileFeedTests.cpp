#include "QuillmereCore/UpdateCheck.h"
#include "QuillmereCore/Utf8.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace quillmere {
namespace {

using namespace std::string_literals;

enum class Answer { unreadable, noDownload, available };

struct Body {
    std::string name;
    std::string bytes;
    Answer answer;
};

using Bodies = std::vector<Body>;

const std::string goodFeed = R"({"version":"2.0","file":"a.zip","size":123,"downloadURL":"https://example.org/a",)"
                             R"("notes":{"en":["One","Two \ud83c\udf10"],"uk":["Один"]}})";

std::string with(const std::string& key, const std::string& value) {
    return R"({"version":"2.0","file":"a.zip",")" + key + "\":" + value + "}";
}

std::string repeated(std::size_t count, const std::string& text) {
    std::string result;
    result.reserve(count * text.size());
    for (std::size_t i = 0; i < count; ++i)
        result += text;
    return result;
}

void addTruncations(Bodies& bodies) {
    for (std::size_t length = 0; length < goodFeed.size(); ++length)
        bodies.push_back({"cut after " + std::to_string(length), goodFeed.substr(0, length), Answer::unreadable});
    for (std::size_t start = 1; start < goodFeed.size(); start += 7)
        bodies.push_back({"begun at " + std::to_string(start), goodFeed.substr(start), Answer::unreadable});
}

void addWrongTypes(Bodies& bodies) {
    const std::string values[] = {"null",       "true",          "false",    "0",  "-1",     "1.5",
                                  "1e400",      "1e99999999999", "[]",       "{}", "[null]", "[[]]",
                                  "{\"en\":1}", "{\"en\":[1]}",  "[\"2.0\"]"};
    for (const std::string& value : values) {
        bodies.push_back({"version " + value, "{\"version\":" + value + ",\"file\":\"a.zip\"}", Answer::unreadable});
        bodies.push_back({"size " + value, with("size", value), Answer::available});
        bodies.push_back({"notes " + value, with("notes", value), Answer::available});
        bodies.push_back({"downloadURL " + value, with("downloadURL", value), Answer::available});
        bodies.push_back({"a file " + value, "{\"version\":\"2.0\",\"file\":" + value + "}", Answer::noDownload});
        bodies.push_back({"an unknown key " + value, with("unknown", value), Answer::available});
        bodies.push_back({"instead of the feed " + value, value, Answer::unreadable});
        std::string list = "[" + goodFeed;
        list += "," + value + "]";
        bodies.push_back({"beside the feed " + value, list, Answer::unreadable});
    }
}

void addNumbers(Bodies& bodies) {
    for (const std::string number :
         {"9223372036854775807", "9223372036854775808", "-9223372036854775809", "18446744073709551616", "1e18", "1e19",
          "1e308", "1e309", "-1e309", "1e2147483647", "1e2147483648", "1e-2147483649", "0e99999999999999999999"})
        bodies.push_back({"size " + number, with("size", number), Answer::available});
    bodies.push_back({"size of 100,000 digits", with("size", std::string(100'000, '9')), Answer::available});
    bodies.push_back({"size of 100,000 decimals", with("size", "0." + std::string(100'000, '1')), Answer::available});
    bodies.push_back({"exponent of 100,000 digits", with("size", "1e" + std::string(100'000, '9')), Answer::available});
    for (const std::string number : {"01", "+1", ".5", "1.", "1e", "0x10", "NaN", "Infinity", "-", "1e+", "--1"})
        bodies.push_back({"no number " + number, with("size", number), Answer::unreadable});
}

void addNesting(Bodies& bodies) {
    for (const std::size_t depth : {600U, 10'000U, 100'000U}) {
        const std::string name = std::to_string(depth) + " deep";
        const std::string arrays = repeated(depth, "[") + repeated(depth, "]");
        const std::string objects = repeated(depth, "{\"a\":") + "1" + repeated(depth, "}");
        bodies.push_back({"arrays " + name, with("notes", arrays), Answer::unreadable});
        bodies.push_back({"objects " + name, with("notes", objects), Answer::unreadable});
        bodies.push_back({"open arrays " + name, repeated(depth, "["), Answer::unreadable});
        bodies.push_back({"open objects " + name, repeated(depth, "{\"a\":"), Answer::unreadable});
    }
    bodies.push_back({"just deep enough", with("unknown", repeated(511, "[") + repeated(511, "]")), Answer::available});
}

void addTexts(Bodies& bodies) {
    for (const std::string escape :
         {R"(\ud800)", R"(\udc00)", R"(\ud800\ud800)", R"(\udfff\ud800)", R"(\ud800x)", R"(\u12)", R"(\x41)", R"(\)"}) {
        bodies.push_back({"version with " + escape, R"({"version":"2.0-)" + escape + "\"}", Answer::unreadable});
        bodies.push_back({"notes with " + escape, with("notes", R"({"en":[")" + escape + "\"]}"), Answer::unreadable});
        bodies.push_back({"key with " + escape, with(escape, "1"), Answer::unreadable});
    }
    for (const std::string bytes :
         {"\xC3(", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xC0\x80", "\xFF", "\x80", "\xE2\x8C"})
        bodies.push_back({"invalid UTF-8", with("notes", "{\"en\":[\"" + bytes + "\"]}"), Answer::unreadable});
    for (const std::string& bytes : {"\0"s, "\n"s, "\t"s, "\x1F"s, "\x01"s})
        bodies.push_back({"a control character", with("notes", "{\"en\":[\"" + bytes + "\"]}"), Answer::unreadable});
    bodies.push_back({"a byte order mark", "\xEF\xBB\xBF" + goodFeed, Answer::unreadable});
    bodies.push_back({"a UTF-16 mark", "\xFF\xFE" + goodFeed, Answer::unreadable});
    std::string wide;
    for (const char letter : goodFeed)
        wide += {letter, '\0'};
    bodies.push_back({"UTF-16", wide, Answer::unreadable});
    bodies.push_back({"a NUL at the end", goodFeed + '\0', Answer::unreadable});
    bodies.push_back({"a second document", goodFeed + goodFeed, Answer::unreadable});
    bodies.push_back({"a web page", "<!DOCTYPE html><html><body>404</body></html>", Answer::unreadable});
    bodies.push_back({"a comment", "/* feed */" + goodFeed, Answer::unreadable});
    bodies.push_back({"a trailing comma", R"({"version":"2.0","file":"a.zip",})", Answer::unreadable});
    bodies.push_back({"NULs in a file's name", with("file", R"("a\u0000.zip")"), Answer::available});
    bodies.push_back({"NULs in an address", with("downloadURL", R"("https://h/\u0000")"), Answer::noDownload});
    bodies.push_back({"NULs in a version", with("version", R"("2.0\u0000")"), Answer::unreadable});
    bodies.push_back({"NULs in notes", with("notes", R"({"en":["\u0000"]})"), Answer::available});
}

void addVersionsAndAddresses(Bodies& bodies) {
    for (const std::string version : {"", " ", "v2", "2..0", "2.", ".2", "-2", "2.0-", "２.0", "2,0",
                                      "9223372036854775808", "2.0\\n", "2e3", "0x2", "+2"})
        bodies.push_back({"version \"" + version + "\"", with("version", "\"" + version + "\""), Answer::unreadable});
    for (const std::string address : {"ftp://h/a", "file:///etc/passwd", "javascript:alert(1)", "HTTPS://h/a",
                                      "https://", "https:///a", "//h/a", "h/a", " https://h/a", "https://h/a b",
                                      "https://h:99999/", "https://h/%zz", "https://[::1/", "https://h\\\\@evil/"})
        bodies.push_back({"address " + address, with("downloadURL", "\"" + address + "\""), Answer::noDownload});
    for (const std::string file : {"", ".", "..", ".hidden", "../a", "a/b", "/a", "\\u002e\\u002e/a", "a\\u002fb"})
        bodies.push_back({"file \"" + file + "\"", with("file", "\"" + file + "\""), Answer::noDownload});
    for (const std::string file : {"a?b", "a#b", "a%2Fb", "a\\\\b", "a\\nb", "%2e%2e", "🌐"})
        bodies.push_back({"file \"" + file + "\"", with("file", "\"" + file + "\""), Answer::available});
}

void addSizes(Bodies& bodies) {
    // Twice what is ever fetched.
    constexpr std::size_t large = 2U << 20;
    std::mt19937 random(3);
    std::string junk(large, '\0');
    std::ranges::generate(junk, [&] { return static_cast<char>(random() & 0xFFU); });
    bodies.push_back({"2 MiB of junk", junk, Answer::unreadable});
    bodies.push_back({"2 MiB of blanks", std::string(large, ' '), Answer::unreadable});
    bodies.push_back({"2 MiB of blanks around", std::string(large, ' ') + goodFeed, Answer::available});
    bodies.push_back({"2 MiB of quotes", std::string(large, '"'), Answer::unreadable});
    bodies.push_back(
        {"2 MiB of one note", with("notes", "{\"en\":[\"" + std::string(large, 'x') + "\"]}"), Answer::available});
    bodies.push_back({"2 MiB of version", with("version", "\"" + std::string(large, '9') + "\""), Answer::unreadable});
    bodies.push_back({"2 MiB of numbers in a version", with("version", "\"2" + repeated(large / 2, ".0") + "\""),
                      Answer::available});
    bodies.push_back({"2 MiB of file name", with("file", "\"" + std::string(large, ' ') + "\""), Answer::available});
    bodies.push_back(
        {"200,000 notes", with("notes", "{\"en\":[" + repeated(199'999, "\"\",") + "\"\"]}"), Answer::available});
    bodies.push_back({"200,000 equal keys",
                      "{" + repeated(200'000, "\"version\":1,") + R"("version":"2.0","file":"a"})", Answer::available});
    std::string keys = "{\"version\":\"2.0\"";
    for (int i = 0; i < 100'000; ++i)
        keys += ",\"key" + std::to_string(i) + "\":0";
    bodies.push_back({"100,000 keys", keys + ",\"file\":\"a\"}", Answer::available});
}

Bodies hostileBodies() {
    Bodies bodies;
    addTruncations(bodies);
    addWrongTypes(bodies);
    addNumbers(bodies);
    addNesting(bodies);
    addTexts(bodies);
    addVersionsAndAddresses(bodies);
    addSizes(bodies);
    return bodies;
}

void expectSound(const UpdateOffer& offer, const std::string& name) {
    EXPECT_EQ(URL::parse(offer.downloadURL.text()), offer.downloadURL) << name;
    EXPECT_TRUE(!offer.size || *offer.size > 0) << name;
    EXPECT_TRUE(std::ranges::all_of(offer.notes, [](const std::string& note) {
        return !note.empty() && utf8::isWellFormed(note);
    })) << name;
}

TEST(HostileFeed, EveryBodyHasItsAnswer) {
    const URL feed = URL::parse("https://example.org/app/feed.json").value();
    const AppVersion current = AppVersion::parse("1.0").value();
    const Bodies bodies = hostileBodies();
    EXPECT_GT(bodies.size(), 400U);
    for (const auto& [name, bytes, answer] : bodies) {
        const auto result = UpdateCheck::evaluate(bytes, feed, current, "uk");
        if (answer == Answer::available) {
            ASSERT_TRUE(result && result->offer()) << name;
            expectSound(*result->offer(), name);
            continue;
        }
        ASSERT_FALSE(result) << name;
        EXPECT_EQ(result.error() == UpdateFeedError::noDownload, answer == Answer::noDownload) << name;
    }
}

TEST(HostileFeed, AFeedWithAnyOneByteChangedIsAnsweredSoundly) {
    const URL feed = URL::parse("https://example.org/app/feed.json").value();
    const AppVersion current = AppVersion::parse("1.0").value();
    for (std::size_t position = 0; position < goodFeed.size(); ++position)
        for (int byte = 0; byte < 256; ++byte) {
            std::string bytes = goodFeed;
            bytes[position] = static_cast<char>(byte);
            const auto result = UpdateCheck::evaluate(bytes, feed, current, "en");
            if (result && result->offer()) expectSound(*result->offer(), bytes);
        }
}

}  // namespace
}  // namespace quillmere
