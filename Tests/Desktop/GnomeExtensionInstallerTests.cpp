#include "Tests/Support/ChildProcess.h"
#include "Tests/Support/SessionBus.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>

// The real installer and the real settings' library, which keeps them in a file
// here; of the shell there is only its word about its version.
namespace quillmere::support {

namespace {

namespace fs = std::filesystem;

class PlayedShell final : public QDBusVirtualObject {
public:
    explicit PlayedShell(const QDBusConnection& bus) : bus_(bus) {
        bus_.registerVirtualObject(QStringLiteral("/org/gnome/Shell"), this);
        bus_.registerService(QStringLiteral("org.gnome.Shell"));
    }
    ~PlayedShell() override { bus_.unregisterObject(QStringLiteral("/org/gnome/Shell")); }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        return connection.send(message.createReply(QVariant::fromValue(QDBusVariant(version))));
    }
    QString introspect(const QString& /*path*/) const override { return {}; }

    QString version = QStringLiteral("43.9");

private:
    QDBusConnection bus_;
};

class GnomeExtensionInstallerTest : public testing::Test {
protected:
    GnomeExtensionInstallerTest() {
        fs::create_directories(installer.parent_path());
        fs::copy_file(fs::path(QUILLMERE_BUILT_PLUGINS) / installer.filename(), installer);
        write(offered / "legacy" / "metadata.json", R"({"shell-version": ["43", "44"]})");
        write(offered / "legacy" / "extension.js", "legacy");
        write(offered / "modern" / "metadata.json", R"({"shell-version": ["48"]})");
        write(offered / "modern" / "extension.js", "modern");
    }

    static void write(const fs::path& file, const std::string& text) {
        fs::create_directories(file.parent_path());
        std::ofstream(file) << text;
    }
    static std::string read(const fs::path& file) {
        std::ifstream stream(file);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    /// Its exit code.
    std::optional<int> run(const char* task) {
        Environment environment = baseEnvironment(folder.path());
        environment["XDG_DATA_HOME"] = folder.path() / "data";
        environment["XDG_CONFIG_HOME"] = folder.path() / "config";
        environment["GSETTINGS_BACKEND"] = "keyfile";
        environment["DBUS_SESSION_BUS_ADDRESS"] = bus.address();
        // It is written on, not anew.
        fs::remove(folder.path() / "output");
        ChildProcess process({.arguments = {installer, task},
                              .environment = environment,
                              .output = folder.path() / "output",
                              .inheritedDescriptors = {},
                              .prepare = {}});
        waitUntil([&] { return !process.isRunning(); });
        output = process.output();
        return process.waitForExit(patience);
    }
    std::string state() {
        EXPECT_EQ(run("state"), 0);
        return output;
    }
    /// What the user has set of the extensions, a line each.
    std::string settings() const { return read(folder.path() / "config/glib-2.0/settings/keyfile"); }
    bool isInSettings(const std::string& line) const { return settings().find(line + '\n') != std::string::npos; }

    TemporaryFolder folder;
    SessionBus bus{folder.makeFolder("session"), baseEnvironment(folder.path())};
    fs::path installer = folder.path() / "installed" / QUILLMERE_PLUGIN_DIR / "quillmere-gnome-extension";
    fs::path offered = folder.path() / "installed" / QUILLMERE_DATA_DIR / "quillmere/gnome-extension";
    fs::path added = folder.path() / "data/gnome-shell/extensions/quillmere@quillmere.org";
    PlayedShell shell{bus.connect()};
    std::string output;
};

TEST_F(GnomeExtensionInstallerTest, AddingAndRemovingLeaveNothingBehindAndTouchNobodyElses) {
    write(
        folder.path() / "config/glib-2.0/settings/keyfile",
        "[org/gnome/shell]\nenabled-extensions=['dock@elsewhere']\ndisabled-extensions=['quillmere@quillmere.org']\n");
    EXPECT_EQ(state(), "absent\n");
    EXPECT_EQ(run("add"), 0);
    EXPECT_EQ(state(), "present\n");
    EXPECT_EQ(read(added / "extension.js"), "legacy");
    EXPECT_TRUE(isInSettings("enabled-extensions=['dock@elsewhere', 'quillmere@quillmere.org']")) << settings();
    EXPECT_FALSE(isInSettings("disabled-extensions=['quillmere@quillmere.org']"));
    EXPECT_EQ(run("remove"), 0);
    EXPECT_EQ(state(), "absent\n");
    EXPECT_TRUE(isInSettings("enabled-extensions=['dock@elsewhere']")) << settings();
    EXPECT_FALSE(fs::exists(added));
    EXPECT_EQ(run("remove"), 0) << "of what is not there";
}

TEST_F(GnomeExtensionInstallerTest, TheFormIsThatOfTheShellThatRuns) {
    shell.version = QStringLiteral("48.1");
    ASSERT_EQ(run("add"), 0);
    EXPECT_EQ(read(added / "extension.js"), "modern");
    shell.version = QStringLiteral("43.9");
    EXPECT_EQ(state(), "other\n") << "since the desktop was renewed";
    EXPECT_EQ(run("add"), 0);
    EXPECT_EQ(read(added / "extension.js"), "legacy");
    EXPECT_EQ(state(), "present\n");
}

TEST_F(GnomeExtensionInstallerTest, OneOfAnotherVersionIsReplacedAsAWhole) {
    ASSERT_EQ(run("add"), 0);
    write(added / "former.js", "of an earlier version");
    EXPECT_EQ(state(), "other\n");
    ASSERT_EQ(run("add"), 0);
    EXPECT_FALSE(fs::exists(added / "former.js"));
    EXPECT_EQ(state(), "present\n");
}

TEST_F(GnomeExtensionInstallerTest, AShellThatItIsNotForGetsNone) {
    shell.version = QStringLiteral("42.1");
    EXPECT_EQ(state(), "unsuitable\n");
    EXPECT_NE(run("add"), 0);
    EXPECT_FALSE(fs::exists(added));
    EXPECT_EQ(settings().find("quillmere"), std::string::npos);
}

}  // namespace

}  // namespace quillmere::support
