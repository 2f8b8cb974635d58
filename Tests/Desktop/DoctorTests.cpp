#include "Tests/Desktop/DesktopTest.h"
#include "Tests/Support/ChildProcess.h"

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

namespace quillmere::support {

namespace {

using namespace std::chrono_literals;

class QuillmereDoctorTest : public DesktopTest {
protected:
    /// What it says on this desktop.
    std::string page(const std::vector<std::string>& arguments = {}) {
        std::vector<std::string> command{programPath().parent_path() / "quillmere-doctor"};
        command.insert(command.end(), arguments.begin(), arguments.end());
        Environment environment = desktop().environment();
        environment["DBUS_SYSTEM_BUS_ADDRESS"] = "disabled:";
        if (!hasDisplay) environment.erase("DISPLAY");
        ChildProcess doctor({.arguments = command,
                             .environment = environment,
                             .output = folder.path() / "page",
                             .inheritedDescriptors = {},
                             .prepare = {}});
        EXPECT_EQ(doctor.waitForExit(60s), 0);
        return doctor.output();
    }

    static bool says(const std::string& page, const std::string& text) { return page.find(text) != std::string::npos; }

    TemporaryFolder folder;
    bool hasDisplay = true;
};

TEST_F(QuillmereDoctorTest, OfARunningProgramItSaysWhatIsSo) {
    ASSERT_NO_FATAL_FAILURE(startEverything());
    const std::string page = this->page();
    for (const char* text :
         {"Program        runs", "on X11", "Tap            the X server's", "⌃⌥Space: no other program's",
          "xkb:us  English (US)  (in use)", "xkb:ua  Ukrainian\n", "⌃⌥Space: xkb:us xkb:ua xkb:de\n", "can be read",
          "Tray           there is one", "the desktop's portal says light", "no feed is named"})
        EXPECT_TRUE(says(page, text)) << text << " is not in:\n" << page;
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(1));
}

TEST_F(QuillmereDoctorTest, TryingEndsWithTheLayoutThatWasInUse) {
    startDesktop();
    desktop().server().setGroup(1);
    const std::string page = this->page({"--try"});
    for (const char* text : {"English (US)  selected", "Ukrainian  (in use)  selected", "German  selected"})
        EXPECT_TRUE(says(page, text)) << text << " is not in:\n" << page;
    EXPECT_EQ(desktop().server().group(), 1);
}

TEST_F(QuillmereDoctorTest, AShortcutThatAnotherProgramHasIsSaidToBeTaken) {
    startDesktop();
    storeConfiguration(configurationText({{.sources = threeSources}, {.keyCode = 40, .sources = threeSources}}));
    startWitness();
    ASSERT_TRUE(witness().grabKey(keys::space, controlAltBits));
    const std::string page = this->page();
    EXPECT_TRUE(says(page, "⌃⌥Space: another program's")) << page;
    EXPECT_TRUE(says(page, "⌃⌥K: no other program's")) << page;
}

TEST_F(QuillmereDoctorTest, WhatIsMissingIsSaidWithWhatToDo) {
    startDesktop({.hasTray = false, .scheme = {}});
    const std::string page = this->page();
    for (const char* text : {"does not run\n               -> Start Quillmere.",
                             "Tray           none\n               -> ", "no portal tells", "nothing is stored yet"})
        EXPECT_TRUE(says(page, text)) << text << " is not in:\n" << page;
}

TEST_F(QuillmereDoctorTest, WithoutADisplayItSaysSoAndEnds) {
    startDesktop();
    hasDisplay = false;
    const std::string page = this->page();
    EXPECT_TRUE(says(page, "on neither X11 nor Wayland\n               -> ")) << page;
    EXPECT_TRUE(says(page, "Layouts        none found")) << page;
}

}  // namespace

}  // namespace quillmere::support
