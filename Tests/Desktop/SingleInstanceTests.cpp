#include "Tests/Desktop/SettingsTest.h"
#include "Tests/Support/DBusCall.h"

#include <csignal>
#include <fstream>
#include <string>

namespace quillmere::support {

namespace {

class SingleInstanceTest : public SettingsTest {
protected:
    void start(bool hasTray) {
        startDesktop({.hasTray = hasTray});
        storeConfiguration(configurationText({{.sources = threeSources}}));
        startWitness();
        ASSERT_NO_FATAL_FAILURE(startProgram());
    }
    std::size_t settingsWindows() {
        const std::vector<WindowInfo> windows = desktop().connection().windows();
        return static_cast<std::size_t>(std::ranges::count_if(
            windows, [](const WindowInfo& window) { return window.title == "Quillmere" && window.isMapped; }));
    }
    /// Runs what the desktop entry says for this action, as a launcher does; its
    /// status.
    int chooseInLauncher(const std::string& action) {
        std::ifstream entry(QUILLMERE_ICONS "/org.quillmere.Quillmere.desktop");
        std::string command;
        bool isAction = false;
        for (std::string line; command.empty() && std::getline(entry, line);) {
            if (line.starts_with('[')) isAction = line == "[Desktop Action " + action + "]";
            if (isAction && line.starts_with("Exec=")) command = line.substr(5);
        }
        EXPECT_NE(command, "");
        return ChildProcess::run({.arguments = {"sh", "-c", command}, .environment = desktop().environment()});
    }
    /// Asks for an action over the bus.
    QDBusMessage perform(const QString& action) {
        return callMethod(desktop().bus().connect(), QStringLiteral("org.quillmere.Quillmere"),
                          QStringLiteral("/org/quillmere/Quillmere"), QStringLiteral("org.freedesktop.Application"),
                          QStringLiteral("ActivateAction"), {action, QVariantList(), QVariantMap()});
    }
};

TEST_F(SingleInstanceTest, ASecondStartOpensTheFirstOnesSettingsAndEndsWithStatusZero) {
    ASSERT_NO_FATAL_FAILURE(start(true));
    ASSERT_NO_FATAL_FAILURE(openSettings());
    EXPECT_TRUE(program().process().isRunning());
    ASSERT_NO_FATAL_FAILURE(openSettings());
    EXPECT_EQ(settingsWindows(), 1U);
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(1));
}

TEST_F(SingleInstanceTest, WithoutATrayASecondStartIsTheWayIn) {
    ASSERT_NO_FATAL_FAILURE(start(false));
    ASSERT_NO_FATAL_FAILURE(openSettings());
}

TEST_F(SingleInstanceTest, AnyProgramMayActivateItOverTheBus) {
    ASSERT_NO_FATAL_FAILURE(start(true));
    const QDBusMessage reply =
        callMethod(desktop().bus().connect(), QStringLiteral("org.quillmere.Quillmere"),
                   QStringLiteral("/org/quillmere/Quillmere"), QStringLiteral("org.freedesktop.Application"),
                   QStringLiteral("Activate"), {QVariantMap()});
    EXPECT_EQ(reply.type(), QDBusMessage::ReplyMessage) << reply.errorMessage().toStdString();
    EXPECT_TRUE(waitUntil([this] { return settingsWindow().has_value(); }));
}

TEST_F(SingleInstanceTest, TheLaunchersActionsTurnSwitchingOffAndOnAndQuit) {
    ASSERT_NO_FATAL_FAILURE(start(false));
    ASSERT_EQ(chooseInLauncher("active"), 0);
    EXPECT_TRUE(waitUntilStored(false));
    ASSERT_EQ(chooseInLauncher("active"), 0);
    EXPECT_TRUE(waitUntilStored(true));
    ASSERT_EQ(chooseInLauncher("quit"), 0);
    EXPECT_EQ(program().process().waitForExit(patience), 0);
    // Not what starts it.
    EXPECT_NE(chooseInLauncher("active"), 0);
}

TEST_F(SingleInstanceTest, AnActionThatItDoesNotKnowIsPassedOver) {
    ASSERT_NO_FATAL_FAILURE(start(true));
    EXPECT_EQ(perform("quit-now").type(), QDBusMessage::ReplyMessage);
    EXPECT_EQ(perform("settings").type(), QDBusMessage::ReplyMessage);
    EXPECT_TRUE(waitUntil([this] { return settingsWindow().has_value(); }));
    EXPECT_TRUE(program().process().isRunning());
}

TEST_F(SingleInstanceTest, AfterTheFirstIsKilledTheNextStartRuns) {
    ASSERT_NO_FATAL_FAILURE(start(true));
    killProgram();
    ASSERT_NO_FATAL_FAILURE(startProgram());
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(1));
}

TEST_F(SingleInstanceTest, AHungFirstInstanceDoesNotHangTheSecond) {
    ASSERT_NO_FATAL_FAILURE(start(true));
    program().process().signal(SIGSTOP);
    Program second(programPath(), desktop());
    EXPECT_EQ(second.process().waitForExit(patience), 0);
    program().process().signal(SIGCONT);
    EXPECT_TRUE(waitUntil([this] { return settingsWindow().has_value(); }));
}

TEST_F(SingleInstanceTest, TheEndOfTheSessionBusIsNotTheEndOfTheProgram) {
    ASSERT_NO_FATAL_FAILURE(start(true));
    const std::string stored = storedConfiguration();
    desktop().restartBus();
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(1));
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(2));
    EXPECT_TRUE(program().process().isRunning());
    EXPECT_EQ(storedConfiguration(), stored);
}

TEST_F(SingleInstanceTest, WithoutASessionBusEveryStartRunsQuietly) {
    startDesktop({.hasTray = false});
    storeConfiguration(configurationText({{.sources = threeSources}}));
    startWitness();
    const Program::Options withoutBus{.additions = {{"DBUS_SESSION_BUS_ADDRESS", "disabled:"}}, .prepare = {}};
    ASSERT_NO_FATAL_FAILURE(startProgram(withoutBus));
    EXPECT_EQ(program().process().output(), "");
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(1));
}

}  // namespace

}  // namespace quillmere::support
