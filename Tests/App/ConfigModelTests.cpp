#include "Quillmere/ConfigModel.h"
#include "Tests/Support/FakeInputSourceService.h"
#include "Tests/Support/MemoryDefaults.h"

#include <gtest/gtest.h>

namespace quillmere {
namespace {

constexpr Shortcut commandK{40, Modifiers::command};

class ConfigModelTest : public testing::Test {
protected:
    ConfigModelTest() { service.records = {layout("a", "Alpha"), layout("b", "Beta")}; }

    MemoryDefaults defaults;
    FakeInputSourceService service;
};

TEST_F(ConfigModelTest, AFreshStartHasTheDefaultsAndStoresNothing) {
    const ConfigModel model(defaults, InputSources(service));
    ASSERT_EQ(model.config().groups.size(), 1U);
    EXPECT_TRUE(model.config().active);
    EXPECT_EQ(model.config().groups[0].shortcut, Shortcut::fn);
    EXPECT_EQ(model.config().groups[0].sourceIDs, (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(model.config().plate, PlateSettings());
    EXPECT_EQ(defaults.writes("config"), 0);
}

TEST_F(ConfigModelTest, AStoredConfigurationIsTaken) {
    const Config stored{false, {{makeUUID(), commandK, {"b"}}}, PlateSettings(PlateVisibility::manyOnly)};
    defaults.setData("config", encodeConfig(stored));
    EXPECT_EQ(ConfigModel(defaults, InputSources(service)).config(), stored);
}

TEST_F(ConfigModelTest, AnUnreadableConfigurationGivesWayToTheDefaultsAndStaysStored) {
    defaults.setData("config", "{\"groups\":[]}");
    const ConfigModel model(defaults, InputSources(service));
    EXPECT_EQ(model.config().groups.size(), 1U);
    EXPECT_EQ(defaults.data("config"), "{\"groups\":[]}");
}

TEST_F(ConfigModelTest, EveryAssignmentIsStoredEvenOfTheSameValue) {
    ConfigModel model(defaults, InputSources(service));
    const Config same = model.config();
    model.setConfig(same);
    model.setConfig(same);
    EXPECT_EQ(defaults.writes("config"), 2);
    EXPECT_EQ(decodeConfig(defaults.data("config").value()), same);
}

TEST_F(ConfigModelTest, ObserversSeeTheNewValueAndMayChangeItOnceMore) {
    ConfigModel model(defaults, InputSources(service));
    int notifications = 0;
    QObject::connect(&model, &ConfigModel::configChanged, &model, [&] {
        ++notifications;
        Config config = model.config();
        if (!config.active) return;
        config.active = false;
        model.setConfig(config);
    });
    model.setConfig(model.config());
    EXPECT_EQ(notifications, 2);
    EXPECT_FALSE(decodeConfig(defaults.data("config").value())->active) << "the last value must be the stored one";
}

TEST_F(ConfigModelTest, ASnapshotStaysAsItWas) {
    ConfigModel model(defaults, InputSources(service));
    const std::shared_ptr<const Config> before = model.snapshot();
    model.setConfig({});
    EXPECT_EQ(before->groups.size(), 1U);
    EXPECT_TRUE(model.snapshot()->groups.empty());
}

TEST_F(ConfigModelTest, ASourceIsNamedOrShownByItsIdentifier) {
    const ConfigModel model(defaults, InputSources(service));
    EXPECT_EQ(model.name("b"), "Beta");
    EXPECT_EQ(model.name("gone"), "gone");
}

TEST_F(ConfigModelTest, ASecondRecordingReplacesTheFirst) {
    ConfigModel model(defaults, InputSources(service));
    int first = 0;
    int second = 0;
    const UUID other = makeUUID();
    model.startRecording(makeUUID(), [&](std::int64_t, Modifiers) { ++first; });
    model.startRecording(other, [&](std::int64_t, Modifiers) { ++second; });
    model.recorder()(0, {});
    EXPECT_EQ(first, 0);
    EXPECT_EQ(second, 1);
    EXPECT_EQ(model.recordingGroup(), other);
}

TEST_F(ConfigModelTest, EndingARecordingIsToldOnce) {
    ConfigModel model(defaults, InputSources(service));
    int changes = 0;
    QObject::connect(&model, &ConfigModel::recordingChanged, &model, [&] { ++changes; });
    model.startRecording(makeUUID(), [](std::int64_t, Modifiers) {});
    model.endRecording();
    model.endRecording();
    EXPECT_EQ(changes, 2);
    EXPECT_FALSE(model.recorder());
    EXPECT_FALSE(model.recordingGroup().has_value());
}

TEST_F(ConfigModelTest, OfInterestAreTheShortcutsThatCanFire) {
    ConfigModel model(defaults, InputSources(service));
    const Shortcut unused{1, Modifiers::command};
    model.setConfig({true,
                     {{makeUUID(), Shortcut::fn, {"a"}},
                      {makeUUID(), commandK, {}},
                      {makeUUID(), commandK, {"a", "b"}},
                      {makeUUID(), commandK, {"b"}},
                      {makeUUID(), std::nullopt, {"a"}},
                      {makeUUID(), unused, {}}},
                     {}});
    EXPECT_EQ(model.interest(), (KeyInterest{.shortcuts = {Shortcut::fn, commandK}}));
    EXPECT_EQ(model.armedShortcuts(), (std::vector<ArmedShortcut>{{Shortcut::fn, {"a"}}, {commandK, {"a", "b"}}}));
}

TEST_F(ConfigModelTest, SwitchedOffNothingIsOfInterestUnlessRecording) {
    ConfigModel model(defaults, InputSources(service));
    Config config = model.config();
    config.active = false;
    model.setConfig(config);
    EXPECT_EQ(model.interest(), KeyInterest{});
    model.startRecording(makeUUID(), [](std::int64_t, Modifiers) {});
    EXPECT_TRUE(model.interest().everyKey);
}

}  // namespace
}  // namespace quillmere
