#include "QuillmereCore/Config.h"

#include <gtest/gtest.h>
#include <boost/json/array.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/value_to.hpp>

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <iterator>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <vector>

namespace quillmere {
namespace {

using Sources = std::vector<std::string>;

constexpr Shortcut controlOptionSpace{Shortcut::space, Modifiers::control | Modifiers::option};

CycleGroup group(std::optional<Shortcut> shortcut, Sources sources) {
    return {makeUUID(), shortcut, std::move(sources)};
}

Config config(std::vector<CycleGroup> groups) {
    return {true, std::move(groups), PlateSettings()};
}

TEST(CycleGroup, AGroupThatWasGivenNoIdentifierHasTheEmptyOne) {
    alignas(CycleGroup) std::byte memory[sizeof(CycleGroup)];
    std::ranges::fill(memory, std::byte{0xA5});
    const auto group = std::unique_ptr<CycleGroup, decltype(&std::destroy_at<CycleGroup>)>(
        new (memory) CycleGroup, &std::destroy_at<CycleGroup>);
    EXPECT_TRUE(group->id.is_nil());
    EXPECT_EQ(group->shortcut, std::nullopt);
    EXPECT_TRUE(group->sourceIDs.empty());
}

/// The cases that other languages' forms of the rule are tried with, too.
boost::json::array nextSourceCases() {
    std::ifstream file(QUILLMERE_NEXT_SOURCE_CASES);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    return boost::json::parse(text).as_array();
}

TEST(CycleGroup, TheNextSourceFollowsTheCurrentOneAndWraps) {
    const boost::json::array cases = nextSourceCases();
    ASSERT_FALSE(cases.empty());
    for (const boost::json::value& given : cases) {
        const auto sources = boost::json::value_to<Sources>(given.at("sources"));
        const auto current = boost::json::value_to<std::optional<std::string>>(given.at("current"));
        const auto next = boost::json::value_to<std::optional<std::string>>(given.at("next"));
        EXPECT_EQ(group(std::nullopt, sources).next(current), next) << given.at("name");
    }
}

TEST(Config, AShortcutFiresItsGroup) {
    const Config given = config({group(Shortcut::fn, {"A", "B"}), group(controlOptionSpace, {"C", "D"})});
    EXPECT_EQ(given.group(controlOptionSpace), &given.groups[1]);
    EXPECT_EQ(given.group(Shortcut::fn), &given.groups[0]);
    EXPECT_EQ(given.target(controlOptionSpace, "C"), "D");
    EXPECT_EQ(given.target(controlOptionSpace, std::nullopt), "C");
    EXPECT_EQ(given.target(Shortcut::fn, "B"), "A");
}

TEST(Config, ASourceOutsideTheGroupIsFollowedByItsFirst) {
    EXPECT_EQ(config({group(Shortcut::fn, {"A", "B"})}).target(Shortcut::fn, "C"), "A");
}

TEST(Config, WhileInactiveNoGroupFires) {
    Config given = config({group(Shortcut::fn, {"A"})});
    given.active = false;
    EXPECT_EQ(given.group(Shortcut::fn), nullptr);
    EXPECT_EQ(given.target(Shortcut::fn, "A"), std::nullopt);
}

TEST(Config, OfTwoGroupsWithOneShortcutTheFirstThatHasSourcesWins) {
    Config given = config({group(Shortcut::fn, {"A"}), group(Shortcut::fn, {"B"})});
    EXPECT_EQ(given.group(Shortcut::fn), &given.groups[0]);
    EXPECT_EQ(given.target(Shortcut::fn, std::nullopt), "A");
    given.groups[0].sourceIDs.clear();
    EXPECT_EQ(given.group(Shortcut::fn), &given.groups[1]);
    EXPECT_EQ(given.target(Shortcut::fn, std::nullopt), "B");
    given.groups[1].sourceIDs.clear();
    EXPECT_EQ(given.group(Shortcut::fn), nullptr);
    EXPECT_EQ(given.target(Shortcut::fn, std::nullopt), std::nullopt);
}

TEST(Config, AGroupWithoutAShortcutNeverFires) {
    const Config given = config({group(std::nullopt, {"A"}), group(Shortcut{}, {"B"})});
    EXPECT_EQ(given.group(Shortcut{}), &given.groups[1]);
    EXPECT_EQ(given.group(Shortcut::fn), nullptr);
}

TEST(Config, ModifiersMustMatchExactly) {
    const Config given = config({group(controlOptionSpace, {"A"})});
    for (std::int64_t bits = 0; bits < 32; ++bits)
        EXPECT_EQ(given.group(Shortcut{Shortcut::space, Modifiers(bits)}) != nullptr, bits == 12) << bits;
    EXPECT_EQ(given.group(Shortcut{48, controlOptionSpace.modifiers}), nullptr);
}

TEST(Config, WithoutGroupsNothingFires) {
    EXPECT_EQ(Config().group(Shortcut::fn), nullptr);
    EXPECT_EQ(Config().target(Shortcut::fn, "A"), std::nullopt);
}

TEST(Config, TheDefaultsBindEverySourceToFnAlone) {
    const std::vector<SourceInfo> available{{"b", "Beta", "be"}, {"a", "Alpha", ""}, {"b", "Beta again", "be"}};
    const Config defaults = Config::defaults(available);
    EXPECT_TRUE(defaults.active);
    ASSERT_EQ(defaults.groups.size(), 1U);
    EXPECT_EQ(defaults.groups[0].shortcut, Shortcut::fn);
    EXPECT_EQ(defaults.groups[0].sourceIDs, (Sources{"b", "a", "b"}));
    EXPECT_EQ(defaults.plate, PlateSettings(PlateVisibility::always));
    EXPECT_EQ(defaults.target(Shortcut::fn, "b"), "a");
}

TEST(Config, TheDefaultsOverNoSourcesNeverFireUntilOneIsAdded) {
    Config defaults = Config::defaults({});
    ASSERT_EQ(defaults.groups.size(), 1U);
    EXPECT_EQ(defaults.groups[0].shortcut, Shortcut::fn);
    EXPECT_TRUE(defaults.groups[0].sourceIDs.empty());
    EXPECT_EQ(defaults.group(Shortcut::fn), nullptr);
    defaults.groups[0].sourceIDs.push_back("A");
    EXPECT_EQ(defaults.target(Shortcut::fn, std::nullopt), "A");
}

TEST(Config, EveryDefaultGroupHasAnIdentifierOfItsOwn) {
    const UUID id = Config::defaults({}).groups[0].id;
    EXPECT_FALSE(id.is_nil());
    EXPECT_NE(Config::defaults({}).groups[0].id, id);
    EXPECT_EQ(id.version(), boost::uuids::uuid::version_random_number_based);
}

TEST(Config, CopiesAreEqualAndIndependent) {
    const Config original = config({group(controlOptionSpace, {"A", "B"}), group(std::nullopt, {})});
    Config copy = original;
    EXPECT_EQ(copy, original);
    copy.groups[0].sourceIDs[0] = "X";
    EXPECT_NE(copy, original);
    EXPECT_EQ(original.groups[0].sourceIDs[0], "A");
}

TEST(Config, ConfigurationsAreEqualFieldByFieldAndInOrder) {
    const Config original = config({group(controlOptionSpace, {"A", "B"}), group(Shortcut::fn, {"C"})});
    const auto differs = [&](const char* what, auto change) {
        Config copy = original;
        change(copy);
        EXPECT_NE(copy, original) << what;
    };
    differs("active", [](Config& copy) { copy.active = false; });
    differs("plate", [](Config& copy) { copy.plate.setOpacity(0.5); });
    differs("one group fewer", [](Config& copy) { copy.groups.pop_back(); });
    differs("the order of the groups", [](Config& copy) { std::swap(copy.groups[0], copy.groups[1]); });
    differs("a group's identifier", [](Config& copy) { copy.groups[0].id = makeUUID(); });
    differs("no shortcut", [](Config& copy) { copy.groups[0].shortcut.reset(); });
    differs("another shortcut", [](Config& copy) { copy.groups[0].shortcut->modifiers.insert(Modifiers::shift); });
    differs("the order of the sources", [](Config& copy) { copy.groups[0].sourceIDs = {"B", "A"}; });
    differs("one source more", [](Config& copy) { copy.groups[0].sourceIDs.push_back("A"); });
}

TEST(SourceInfo, IsEqualOverAllThreeFields) {
    const SourceInfo source{"xkb:ua", "Ukrainian", "uk"};
    EXPECT_EQ(SourceInfo(source), source);
    EXPECT_NE((SourceInfo{"xkb:us", "Ukrainian", "uk"}), source);
    EXPECT_NE((SourceInfo{"xkb:ua", "English", "uk"}), source);
    EXPECT_NE((SourceInfo{"xkb:ua", "Ukrainian", ""}), source);
}

}  // namespace
}  // namespace quillmere
