#include "Tests/Desktop/DesktopTest.h"

#include "Tests/Support/SmallDisk.h"

#include <csignal>
#include <fstream>
#include <iterator>

#include <sys/resource.h>

namespace quillmere::support {

namespace {

std::string contents(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

void overwrite(const std::filesystem::path& file, const std::string& bytes) {
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary) << bytes;
}

class StorageTest : public DesktopTest {
protected:
    /// Whether the defaults apply: a lone Fn cycles through all layouts, and
    /// ⌃⌥Space is nobody's.
    void expectDefaults() {
        for (const int group : {1, 2, 0}) {
            typist().tap(keys::fn);
            ASSERT_TRUE(waitForGroup(group));
        }
        pressShortcut();
        waitForEverythingTyped();
        EXPECT_EQ(witness().presses(keys::space), 1U);
        EXPECT_EQ(desktop().server().group(), 0);
    }

    bool showsSettings() { return desktop().connection().visibleWindow("Quillmere").has_value(); }
    /// Starts the program with nothing stored. Its settings come by themselves;
    /// the keyboard is the witness's afterwards.
    void startForTheFirstTime() {
        startWitness();
        ASSERT_NO_FATAL_FAILURE(startProgramWithoutShortcut());
        ASSERT_TRUE(waitUntil([this] { return witness().focusLosses() > 0; }));
        EXPECT_TRUE(showsSettings());
        focusWitness();
    }

    /// Turns switching off or on, and waits until the program has done so.
    void toggleActive(bool isActiveNow) {
        ASSERT_TRUE(tray().click("Active"));
        ASSERT_TRUE(waitUntil([&] { return program().holdsGrab(keys::space, controlAltBits) == isActiveNow; }));
    }
};

struct Malformation {
    const char* name;
    std::string bytes;
    const char* type = "data";
};

class MalformedConfigurationTest : public StorageTest, public testing::WithParamInterface<Malformation> {};

TEST_P(MalformedConfigurationTest, TheDefaultsApplyAndTheBytesStayUntilTheNextChange) {
    startDesktop();
    desktop().settings().set("config", GetParam().bytes, GetParam().type);
    if (GetParam().type == std::string("data")) {
        startWitness();
        ASSERT_NO_FATAL_FAILURE(startProgramWithoutShortcut());
    } else {
        // Under another type it is as good as not there.
        ASSERT_NO_FATAL_FAILURE(startForTheFirstTime());
    }
    ASSERT_NO_FATAL_FAILURE(expectDefaults());
    EXPECT_EQ(storedConfiguration(), GetParam().bytes);
    ASSERT_TRUE(tray().click("Active"));
    EXPECT_TRUE(waitUntilStored(false)) << "stored is " << storedConfiguration();
}

std::vector<Malformation> malformations() {
    const std::string good = configurationText({{.sources = {"xkb:us", "xkb:de"}}});
    const auto replaced = [&good](const std::string& what, const std::string& with) {
        std::string bytes = good;
        return bytes.replace(bytes.find(what), what.size(), with);
    };
    return {
        {"Empty", ""},
        {"NoJson", "layouts = us, de"},
        {"CutOff", good.substr(0, good.size() / 2)},
        {"TextAfterIt", good + "}"},
        {"WithoutActive", replaced(R"("active":true,)", "")},
        {"ActiveIsANumber", replaced("true", "1")},
        {"GroupsAreAnObject", R"({"active":true,"groups":{}})"},
        {"AGroupsIdIsNoUuid", replaced("00000000-0000-4000-8000-000000000000", "first")},
        {"AShortcutLacksItsModifiers", replaced(R"(,"modifiers":12)", "")},
        {"AKeyCodeIsAFraction", replaced("49", "49.5")},
        {"ASourceIsANumber", replaced(R"("xkb:de")", "2")},
        {"InvalidUtf8", replaced("xkb:de", "xkb:\xFF\xFE")},
        {"DeepNesting", std::string(100'000, '[')},
        {"AMegabyteOfJunk", std::string(1'000'000, '\x01')},
        {"StoredAsText", good, "string"},
    };
}

INSTANTIATE_TEST_SUITE_P(Malformations, MalformedConfigurationTest, testing::ValuesIn(malformations()),
                         [](const auto& info) { return info.param.name; });

TEST_F(StorageTest, AnUnreadablePlateLeavesTheRestInForce) {
    startDesktop();
    storeConfiguration(configurationText({{.sources = threeSources}}, true, R"("purple")"));
    startWitness();
    ASSERT_NO_FATAL_FAILURE(startProgram());
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(1));
    EXPECT_TRUE(program().waitForPlate());
}

TEST_F(StorageTest, OnFirstStartTheDefaultsApplyAndNothingIsStored) {
    startDesktop();
    ASSERT_NO_FATAL_FAILURE(startForTheFirstTime());
    ASSERT_NO_FATAL_FAILURE(expectDefaults());
    EXPECT_EQ(desktop().settings().value("config"), std::nullopt);
}

TEST_F(StorageTest, TheSettingsComeByThemselvesAtTheVeryFirstStartOnly) {
    startDesktop();
    ASSERT_NO_FATAL_FAILURE(startForTheFirstTime());
    killProgram();
    ASSERT_TRUE(waitUntil([this] { return !showsSettings() && !tray().hasItem(); }));
    ASSERT_NO_FATAL_FAILURE(startProgramWithoutShortcut());
    typist().tap(keys::fn);
    ASSERT_TRUE(waitForGroup(1)) << "it is up";
    EXPECT_FALSE(showsSettings());
}

class CorruptFileTest : public StorageTest {
protected:
    /// Whether some other file of the folder now holds these bytes.
    bool isSetAside(const std::string& bytes) {
        const StoredSettings settings = desktop().settings();
        for (const auto& entry : std::filesystem::directory_iterator(settings.folder()))
            if (entry.path() != settings.file() && contents(entry.path()).find(bytes) != std::string::npos) return true;
        return false;
    }

    void expectSetAside(const std::string& bytes) {
        ASSERT_NO_FATAL_FAILURE(startForTheFirstTime());
        ASSERT_NO_FATAL_FAILURE(expectDefaults());
        EXPECT_TRUE(isSetAside(bytes));
        ASSERT_TRUE(tray().click("Active"));
        EXPECT_TRUE(waitUntilStored(false));
        EXPECT_TRUE(isSetAside(bytes));
    }
};

TEST_F(CorruptFileTest, AFileThatIsNoStoreIsSetAside) {
    startDesktop();
    const std::string junk(20'000, '\x7F');
    overwrite(desktop().settings().file(), junk);
    expectSetAside(junk);
}

TEST_F(CorruptFileTest, ADamagedStoreIsSetAside) {
    startDesktop();
    storeConfiguration(configurationText({{.sources = threeSources}}));
    std::string bytes = contents(desktop().settings().file());
    ASSERT_GT(bytes.size(), 8000U);
    const std::string damage(3000, '\xA5');
    bytes.replace(4096, damage.size(), damage);
    overwrite(desktop().settings().file(), bytes);
    expectSetAside(damage);
}

TEST_F(CorruptFileTest, AnEmptyFileIsAFirstStart) {
    startDesktop();
    overwrite(desktop().settings().file(), "");
    ASSERT_NO_FATAL_FAILURE(startForTheFirstTime());
    ASSERT_NO_FATAL_FAILURE(expectDefaults());
}

TEST_F(StorageTest, AKillRightAfterAChangeWasStoredLosesNothing) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    bool isActive = true;
    for (int i = 0; i < 5; ++i) {
        isActive = !isActive;
        ASSERT_TRUE(tray().click("Active"));
        ASSERT_TRUE(waitUntilStored(isActive));
        killProgram();
        ASSERT_TRUE(waitUntil([&] { return !tray().hasItem(); }));
        ASSERT_NO_FATAL_FAILURE(startProgramWithoutShortcut());
        tray().openMenu();  // answered once the launch is over
        EXPECT_EQ(program().holdsGrab(keys::space, controlAltBits), isActive);
    }
}

TEST_F(StorageTest, AKillAtAnyMomentLeavesAWholeConfiguration) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    for (int i = 0; i < 12; ++i) {
        ASSERT_TRUE(program().waitForTrayItem());
        tray().clickWithoutWaiting("Active", 40);
        holdsFor([] { return true; }, std::chrono::milliseconds(3 * i));
        killProgram();
        const std::string left = storedConfiguration();
        EXPECT_NE(left.find(R"(["xkb:us","xkb:ua","xkb:de"])"), std::string::npos) << left;
        ASSERT_TRUE(waitUntil([&] { return !tray().hasItem(); }));
        ASSERT_NO_FATAL_FAILURE(startProgramWithoutShortcut());
        const bool isActive = left.find(R"("active":true)") != std::string::npos;
        tray().openMenu();
        EXPECT_EQ(program().holdsGrab(keys::space, controlAltBits), isActive);
    }
}

class HostileDiskTest : public StorageTest {
protected:
    /// What must hold wherever nothing can be written: the stored configuration
    /// applies, a change lasts as long as the program, and a restart finds
    /// what was stored.
    void expectStoredConfigurationSurvives(const Program::Options& options) {
        const std::string before = storedConfiguration();
        startWitness();
        ASSERT_NO_FATAL_FAILURE(startProgram(options));
        ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(1));
        ASSERT_NO_FATAL_FAILURE(toggleActive(false));
        ASSERT_NO_FATAL_FAILURE(toggleActive(true));
        ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(2));
        ASSERT_NO_FATAL_FAILURE(toggleActive(false));
        EXPECT_TRUE(program().process().isRunning());
        killProgram();
        ASSERT_NO_FATAL_FAILURE(startProgram(options));
        ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(0));
        killProgram();
        EXPECT_EQ(storedConfiguration(), before);
    }
};

TEST_F(HostileDiskTest, AProcessThatMayWriteNothingLosesNothing) {
    startDesktop();
    storeConfiguration(configurationText({{.sources = threeSources}}));
    const auto forbidWriting = [] {
        const rlimit nothing{0, 0};
        setrlimit(RLIMIT_FSIZE, &nothing);
        // The kernel's other answer, an error, is the one a full disk gives.
        std::signal(SIGXFSZ, SIG_IGN);
    };
    expectStoredConfigurationSurvives({.additions = {}, .prepare = forbidWriting});
}

TEST_F(HostileDiskTest, AFullDiskLosesNothing) {
    if (!SmallDisk::isAllowed()) GTEST_SKIP() << "only root may mount a disk to fill";
    startDesktop();
    const SmallDisk disk(desktop().configHome(), std::size_t{512} * 1024);
    storeConfiguration(configurationText({{.sources = threeSources}}));
    disk.fill();
    expectStoredConfigurationSurvives({});
}

TEST_F(HostileDiskTest, AReadOnlyDiskLosesNothing) {
    if (!SmallDisk::isAllowed()) GTEST_SKIP() << "only root may mount a disk to make read-only";
    startDesktop();
    const SmallDisk disk(desktop().configHome(), std::size_t{512} * 1024);
    storeConfiguration(configurationText({{.sources = threeSources}}));
    disk.setReadOnly(true);
    startWitness();
    ASSERT_NO_FATAL_FAILURE(startProgram());
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(1));
    ASSERT_NO_FATAL_FAILURE(toggleActive(false));
    ASSERT_NO_FATAL_FAILURE(toggleActive(true));
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(2));
    killProgram();
    disk.setReadOnly(false);
    EXPECT_TRUE(waitUntilStored(true)) << "stored is " << storedConfiguration();
}

TEST_F(HostileDiskTest, ADiskThatFillsUpWhileRunningTakesChangesAgainWhenThereIsRoom) {
    if (!SmallDisk::isAllowed()) GTEST_SKIP() << "only root may mount a disk to fill";
    startDesktop();
    const SmallDisk disk(desktop().configHome(), std::size_t{512} * 1024);
    storeConfiguration(configurationText({{.sources = threeSources}}));
    startWitness();
    ASSERT_NO_FATAL_FAILURE(startProgram());
    disk.fill();
    ASSERT_NO_FATAL_FAILURE(toggleActive(false));
    ASSERT_NO_FATAL_FAILURE(toggleActive(true));
    disk.makeRoom();
    ASSERT_NO_FATAL_FAILURE(toggleActive(false));
    EXPECT_TRUE(waitUntilStored(false)) << "stored is " << storedConfiguration();
}

}  // namespace

}  // namespace quillmere::support
