#include "QuillmereCore/UpdateStore.h"

#include "Tests/Support/MemoryDefaults.h"

#include <gtest/gtest.h>

namespace quillmere {
namespace {

TEST(UpdateStore, ByDefaultChecksAreAutomaticAndNothingElseIsKnown) {
    MemoryDefaults defaults;
    const UpdateStore store(defaults);
    EXPECT_TRUE(store.automatic());
    EXPECT_EQ(store.lastCheck(), std::nullopt);
    EXPECT_EQ(store.skipped(), std::nullopt);
    EXPECT_EQ(defaults.count(), 0U);
}

TEST(UpdateStore, EveryValueIsKeptUnderItsKeyWithItsType) {
    MemoryDefaults defaults;
    UpdateStore store(defaults);
    const Date date(std::chrono::seconds(1'700'000'000));
    store.setAutomatic(false);
    store.setLastCheck(date);
    store.setSkipped(AppVersion::parse(" 1.4.0-beta "));
    EXPECT_EQ(defaults.boolean("updateAutomatic"), false);
    EXPECT_EQ(defaults.date("updateLastCheck"), date);
    EXPECT_EQ(defaults.string("updateSkipped"), "1.4.0-beta");
    EXPECT_EQ(defaults.count(), 3U);
    const UpdateStore second(defaults);
    EXPECT_FALSE(second.automatic());
    EXPECT_EQ(second.lastCheck(), date);
    EXPECT_EQ(second.skipped(), AppVersion::parse("1.4.0-beta"));
}

TEST(UpdateStore, NothingIsCached) {
    MemoryDefaults defaults;
    UpdateStore store(defaults);
    store.setAutomatic(true);
    defaults.setBoolean("updateAutomatic", false);
    EXPECT_FALSE(store.automatic());
    store.setAutomatic(true);
    EXPECT_TRUE(store.automatic());
    EXPECT_EQ(defaults.writes("updateAutomatic"), 3);
}

TEST(UpdateStore, NoneRemovesTheKey) {
    MemoryDefaults defaults;
    UpdateStore store(defaults);
    store.setLastCheck(Date());
    store.setSkipped(AppVersion::parse("1"));
    store.setLastCheck(std::nullopt);
    store.setSkipped(std::nullopt);
    EXPECT_FALSE(defaults.contains("updateLastCheck"));
    EXPECT_FALSE(defaults.contains("updateSkipped"));
    EXPECT_EQ(store.lastCheck(), std::nullopt);
    EXPECT_EQ(store.skipped(), std::nullopt);
}

TEST(UpdateStore, AValueOfAnotherTypeReadsAsNone) {
    MemoryDefaults defaults;
    const UpdateStore store(defaults);
    defaults.setString("updateAutomatic", "false");
    defaults.setString("updateLastCheck", "2024-01-01");
    defaults.setBoolean("updateSkipped", true);
    EXPECT_TRUE(store.automatic());
    EXPECT_EQ(store.lastCheck(), std::nullopt);
    EXPECT_EQ(store.skipped(), std::nullopt);
    defaults.setData("updateAutomatic", "0");
    defaults.setBoolean("updateLastCheck", true);
    defaults.setData("updateSkipped", "1.4");
    EXPECT_TRUE(store.automatic());
    EXPECT_EQ(store.lastCheck(), std::nullopt);
    EXPECT_EQ(store.skipped(), std::nullopt);
}

TEST(UpdateStore, ATextThatIsNoVersionReadsAsNone) {
    MemoryDefaults defaults;
    const UpdateStore store(defaults);
    for (const char* text : {"", "v1", "1.2\n", "latest"}) {
        defaults.setString("updateSkipped", text);
        EXPECT_EQ(store.skipped(), std::nullopt) << text;
        EXPECT_EQ(defaults.string("updateSkipped"), text) << "reading must not change what is stored";
    }
}

}  // namespace
}  // namespace quillmere
