#include "Tests/Desktop/SettingsTest.h"

namespace quillmere::support {

namespace {

/// How the settings look, for a person to judge. The pictures are kept.
struct Look {
    const char* name;
    SettingsPortal::Scheme scheme;
    double scale;
};

class SettingsLookTest : public SettingsTest, public testing::WithParamInterface<Look> {
protected:
    std::string pictureName(const std::string& what) const { return std::string(GetParam().name) + "-" + what; }

    void start(const std::string& configuration) {
        startAccessibleDesktop({.screen = QSize(1280, 1100), .scheme = GetParam().scheme});
        storeConfiguration(configuration);
        startWitness();
        setScale(GetParam().scale);
        ASSERT_NO_FATAL_FAILURE(startProgramWithoutShortcut(options()));
        ASSERT_NO_FATAL_FAILURE(openSettings());
        ASSERT_TRUE(waitFor("Add group"));
    }
};

TEST_P(SettingsLookTest, TheTabsTheRecordingAndItsMessages) {
    ASSERT_NO_FATAL_FAILURE(start(configurationText({
        {.keyCode = 63, .modifiers = 0, .sources = {"xkb:us", "xkb:ua", "xkb:de"}},
        {.keyCode = 40, .modifiers = 12, .sources = {"xkb:us", "xkb:cz+qwerty-mac"}},
    })));
    EXPECT_EQ(settingsWindow()->frame.size(), QSize(460, 520) * GetParam().scale);
    keepPicture(pictureName("layouts"));
    ASSERT_NO_FATAL_FAILURE(openMenu("Add source to group 2"));
    keepPicture(pictureName("menu"));
    typist().tap(keys::escape);
    ASSERT_NO_FATAL_FAILURE(startRecording(2, "Ctrl+Alt+K"));
    keepPicture(pictureName("recording"));
    typist().tap(keys::a);
    ASSERT_TRUE(waitFor("Add ⌘, ⌥ or ⌃, or press Fn alone"));
    keepPicture(pictureName("invalid"));
    typist().tap(keys::fn);
    ASSERT_TRUE(waitFor("Already used by another group"));
    keepPicture(pictureName("conflict"));
    typist().tap(keys::escape);
    ASSERT_NO_FATAL_FAILURE(click("General"));
    ASSERT_TRUE(waitFor("Preview"));
    keepPicture(pictureName("general"));
    ASSERT_NO_FATAL_FAILURE(openMenu("Always"));
    keepPicture(pictureName("list"));
}

TEST_P(SettingsLookTest, NothingAndACrowd) {
    ASSERT_NO_FATAL_FAILURE(start(configurationText({}, false)));
    keepPicture(pictureName("empty"));
    std::vector<StoredGroup> crowd;
    for (int i = 0; i < 10; ++i)
        crowd.push_back({.keyCode = i, .modifiers = 15, .sources = {"xkb:us", "xkb:ua", "xkb:de", "xkb:gone"}});
    storeConfiguration(configurationText(crowd));
    ASSERT_NO_FATAL_FAILURE(restartProgram());
    ASSERT_NO_FATAL_FAILURE(openSettings());
    ASSERT_TRUE(waitFor("Delete group 2"));
    keepPicture(pictureName("crowded"));
}

INSTANTIATE_TEST_SUITE_P(Looks, SettingsLookTest,
                         testing::Values(Look{"light-1x", SettingsPortal::Scheme::light, 1},
                                         Look{"light-1.25x", SettingsPortal::Scheme::light, 1.25},
                                         Look{"light-1.5x", SettingsPortal::Scheme::light, 1.5},
                                         Look{"light-2x", SettingsPortal::Scheme::light, 2},
                                         Look{"dark-1x", SettingsPortal::Scheme::dark, 1},
                                         Look{"dark-2x", SettingsPortal::Scheme::dark, 2}),
                         [](const auto& info) {
                             std::string name = info.param.name;
                             std::ranges::replace(name, '-', '_');
                             std::ranges::replace(name, '.', '_');
                             return name;
                         });

}  // namespace

}  // namespace quillmere::support
