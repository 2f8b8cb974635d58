#include "Quillmere/Platform/Linux/Desktop/DesktopEntry.h"
#include "Quillmere/Platform/Linux/Desktop/DesktopLoginItem.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace quillmere {
namespace {

class LoginItemTest : public testing::Test {
protected:
    LoginItemTest() { makeProgram(program); }
    ~LoginItemTest() override { qunsetenv("XDG_CURRENT_DESKTOP"); }

    DesktopLoginItem make() const { return {program, userFolder, {systemFolder}}; }

    static void makeProgram(const QString& path) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    static void write(const QString& folder, const QByteArray& text) {
        QDir().mkpath(folder);
        QFile file(folder + "/quillmere.desktop");
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }
    /// An entry with these lines besides the usual ones.
    QByteArray entry(const QByteArray& lines = {}) const {
        return "[Desktop Entry]\nType=Application\nName=Quillmere\nExec=" + program.toUtf8() + "\n" + lines;
    }
    QByteArray written() const {
        QFile file(userFolder + "/quillmere.desktop");
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QTemporaryDir folder;
    QString program = folder.filePath("quillmere");
    QString userFolder = folder.filePath("config/autostart");
    QString systemFolder = folder.filePath("system/autostart");
};

TEST_F(LoginItemTest, WithoutAnEntryItIsOff) {
    EXPECT_TRUE(make().isAvailable());
    EXPECT_FALSE(make().isEnabled());
}

TEST_F(LoginItemTest, WithoutAConfigurationFolderThereIsNoService) {
    DesktopLoginItem item(program, {}, {});
    EXPECT_FALSE(item.isAvailable());
    EXPECT_FALSE(item.setEnabled(true));
}

TEST_F(LoginItemTest, EnablingWritesAnEntryThatStartsThisProgram) {
    DesktopLoginItem item = make();
    EXPECT_TRUE(item.setEnabled(true));
    EXPECT_TRUE(item.isEnabled());
    const auto entry = DesktopEntry::parse(written());
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->value("Type"), "Application");
    EXPECT_EQ(entry->value("Name"), "Quillmere");
    EXPECT_EQ(DesktopEntry::program(*entry->value("Exec")), program);
}

TEST_F(LoginItemTest, DisablingRemovesItsOwnEntry) {
    DesktopLoginItem item = make();
    ASSERT_TRUE(item.setEnabled(true));
    EXPECT_TRUE(item.setEnabled(false));
    EXPECT_FALSE(item.isEnabled());
    EXPECT_FALSE(QFile::exists(userFolder + "/quillmere.desktop"));
    EXPECT_TRUE(item.setEnabled(false)) << "once more is no failure";
}

TEST_F(LoginItemTest, TheEntryDecidesTheState) {
    struct Case {
        const char* name;
        QByteArray text;
        bool enabled;
    };
    const QByteArray path = program.toUtf8();
    const std::vector<Case> cases{
        {"plain", entry(), true},
        {"hidden", entry("Hidden=true\n"), false},
        {"not hidden", entry("Hidden=false\n"), true},
        {"switched off by the desktop", entry("X-GNOME-Autostart-enabled=false\n"), false},
        {"switched on by the desktop", entry("X-GNOME-Autostart-enabled=true\n"), true},
        {"hidden in another group", entry("\n[Other]\nHidden=true\n"), true},
        {"program is gone", "[Desktop Entry]\nExec=/nowhere/quillmere\n", false},
        {"no program", "[Desktop Entry]\nType=Application\n", false},
        {"quoted, with an argument", "[Desktop Entry]\nExec=\"" + path + "\" --x\n", true},
        {"through a wrapper", "[Desktop Entry]\nExec=env A=b " + path + "\n", true},
        {"needs what is missing", entry("TryExec=/nowhere/else\n"), false},
        {"for another desktop", entry("OnlyShowIn=KDE;XFCE;\n"), false},
        {"for this desktop", entry("OnlyShowIn=KDE;GNOME;\n"), true},
        {"not for this desktop", entry("NotShowIn=GNOME;\n"), false},
        {"comment", "# Hidden=true\n" + entry("#Hidden=true\n"), true},
        {"spaces", "[Desktop Entry]\nHidden = true\nExec = " + path + "\n", false},
        {"no entry", "nonsense\n", false},
        {"empty", "", false},
    };
    qputenv("XDG_CURRENT_DESKTOP", "ubuntu:GNOME");
    for (const Case& testCase : cases) {
        SCOPED_TRACE(testCase.name);
        write(userFolder, testCase.text);
        EXPECT_EQ(make().isEnabled(), testCase.enabled);
        EXPECT_TRUE(make().setEnabled(true));
        EXPECT_TRUE(make().isEnabled());
        EXPECT_TRUE(make().setEnabled(false));
        EXPECT_FALSE(make().isEnabled());
    }
}

TEST_F(LoginItemTest, EnablingAgainKeepsWhatSomebodyWrote) {
    const QByteArray text =
        "# mine\n" + entry("Name[uk]=Квілмір\nX-Delay=5\nHidden=true\n\n[Desktop Action a]\nName=A\n");
    write(userFolder, text);
    EXPECT_TRUE(make().setEnabled(true));
    QByteArray expected = text;
    expected.replace("Hidden=true\n", "");
    EXPECT_EQ(written().toStdString(), expected.toStdString());
}

TEST_F(LoginItemTest, DisablingAnEditedEntryHidesIt) {
    const QByteArray text = entry("X-Delay=5\n\n[Other]\nKey=value\n");
    write(userFolder, text);
    EXPECT_TRUE(make().setEnabled(false));
    QByteArray expected = text;
    expected.replace("X-Delay=5\n", "X-Delay=5\nHidden=true\n");
    EXPECT_EQ(written().toStdString(), expected.toStdString());
}

TEST_F(LoginItemTest, AWrapperAroundThisProgramIsKept) {
    write(userFolder, "[Desktop Entry]\nExec=env A=b " + program.toUtf8() + "\nHidden=true\n");
    EXPECT_TRUE(make().setEnabled(true));
    EXPECT_EQ(DesktopEntry::parse(written())->value("Exec"), "env A=b " + program);
}

TEST_F(LoginItemTest, AnEntryOfAnotherCopyIsPointedHere) {
    const QString other = folder.filePath("elsewhere");
    makeProgram(other);
    write(userFolder, "[Desktop Entry]\nExec=" + other.toUtf8() + "\n");
    EXPECT_TRUE(make().setEnabled(true));
    EXPECT_EQ(DesktopEntry::parse(written())->value("Exec"), program);
}

TEST_F(LoginItemTest, AnEntryRemovedByHandIsOff) {
    DesktopLoginItem item = make();
    ASSERT_TRUE(item.setEnabled(true));
    QFile::remove(userFolder + "/quillmere.desktop");
    EXPECT_FALSE(item.isEnabled());
}

TEST_F(LoginItemTest, AnEntryForAllUsersCountsUntilTheUserSaysNo) {
    write(systemFolder, entry());
    DesktopLoginItem item = make();
    EXPECT_TRUE(item.isEnabled());
    EXPECT_TRUE(item.setEnabled(false));
    EXPECT_FALSE(item.isEnabled());
    EXPECT_EQ(DesktopEntry::parse(written())->boolean("Hidden"), true);
    EXPECT_TRUE(item.setEnabled(true));
    EXPECT_TRUE(item.isEnabled());
}

TEST_F(LoginItemTest, AFolderThatCannotBeWrittenIsARefusal) {
    QDir().mkpath(folder.filePath("config"));
    QFile file(userFolder);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << "a file where the folder should be: it stops root too";
    DesktopLoginItem item = make();
    EXPECT_FALSE(item.setEnabled(true));
    EXPECT_FALSE(item.isEnabled());
}

TEST_F(LoginItemTest, AnUnfinishedWriteLeavesNoHalfEntry) {
    DesktopLoginItem item = make();
    ASSERT_TRUE(item.setEnabled(true));
    EXPECT_EQ(QDir(userFolder).entryList(QDir::Files | QDir::Hidden), QStringList({"quillmere.desktop"}));
}

TEST_F(LoginItemTest, AnyPathOfTheProgramSurvivesQuoting) {
    for (const char* const name : {"plain", "with space", "a\"b", "a$b", "a`b", "a\\b", "100%", "%f", "tab\there",
                                   "квілмір", "it's", "a;b", "a=b", "a#b"}) {
        SCOPED_TRACE(name);
        program = folder.filePath(QString::fromUtf8(name));
        makeProgram(program);
        DesktopLoginItem item = make();
        EXPECT_TRUE(item.setEnabled(true));
        EXPECT_EQ(DesktopEntry::program(*DesktopEntry::parse(written())->value("Exec")), program);
        EXPECT_TRUE(item.isEnabled());
    }
}

TEST(DesktopEntry, TheProgramIsQuotedAsTheSpecificationSays) {
    const auto line = [](const QString& program) {
        DesktopEntry entry;
        entry.set("Exec", DesktopEntry::quoted(program));
        return entry.text();
    };
    EXPECT_EQ(line("/usr/bin/quillmere"), "[Desktop Entry]\nExec=/usr/bin/quillmere\n");
    EXPECT_EQ(line("/a b"), "[Desktop Entry]\nExec=\"/a b\"\n");
    EXPECT_EQ(line("/a$b"), "[Desktop Entry]\nExec=\"/a\\\\$b\"\n");
    EXPECT_EQ(line("/a\\b"), "[Desktop Entry]\nExec=\"/a\\\\\\\\b\"\n");
    EXPECT_EQ(line("/100%"), "[Desktop Entry]\nExec=/100%%\n");
}

TEST(DesktopEntry, ATextWithoutAFinalNewlineIsRead) {
    const auto entry = DesktopEntry::parse("[Desktop Entry]\nExec=a\\sb");
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->value("Exec"), "a b");
    EXPECT_EQ(entry->value("Name"), std::nullopt);
}

}  // namespace
}  // namespace quillmere
