#include "Quillmere/Platform/Linux/Desktop/SqliteDefaults.h"

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <random>

namespace quillmere {
namespace {

namespace fs = std::filesystem;

class SqliteDefaultsTest : public testing::Test {
protected:
    SqliteDefaultsTest() {
        std::string pattern = (fs::temp_directory_path() / "quillmere-defaults-XXXXXX").string();
        folder = mkdtemp(pattern.data());
        file = folder / "quillmere" / "defaults.sqlite";
    }
    ~SqliteDefaultsTest() override { fs::remove_all(folder); }

    void execute(const char* sql) const {
        sqlite3* database = nullptr;
        ASSERT_EQ(sqlite3_open(file.c_str(), &database), SQLITE_OK);
        ASSERT_EQ(sqlite3_exec(database, sql, nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(database);
        sqlite3_close(database);
    }
    std::vector<std::string> filesSetAside() const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(file.parent_path())) {
            const std::string name = entry.path().filename();
            if (name.find(".corrupt-") != std::string::npos && !name.ends_with("-wal") && !name.ends_with("-shm")) {
                names.push_back(name);
            }
        }
        return names;
    }

    fs::path folder;
    fs::path file;
};

TEST_F(SqliteDefaultsTest, KeepsEachTypeOverARestart) {
    const Date date = Date(std::chrono::seconds(1'700'000'000)) + std::chrono::milliseconds(250);
    {
        SqliteDefaults defaults(file);
        defaults.setData("data", std::string_view("\0\xFF{}", 4));
        defaults.setBoolean("no", false);
        defaults.setBoolean("yes", true);
        defaults.setDate("date", date);
        defaults.setString("string", "Українська");
    }
    const SqliteDefaults defaults(file);
    EXPECT_EQ(defaults.data("data"), std::string("\0\xFF{}", 4));
    EXPECT_EQ(defaults.boolean("no"), false);
    EXPECT_EQ(defaults.boolean("yes"), true);
    EXPECT_EQ(defaults.date("date"), date);
    EXPECT_EQ(defaults.string("string"), "Українська");
}

TEST_F(SqliteDefaultsTest, AMissingKeyHasNoValue) {
    const SqliteDefaults defaults(file);
    EXPECT_EQ(defaults.data("x"), std::nullopt);
    EXPECT_EQ(defaults.boolean("x"), std::nullopt);
    EXPECT_EQ(defaults.date("x"), std::nullopt);
    EXPECT_EQ(defaults.string("x"), std::nullopt);
}

TEST_F(SqliteDefaultsTest, AnotherTypesValueIsNoValue) {
    SqliteDefaults defaults(file);
    defaults.setString("x", "1");
    EXPECT_EQ(defaults.data("x"), std::nullopt);
    EXPECT_EQ(defaults.boolean("x"), std::nullopt);
    EXPECT_EQ(defaults.date("x"), std::nullopt);
    defaults.setBoolean("x", true);
    EXPECT_EQ(defaults.string("x"), std::nullopt);
}

TEST_F(SqliteDefaultsTest, AValueThatBeliesItsTypeIsNoValue) {
    {
        const SqliteDefaults create(file);
    }
    execute(
        "INSERT INTO defaults VALUES('a','data','text'),('b','boolean',2),('c','boolean','1'),('d','date','soon'),"
        "('e','date',1e300),('f','string',x'00'),('g','data',NULL),('h','number',1)");
    const SqliteDefaults defaults(file);
    EXPECT_EQ(defaults.data("a"), std::nullopt);
    EXPECT_EQ(defaults.boolean("b"), std::nullopt);
    EXPECT_EQ(defaults.boolean("c"), std::nullopt);
    EXPECT_EQ(defaults.date("d"), std::nullopt);
    EXPECT_EQ(defaults.date("e"), std::nullopt);
    EXPECT_EQ(defaults.string("f"), std::nullopt);
    EXPECT_EQ(defaults.data("g"), std::nullopt);
    EXPECT_EQ(defaults.boolean("h"), std::nullopt);
}

TEST_F(SqliteDefaultsTest, ARemovedKeyHasNoValue) {
    SqliteDefaults defaults(file);
    defaults.setString("x", "1");
    defaults.remove("x");
    defaults.remove("never there");
    EXPECT_EQ(defaults.string("x"), std::nullopt);
}

TEST_F(SqliteDefaultsTest, AFileThatIsNoDatabaseIsSetAsideUnchanged) {
    fs::create_directories(file.parent_path());
    const std::string junk(5000, 'j');
    std::ofstream(file) << junk;
    {
        SqliteDefaults defaults(file);
        EXPECT_EQ(defaults.data("config"), std::nullopt);
        defaults.setString("x", "new");
        EXPECT_EQ(defaults.string("x"), "new");
    }
    EXPECT_EQ(SqliteDefaults(file).string("x"), "new");
    ASSERT_EQ(filesSetAside().size(), 1U);
    std::ifstream aside(file.parent_path() / filesSetAside().front());
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(aside), {}), junk);
}

TEST_F(SqliteDefaultsTest, EachDamagedFileGetsANameOfItsOwn) {
    fs::create_directories(file.parent_path());
    for (std::size_t count = 1; count <= 3; ++count) {
        std::ofstream(file, std::ios::trunc) << "damage " << count << std::string(2000, '.');
        const SqliteDefaults defaults(file);
        EXPECT_EQ(filesSetAside().size(), count);
    }
}

TEST_F(SqliteDefaultsTest, AnyDamageStartsOrKeepsWorking) {
    std::mt19937 random(7);
    {
        SqliteDefaults defaults(file);
        defaults.setData("config", std::string(20'000, 'c'));
    }
    const auto size = static_cast<std::uint32_t>(fs::file_size(file));
    std::ifstream in(file, std::ios::binary);
    const std::string sound(std::istreambuf_iterator<char>(in), {});
    for (int round = 0; round < 60; ++round) {
        std::string damaged = sound;
        for (int i = 0; i < 40; ++i)
            damaged[random() % size] = static_cast<char>(random());
        if (round % 3 == 0) damaged.resize(random() % size);
        std::ofstream(file, std::ios::binary | std::ios::trunc) << damaged;
        SqliteDefaults defaults(file);
        (void)defaults.data("config");
        defaults.setString("x", std::to_string(round));
        EXPECT_EQ(defaults.string("x"), std::to_string(round));
    }
}

TEST_F(SqliteDefaultsTest, AForeignTableIsSetAside) {
    fs::create_directories(file.parent_path());
    execute("CREATE TABLE defaults(other)");
    SqliteDefaults defaults(file);
    defaults.setString("x", "1");
    EXPECT_EQ(defaults.string("x"), "1");
    EXPECT_EQ(filesSetAside().size(), 1U);
}

TEST_F(SqliteDefaultsTest, AStoreLockedByAnotherProgramIsNotTakenForDamaged) {
    {
        SqliteDefaults defaults(file);
        defaults.setString("x", "kept");
    }
    sqlite3* other = nullptr;
    ASSERT_EQ(sqlite3_open(file.c_str(), &other), SQLITE_OK);
    ASSERT_EQ(
        sqlite3_exec(other, "PRAGMA locking_mode=EXCLUSIVE; BEGIN EXCLUSIVE; DELETE FROM defaults WHERE key='none'",
                     nullptr, nullptr, nullptr),
        SQLITE_OK);
    SqliteDefaults defaults(file);
    defaults.setString("y", "later");
    EXPECT_EQ(defaults.string("y"), "later");
    sqlite3_exec(other, "COMMIT", nullptr, nullptr, nullptr);
    sqlite3_close(other);
    EXPECT_TRUE(filesSetAside().empty());
    defaults.setString("z", "now");
    EXPECT_EQ(SqliteDefaults(file).string("x"), "kept");
    EXPECT_EQ(SqliteDefaults(file).string("y"), "later");
    EXPECT_EQ(SqliteDefaults(file).string("z"), "now");
}

TEST_F(SqliteDefaultsTest, AMediumThatTakesNothingKeepsTheValuesInMemoryUntilItDoes) {
    // A plain file where the folder should be: no write can succeed, whoever asks.
    std::ofstream(folder / "quillmere") << "in the way";
    SqliteDefaults defaults(file);
    defaults.setString("x", "kept");
    defaults.setBoolean("y", true);
    EXPECT_EQ(defaults.string("x"), "kept");
    EXPECT_EQ(defaults.boolean("y"), true);
    fs::remove(folder / "quillmere");
    fs::create_directories(file.parent_path());
    defaults.remove("y");
    const SqliteDefaults later(file);
    EXPECT_EQ(later.string("x"), "kept");
    EXPECT_EQ(later.boolean("y"), std::nullopt);
}

/// Takes the right to write a folder and its files away, as long as it lives.
class ReadOnlyFolder {
public:
    explicit ReadOnlyFolder(fs::path folder) : folder_(std::move(folder)) {
        for (const auto& entry : fs::directory_iterator(folder_))
            fs::permissions(entry.path(), fs::perms(0444));
        fs::permissions(folder_, fs::perms(0555));
        // The superuser may write all the same.
        if (user_ == 0) {
            EXPECT_EQ(seteuid(nobody), 0);
        }
    }
    ~ReadOnlyFolder() {
        EXPECT_EQ(seteuid(user_), 0);
        fs::permissions(folder_, fs::perms(0755));
    }
    ReadOnlyFolder(const ReadOnlyFolder&) = delete;
    ReadOnlyFolder& operator=(const ReadOnlyFolder&) = delete;

private:
    static constexpr uid_t nobody = 65534;
    fs::path folder_;
    uid_t user_ = geteuid();
};

TEST_F(SqliteDefaultsTest, AFolderThatTakesNothingIsReadWhateverItsName) {
    fs::permissions(folder, fs::perms(0755));
    for (const char* name : {"plain", "what?", "100%", "a%20b", "c#", "?mode=memory", "#?%"}) {
        const fs::path odd = folder / name / "defaults.sqlite";
        SqliteDefaults(odd).setString("key", name);
        const ReadOnlyFolder readOnly(odd.parent_path());
        const SqliteDefaults defaults(odd);
        EXPECT_EQ(defaults.string("key"), name);
    }
}

TEST_F(SqliteDefaultsTest, AFullDiskLosesNothingThatWasStored) {
    {
        SqliteDefaults defaults(file);
        defaults.setData("config", std::string(1000, 'a'));
    }
    const pid_t child = fork();
    if (child == 0) {
        // The limit makes every growing write fail, as a full disk does.
        std::signal(SIGXFSZ, SIG_IGN);
        SqliteDefaults defaults(file);
        const rlimit limit{65'536, 65'536};
        setrlimit(RLIMIT_FSIZE, &limit);
        defaults.setData("config", std::string(2'000'000, 'b'));
        const bool visible = defaults.data("config") == std::string(2'000'000, 'b');
        _exit(visible ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0) << "the new value must last until the program ends";
    EXPECT_EQ(SqliteDefaults(file).data("config"), std::string(1000, 'a'));
}

TEST_F(SqliteDefaultsTest, AKilledProcessLosesNothingItHadSaved) {
    for (int round = 0; round < 10; ++round) {
        int channel[2];
        ASSERT_EQ(pipe(channel), 0);
        const pid_t child = fork();
        if (child == 0) {
            SqliteDefaults defaults(file);
            for (int value = 0;; ++value) {
                defaults.setData("config", std::to_string(value));
                if (write(channel[1], &value, sizeof value) != sizeof value) _exit(1);
            }
        }
        ::close(channel[1]);
        int reported = -1;
        for (int i = 0; i <= round * 7; ++i)
            ASSERT_EQ(read(channel[0], &reported, sizeof reported), ssize_t{sizeof reported});
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        while (read(channel[0], &reported, sizeof reported) == sizeof reported)
            continue;
        ::close(channel[0]);
        const int stored = std::stoi(SqliteDefaults(file).data("config").value());
        EXPECT_GE(stored, reported) << "a value whose write had returned was lost";
    }
}

TEST_F(SqliteDefaultsTest, TheStandardFileFollowsTheBaseDirectories) {
    const auto with = [](const char* variable, const char* value) {
        value == nullptr ? unsetenv(variable) : setenv(variable, value, 1);
    };
    const char* oldConfig = std::getenv("XDG_CONFIG_HOME");
    const std::string config = oldConfig == nullptr ? "" : oldConfig;
    const std::string home = std::getenv("HOME");
    with("HOME", "/home/u");
    with("XDG_CONFIG_HOME", "/somewhere");
    EXPECT_EQ(SqliteDefaults::standardFile(), "/somewhere/quillmere/defaults.sqlite");
    for (const char* unusable : {static_cast<const char*>(nullptr), "", "relative"}) {
        with("XDG_CONFIG_HOME", unusable);
        EXPECT_EQ(SqliteDefaults::standardFile(), "/home/u/.config/quillmere/defaults.sqlite");
    }
    with("HOME", home.c_str());
    with("XDG_CONFIG_HOME", oldConfig == nullptr ? nullptr : config.c_str());
}

}  // namespace
}  // namespace quillmere
