#include "QuillmereCore/PlateSettings.h"

#include "QuillmereCore/JsonValue.h"

#include <gtest/gtest.h>
#include <boost/json/serialize.hpp>

#include <array>
#include <limits>
#include <string>
#include <utility>

namespace quillmere {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

const PlateSettings defaultSettings(PlateVisibility::always);

std::optional<PlateSettings> decoded(std::string_view text) {
    return decodePlateSettings(json::parse(text).value());
}

PlateSettings settings(std::optional<PlateBackground> background, std::optional<double> opacity) {
    return PlateSettings(PlateVisibility::always, background, opacity);
}

TEST(PlateSettings, ClampKeepsAnOpacityBetweenZeroAndOne) {
    const struct {
        double value;
        double clamped;
    } cases[] = {
        {notANumber, 0.8}, {-notANumber, 0.8}, {-0.5, 0.0}, {0.0, 0.0},      {5e-324, 5e-324}, {0.35, 0.35},
        {1.0, 1.0},        {1.0000001, 1.0},   {1.5, 1.0},  {infinity, 1.0}, {-infinity, 0.0},
    };
    for (const auto& [value, clamped] : cases)
        EXPECT_EQ(PlateSettings::clamp(value), clamped) << value;
}

TEST(PlateSettings, ClampTurnsNegativeZeroIntoZero) {
    EXPECT_FALSE(std::signbit(PlateSettings::clamp(-0.0)));
}

TEST(PlateSettings, ASetOpacityIsClampedAndAnUnsetOneStaysUnset) {
    PlateSettings changing = defaultSettings;
    EXPECT_EQ(changing.opacity(), std::nullopt);
    changing.setOpacity(2.0);
    EXPECT_EQ(changing.opacity(), 1.0);
    changing.setOpacity(notANumber);
    EXPECT_EQ(changing.opacity(), 0.8);
    changing.setOpacity(0.25);
    EXPECT_EQ(changing.opacity(), 0.25);
    changing.setOpacity(std::nullopt);
    EXPECT_EQ(changing.opacity(), std::nullopt);
    EXPECT_EQ(settings(std::nullopt, -3.0).opacity(), 0.0);
}

TEST(PlateSettings, TheDefaultsAreAlwaysShownAndUnset) {
    EXPECT_EQ(defaultSettings.visibility, PlateVisibility::always);
    EXPECT_EQ(defaultSettings.background, std::nullopt);
    EXPECT_EQ(defaultSettings.opacity(), std::nullopt);
    EXPECT_EQ(PlateSettings(), defaultSettings);
}

TEST(PlateSettings, TheBackgroundInEffectDecidesTheOpacity) {
    constexpr PlateBackground solid = PlateBackground::solid;
    constexpr PlateBackground glass = PlateBackground::glass;
    const struct {
        std::optional<PlateBackground> background;
        std::optional<double> opacity;
        bool glassAvailable;
        PlateBackground resolvedBackground;
        double resolvedOpacity;
    } cases[] = {
        {std::nullopt, std::nullopt, false, solid, 0.8},
        {std::nullopt, std::nullopt, true, glass, 0.7},
        {std::nullopt, 0.5, false, solid, 0.5},
        {std::nullopt, 0.5, true, glass, 0.7},
        {solid, std::nullopt, false, solid, 0.8},
        {solid, std::nullopt, true, solid, 0.8},
        {solid, 0.5, false, solid, 0.5},
        {solid, 0.5, true, solid, 0.5},
        {solid, 0.0, true, solid, 0.0},
        {glass, std::nullopt, false, glass, 0.7},
        {glass, 0.5, false, glass, 0.7},
        {glass, 0.5, true, glass, 0.7},
    };
    for (const auto& row : cases) {
        const PlateSettings plate = settings(row.background, row.opacity);
        const std::string name = boost::json::serialize(encode(plate)) + (row.glassAvailable ? " with glass" : "");
        EXPECT_EQ(plate.resolvedBackground(row.glassAvailable), row.resolvedBackground) << name;
        EXPECT_EQ(plate.resolvedOpacity(row.glassAvailable), row.resolvedOpacity) << name;
    }
}

TEST(PlateSettings, ManyOnlyHidesThePlateForFewerThanThreeSources) {
    const PlateSettings manyOnly(PlateVisibility::manyOnly);
    for (const std::size_t few : {0U, 1U, 2U})
        EXPECT_FALSE(manyOnly.shouldShow(few)) << few;
    for (const std::size_t many : {3U, 4U, 100U})
        EXPECT_TRUE(manyOnly.shouldShow(many)) << many;
    for (const std::size_t any : {0U, 1U, 2U, 3U})
        EXPECT_TRUE(defaultSettings.shouldShow(any)) << any;
}

TEST(PlateSettings, TheCasesHaveTheirOrderAndTheirStoredTexts) {
    constexpr std::pair<PlateVisibility, const char*> visibilities[] = {
        {PlateVisibility::always, "always"},
        {PlateVisibility::manyOnly, "manyOnly"},
    };
    constexpr std::pair<PlateBackground, const char*> backgrounds[] = {
        {PlateBackground::solid, "solid"},
        {PlateBackground::glass, "glass"},
    };
    EXPECT_TRUE(PlateVisibility::allCases == (std::array{PlateVisibility::always, PlateVisibility::manyOnly}));
    EXPECT_TRUE(PlateBackground::allCases == (std::array{PlateBackground::solid, PlateBackground::glass}));
    for (const auto& [visibility, text] : visibilities) {
        EXPECT_EQ(visibility.rawValue(), text);
        EXPECT_EQ(PlateVisibility::fromRawValue(text), visibility);
    }
    for (const auto& [background, text] : backgrounds) {
        EXPECT_EQ(background.rawValue(), text);
        EXPECT_EQ(PlateBackground::fromRawValue(text), background);
    }
    for (const char* unknown : {"", "Always", "manyonly", "solid ", "never"}) {
        EXPECT_FALSE(PlateVisibility::fromRawValue(unknown)) << unknown;
        EXPECT_FALSE(PlateBackground::fromRawValue(unknown)) << unknown;
    }
}

TEST(PlateSettings, SettingsAreEqualFieldByField) {
    const PlateSettings one(PlateVisibility::manyOnly, PlateBackground::solid, 0.5);
    const PlateSettings copy = one;
    EXPECT_EQ(copy, one);
    EXPECT_NE(PlateSettings(PlateVisibility::always, PlateBackground::solid, 0.5), one);
    EXPECT_NE(PlateSettings(PlateVisibility::manyOnly, PlateBackground::glass, 0.5), one);
    EXPECT_NE(PlateSettings(PlateVisibility::manyOnly, std::nullopt, 0.5), one);
    EXPECT_NE(PlateSettings(PlateVisibility::manyOnly, PlateBackground::solid, 0.25), one);
    EXPECT_NE(PlateSettings(PlateVisibility::manyOnly, PlateBackground::solid), one);
}

TEST(PlateSettings, EncodingWritesOnlyWhatIsSet) {
    EXPECT_EQ(boost::json::serialize(encode(defaultSettings)), R"({"visibility":"always"})");
    EXPECT_EQ(encode(PlateSettings(PlateVisibility::manyOnly, PlateBackground::glass, 0.5)),
              json::parse(R"({"visibility":"manyOnly","background":"glass","opacity":0.5})").value());
}

TEST(PlateSettings, SettingsSurviveTheirJsonForm) {
    for (const PlateVisibility visibility : PlateVisibility::allCases)
        for (const auto background :
             {std::optional<PlateBackground>(), std::optional<PlateBackground>(PlateBackground::solid),
              std::optional<PlateBackground>(PlateBackground::glass)})
            for (const auto opacity : {std::optional<double>(), std::optional(0.0), std::optional(0.1 + 0.2),
                                       std::optional(0.35), std::optional(1.0)}) {
                const PlateSettings plate(visibility, background, opacity);
                EXPECT_EQ(decoded(boost::json::serialize(encode(plate))), plate);
            }
}

TEST(PlateSettings, DecodingIsForgivingKeyByKey) {
    constexpr PlateVisibility always = PlateVisibility::always;
    constexpr PlateVisibility manyOnly = PlateVisibility::manyOnly;
    constexpr PlateBackground solid = PlateBackground::solid;
    constexpr PlateBackground glass = PlateBackground::glass;
    const struct {
        const char* text;
        PlateSettings settings;
    } cases[] = {
        {R"({})", defaultSettings},
        {R"({"unknown":1})", defaultSettings},
        {R"({"visibility":"sometimes","opacity":3})", PlateSettings(always, std::nullopt, 1.0)},
        {R"({"visibility":"manyOnly"})", PlateSettings(manyOnly)},
        {R"({"visibility":null,"background":"glass"})", PlateSettings(always, glass)},
        {R"({"visibility":1,"background":"solid"})", PlateSettings(always, solid)},
        {R"({"visibility":["manyOnly"],"background":{"solid":1}})", defaultSettings},
        {R"({"visibility":"manyOnly","background":"paper","opacity":0.5})", PlateSettings(manyOnly, std::nullopt, 0.5)},
        {R"({"visibility":"manyOnly","background":null,"opacity":null})", PlateSettings(manyOnly)},
        {R"({"background":true,"opacity":"0.5"})", defaultSettings},
        {R"({"background":"","opacity":true})", defaultSettings},
        {R"({"opacity":[0.5]})", defaultSettings},
        {R"({"opacity":0})", PlateSettings(always, std::nullopt, 0.0)},
        {R"({"opacity":-0.0})", PlateSettings(always, std::nullopt, 0.0)},
        {R"({"opacity":1})", PlateSettings(always, std::nullopt, 1.0)},
        {R"({"opacity":-7})", PlateSettings(always, std::nullopt, 0.0)},
        {R"({"opacity":0.35})", PlateSettings(always, std::nullopt, 0.35)},
        {R"({"opacity":18446744073709551615})", PlateSettings(always, std::nullopt, 1.0)},
        {R"({"opacity":1e400})", PlateSettings(always, std::nullopt, 1.0)},
        {R"({"opacity":-1e400})", PlateSettings(always, std::nullopt, 0.0)},
        {R"({"opacity":1e99999999999})", PlateSettings(always, std::nullopt, 1.0)},
        {R"({"opacity":0.2,"opacity":"x"})", defaultSettings},
    };
    for (const auto& [text, settings] : cases)
        EXPECT_EQ(decoded(text), settings) << text;
}

TEST(PlateSettings, OnlyAnObjectDecodes) {
    for (const char* text : {"\"always\"", "[]", "[{}]", "1", "true", "null"})
        EXPECT_FALSE(decoded(text)) << text;
}

}  // namespace
}  // namespace quillmere
