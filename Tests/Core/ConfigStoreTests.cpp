#include "QuillmereCore/ConfigStore.h"

#include "Tests/Support/MemoryDefaults.h"

#include <gtest/gtest.h>

namespace quillmere {
namespace {

Config sample() {
    Config config;
    config.active = false;
    config.groups = {{makeUUID(), Shortcut::fn, {"xkb:us", "xkb:ua"}}, {makeUUID(), std::nullopt, {}}};
    config.plate = PlateSettings(PlateVisibility::manyOnly, PlateBackground::solid, 0.1 + 0.2);
    return config;
}

TEST(ConfigStore, AFreshStoreHoldsNothing) {
    MemoryDefaults defaults;
    EXPECT_EQ(ConfigStore(defaults, "config").load(), std::nullopt);
    EXPECT_EQ(defaults.count(), 0U);
    EXPECT_EQ(defaults.writes("config"), 0);
}

TEST(ConfigStore, WhatIsSavedIsLoaded) {
    MemoryDefaults defaults;
    ConfigStore store(defaults, "config");
    const Config config = sample();
    store.save(config);
    EXPECT_EQ(store.load(), config);
    EXPECT_EQ(ConfigStore(defaults, "config").load(), config);
}

TEST(ConfigStore, TheConfigurationIsStoredAsItsJsonUnderItsKeyAlone) {
    MemoryDefaults defaults;
    ConfigStore store(defaults, "config");
    const Config config = sample();
    store.save(config);
    EXPECT_EQ(defaults.data("config"), encodeConfig(config));
    EXPECT_EQ(defaults.count(), 1U);
    EXPECT_EQ(defaults.writes("config"), 1);
}

TEST(ConfigStore, EverySaveReplacesTheOneBefore) {
    MemoryDefaults defaults;
    ConfigStore store(defaults, "config");
    store.save(sample());
    const Config second = Config::defaults({});
    store.save(second);
    EXPECT_EQ(store.load(), second);
    EXPECT_EQ(defaults.writes("config"), 2);
}

TEST(ConfigStore, StoresUnderTwoKeysAreApart) {
    MemoryDefaults defaults;
    ConfigStore(defaults, "other").save(sample());
    EXPECT_EQ(ConfigStore(defaults, "config").load(), std::nullopt);
}

TEST(ConfigStore, WhatCannotBeReadIsNothingAndStaysAsItIs) {
    for (const char* bytes : {"", "junk", "[]", R"({"groups":[]})", R"({"active":true})",
                              R"({"active":true,"groups":[{"id":"x","sourceIDs":[]}]})", "\xFF\xFE"}) {
        MemoryDefaults defaults;
        defaults.setData("config", bytes);
        EXPECT_EQ(ConfigStore(defaults, "config").load(), std::nullopt) << bytes;
        EXPECT_EQ(defaults.data("config"), bytes);
        EXPECT_EQ(defaults.writes("config"), 1) << bytes;
    }
}

TEST(ConfigStore, AnUnreadablePlateGivesWayToTheDefaultOne) {
    MemoryDefaults defaults;
    defaults.setData("config", R"({"active":false,"groups":[],"plate":"glass"})");
    const auto config = ConfigStore(defaults, "config").load();
    ASSERT_TRUE(config);
    EXPECT_FALSE(config->active);
    EXPECT_EQ(config->plate, PlateSettings(PlateVisibility::always));
}

TEST(ConfigStore, AValueOfAnotherTypeIsNothingAndGivesWayToASave) {
    MemoryDefaults defaults;
    ConfigStore store(defaults, "config");
    const Config config = sample();
    defaults.setString("config", encodeConfig(config));
    EXPECT_EQ(store.load(), std::nullopt);
    defaults.setBoolean("config", true);
    EXPECT_EQ(store.load(), std::nullopt);
    defaults.setDate("config", Date());
    EXPECT_EQ(store.load(), std::nullopt);
    store.save(config);
    EXPECT_EQ(store.load(), config);
}

}  // namespace
}  // namespace quillmere
