#include "Quillmere/Platform/Linux/Desktop/Gnome/GnomeTrayHost.h"
#include "Tests/App/FakeGnome.h"
#include "Tests/Support/SessionBus.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/WaitUntil.h"

#include <gtest/gtest.h>

#include <QAction>

#include <optional>
#include <string>
#include <vector>

namespace quillmere {

namespace {

using support::waitUntil;

class GnomeTrayHostTest : public testing::Test {
protected:
    GnomeTrayHostTest() {
        gnome.startShell();
        for (const char* name : {"active", "quit", ""}) {
            QAction* const entry = menu.addAction(QString::fromLatin1(name).toUpper());
            entry->setObjectName(QString::fromLatin1(name));
            QObject::connect(entry, &QAction::triggered, entry, [this, name] { chosen.emplace_back(name); });
        }
    }

    bool waitForIndicator(const char* text) {
        return waitUntil([&] { return gnome.indicator() == QLatin1String(text); });
    }

    support::TemporaryFolder folder;
    support::SessionBus bus{folder.path(), support::baseEnvironment(folder.path().string())};
    FakeGnome gnome{bus.address()};
    QDBusConnection connection = bus.connect();
    QMenu menu;
    std::vector<std::string> chosen;
};

TEST_F(GnomeTrayHostTest, TheExtensionGetsTheMenusEntriesAndWhetherSwitchingIsActive) {
    gnome.enableExtension();
    GnomeTrayHost host(connection);
    host.showMenu(menu, true);
    EXPECT_TRUE(waitForIndicator("active: ACTIVE, quit: QUIT"));
    host.showMenu(menu, false);
    EXPECT_TRUE(waitForIndicator("dimmed: active: ACTIVE, quit: QUIT"));
}

TEST_F(GnomeTrayHostTest, AnExtensionThatComesLaterOrComesBackGetsThem) {
    GnomeTrayHost host(connection);
    host.showMenu(menu, true);
    gnome.enableExtension();
    EXPECT_TRUE(waitForIndicator("active: ACTIVE, quit: QUIT"));
    gnome.disableExtension();
    ASSERT_TRUE(waitForIndicator(""));
    gnome.enableExtension();
    EXPECT_TRUE(waitForIndicator("active: ACTIVE, quit: QUIT"));
}

TEST_F(GnomeTrayHostTest, WhatIsChosenThereTriggersTheEntry) {
    gnome.enableExtension();
    GnomeTrayHost host(connection);
    host.showMenu(menu, true);
    ASSERT_TRUE(waitForIndicator("active: ACTIVE, quit: QUIT"));
    for (const char* entry : {"", "nothing of this name", "active", "quit"})
        gnome.emitChose(QString::fromLatin1(entry), connection.baseService());
    ASSERT_TRUE(waitUntil([this] { return chosen.size() >= 2; }));
    EXPECT_EQ(chosen, (std::vector<std::string>{"active", "quit"}));
}

}  // namespace

}  // namespace quillmere
