#include "Quillmere/Switching/InputSources.h"
#include "Tests/Support/FakeInputSourceService.h"

#include <gtest/gtest.h>

namespace quillmere {
namespace {

std::vector<std::string> ids(const std::vector<SourceInfo>& sources) {
    std::vector<std::string> result;
    for (const SourceInfo& source : sources)
        result.push_back(source.id);
    return result;
}

TEST(InputSources, ASourceWithoutANameIsNamedByItsIdentifier) {
    FakeInputSourceService service;
    service.records = {layout("xkb:us")};
    EXPECT_EQ(InputSources(service).available(), (std::vector<SourceInfo>{{"xkb:us", "xkb:us", ""}}));
}

TEST(InputSources, ASourceWithoutLanguagesHasAnEmptyOne) {
    FakeInputSourceService service;
    service.records = {layout("xkb:us", "English")};
    EXPECT_EQ(InputSources(service).available().at(0).language, "");
}

TEST(InputSources, TheFirstLanguageCounts) {
    FakeInputSourceService service;
    service.records = {layout("xkb:ch", "Swiss")};
    service.records[0].languages = {"de", "fr"};
    EXPECT_EQ(InputSources(service).available().at(0).language, "de");
}

TEST(InputSources, KeepsThePlatformsOrderAndItsDuplicates) {
    FakeInputSourceService service;
    service.records = {layout("b", "Zulu"), layout("a", "Afrikaans"), layout("b", "Zulu")};
    EXPECT_EQ(ids(InputSources(service).available()), (std::vector<std::string>{"b", "a", "b"}));
}

TEST(InputSources, ListsOnlyWhatCanBeSwitchedTo) {
    FakeInputSourceService service;
    service.records = {layout("layout"),
                       layout("mode"),
                       layout("palette"),
                       layout("untyped"),
                       layout("disabled"),
                       layout("unselectable"),
                       {.type = InputSourceType::keyboardLayout}};
    service.records[1].type = InputSourceType::keyboardInputMode;
    service.records[2].type = InputSourceType::other;
    service.records[3].type.reset();
    service.records[4].enabled = false;
    service.records[5].selectCapable = false;
    EXPECT_EQ(ids(InputSources(service).available()), (std::vector<std::string>{"layout", "mode"}));
}

TEST(InputSources, SelectsTheFirstSourceWithTheIdentifier) {
    FakeInputSourceService service;
    service.records = {layout("a", "first"), layout("a", "second"), layout("b")};
    EXPECT_TRUE(InputSources(service).select("a"));
    EXPECT_EQ(service.selected, std::vector<std::string>{"a"});
}

TEST(InputSources, ADisabledSourceIsRefusedWithoutAskingThePlatform) {
    FakeInputSourceService service;
    service.records = {layout("a"), layout("b")};
    service.records[1].enabled = false;
    EXPECT_FALSE(InputSources(service).select("b"));
    EXPECT_FALSE(InputSources(service).select("unknown"));
    EXPECT_FALSE(InputSources(service).select(""));
    EXPECT_TRUE(service.selected.empty());
}

TEST(InputSources, SelectingTheCurrentSourceStillAsksThePlatform) {
    FakeInputSourceService service;
    service.records = {layout("a")};
    service.current = "a";
    EXPECT_TRUE(InputSources(service).select("a"));
    EXPECT_EQ(service.selected.size(), 1U);
    service.status = -50;
    EXPECT_FALSE(InputSources(service).select("a"));
    EXPECT_EQ(service.selected.size(), 2U);
}

TEST(InputSources, ReportsTheCurrentSourceOrNone) {
    FakeInputSourceService service;
    EXPECT_EQ(InputSources(service).currentID(), std::nullopt);
    service.current = "a";
    EXPECT_EQ(InputSources(service).currentID(), "a");
}

}  // namespace
}  // namespace quillmere
