#include "Packaging/feed/FeedDocument.h"
#include "QuillmereCore/UpdateCheck.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>

namespace quillmere {

namespace {

const Release release{.version = "1.2",
                      .file = "quillmere_1.2-0upstream1_amd64.deb",
                      .size = 1'234'567,
                      .downloads = {},
                      .notes = {"Switches faster.", "Says \"hello\"."},
                      .notesInUkrainian = {"Перемикає швидше."}};

/// What the program offers for the document, in this language.
std::optional<UpdateOffer> offer(const std::string& document, std::string_view language) {
    const auto outcome = UpdateCheck::evaluate(document, URL::parse("https://example.org/app/feed.json").value(),
                                               AppVersion::parse("1.1").value(), language);
    return outcome ? outcome->offer() : std::nullopt;
}

TEST(FeedDocumentTest, IsOfferedByTheProgramAsItWasReleased) {
    const auto document = feedDocument(release);
    ASSERT_TRUE(document) << document.error();
    const auto english = offer(*document, "en");
    ASSERT_TRUE(english);
    EXPECT_EQ(english->version.description(), "1.2");
    EXPECT_EQ(english->size, 1'234'567);
    EXPECT_EQ(english->notes, release.notes);
    EXPECT_EQ(english->downloadURL.text(), "https://example.org/app/downloads/quillmere_1.2-0upstream1_amd64.deb");
    const auto ukrainian = offer(*document, "uk");
    ASSERT_TRUE(ukrainian);
    EXPECT_EQ(ukrainian->notes, release.notesInUkrainian);
}

TEST(FeedDocumentTest, ADownloadThatLiesElsewhereIsOfferedFromThere) {
    Release elsewhere = release;
    elsewhere.downloads = "https://files.example.org/1.2";
    const auto document = feedDocument(elsewhere);
    ASSERT_TRUE(document) << document.error();
    const auto english = offer(*document, "en");
    ASSERT_TRUE(english);
    EXPECT_EQ(english->downloadURL.text(), "https://files.example.org/1.2/quillmere_1.2-0upstream1_amd64.deb");
}

TEST(FeedDocumentTest, WhatTheProgramWouldNotTakeIsNoDocument) {
    struct Case {
        const char* sentence;
        void (*spoil)(Release&);
    };
    const Case cases[] = {
        {"no version", [](Release& each) { each.version = "next"; }},
        {"a version that is nothing", [](Release& each) { each.version = "0"; }},
        {"an empty package", [](Release& each) { each.size = 0; }},
        {"a hidden package", [](Release& each) { each.file = ".deb"; }},
        {"no package", [](Release& each) { each.file.clear(); }},
        {"downloads that are no address", [](Release& each) { each.downloads = "example.org/1.2"; }},
        {"an empty note", [](Release& each) { each.notes.emplace_back(); }},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.sentence);
        Release spoilt = release;
        each.spoil(spoilt);
        EXPECT_FALSE(feedDocument(spoilt));
    }
}

}  // namespace

}  // namespace quillmere
