#include "Quillmere/Platform/Linux/Desktop/Gnome/GnomeExtensionOffer.h"
#include "Tests/Support/GnomeShell.h"
#include "Tests/Support/OrdinaryUser.h"
#include "Tests/Support/OwnVariable.h"
#include "Tests/Support/SessionBus.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/WaitUntil.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <list>
#include <memory>
#include <optional>

namespace quillmere::support {

namespace {

namespace fs = std::filesystem;

constexpr const char* toAdd = "Add Extension";
constexpr const char* toReplace = "Replace Extension";
constexpr const char* toRemove = "Remove Extension";

/// The offer and the real installer, on a stock desktop of GNOME.
class GnomeExtensionOfferTest : public testing::Test {
protected:
    GnomeExtensionOfferTest() {
        for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR",
                                 "DBUS_SESSION_BUS_ADDRESS", "GSETTINGS_BACKEND"})
            variables.emplace_back(name, shell.environment().at(name));
        // Where the desktop's user may read them, and in the same places to each other.
        fs::create_directories(installer.parent_path());
        fs::copy_file(fs::path(QUILLMERE_BUILT_PLUGINS) / installer.filename(), installer);
        fs::create_directories(offered);
        fs::copy(QUILLMERE_GNOME_EXTENSION, offered, fs::copy_options::recursive);
        openOffer();
    }

    void SetUp() override {
        if (!shell.fits(offered)) GTEST_SKIP() << "The extension is for no GNOME " << shell.version();
    }

    void openOffer() {
        const fs::path program = programOfOrdinaryUser(installer, folder.path() / "installer");
        offer = std::make_unique<GnomeExtensionOffer>(connection, QString::fromStdString(program));
    }
    bool waitForAction(const char* action) const {
        return waitUntil([&] { return offer->action() == action; });
    }
    std::string enabled() const { return shell.setting("org.gnome.shell", "enabled-extensions"); }

    TemporaryFolder folder;
    Environment environment = baseEnvironment(folder.makeFolder("home").string());
    SessionBus bus{folder.makeFolder("session"), environment};
    QDBusConnection connection = bus.connect();
    GnomeShell shell{folder.path(), environment, bus, {}};
    fs::path installer = folder.path() / "installed" / QUILLMERE_PLUGIN_DIR / "quillmere-gnome-extension";
    fs::path offered = folder.path() / "installed" / QUILLMERE_DATA_DIR / "quillmere" / "gnome-extension";
    fs::path unpacked = shell.extensionsFolder() / GnomeShell::extensionName;
    std::list<OwnVariable> variables;
    std::unique_ptr<GnomeExtensionOffer> offer;
};

TEST_F(GnomeExtensionOfferTest, TheExtensionIsAddedAndLiveAfterTheNextLoginAndTakenAway) {
    EXPECT_FALSE(offer->isOpen()) << "nothing is known yet";
    ASSERT_TRUE(waitForAction(toAdd));
    EXPECT_TRUE(offer->isOpen());
    offer->accept();
    ASSERT_TRUE(waitForAction(toRemove));
    EXPECT_TRUE(offer->text().contains("log out and in once"));
    EXPECT_EQ(enabled(), "['quillmere@quillmere.org']");

    shell.process().kill();
    shell.start();
    EXPECT_TRUE(waitUntil([this] { return offer->text().contains("GNOME switches by itself"); }));

    offer->accept();
    ASSERT_TRUE(waitForAction(toAdd));
    EXPECT_FALSE(fs::exists(unpacked));
    EXPECT_EQ(enabled(), "@as []");
}

TEST_F(GnomeExtensionOfferTest, OneOfAnotherVersionIsReplaced) {
    ASSERT_TRUE(waitForAction(toAdd));
    offer->accept();
    ASSERT_TRUE(waitForAction(toRemove));
    std::ofstream(unpacked / "rule.js") << "of another version";
    openOffer();
    ASSERT_TRUE(waitForAction(toReplace));
    offer->accept();
    ASSERT_TRUE(waitForAction(toRemove));
    EXPECT_GT(fs::file_size(unpacked / "rule.js"), 100U);
}

}  // namespace

}  // namespace quillmere::support
