#include "Tests/Desktop/DesktopTest.h"

#include <cstdlib>
#include <iostream>

#include <X11/Xlib.h>

namespace quillmere::support {

namespace {

std::string environmentOr(const char* name, const char* otherwise) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : otherwise;
}

}  // namespace

std::filesystem::path DesktopTest::artefacts() {
    return environmentOr("QUILLMERE_ARTEFACTS", QUILLMERE_ARTEFACTS);
}

std::filesystem::path DesktopTest::programPath() {
    return environmentOr("QUILLMERE_PROGRAM", QUILLMERE_PROGRAM);
}

void DesktopTest::TearDown() {
    if (!HasFailure() || desktop_ == nullptr) return;
    const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
    std::string name = std::string(test->test_suite_name()) + "." + test->name();
    std::ranges::replace(name, '/', '_');
    savePicture(desktop_->screen().shot(), artefacts() / "failures" / (name + ".png"));
    if (program_ != nullptr) std::cout << "The program wrote: " << program_->process().output() << '\n';
}

Desktop& DesktopTest::startDesktop(const Desktop::Options& options) {
    desktop_ = std::make_unique<Desktop>(options);
    return *desktop_;
}

void DesktopTest::storeConfiguration(const std::string& text) {
    desktop().settings().set("config", text);
}

void DesktopTest::startProgramWithoutShortcut(const Program::Options& options) {
    program_ = std::make_unique<Program>(programPath(), desktop(), options);
    ASSERT_TRUE(desktop().tray() == nullptr || program().waitForTrayItem());
}

void DesktopTest::startProgram(const Program::Options& options) {
    program_ = std::make_unique<Program>(programPath(), desktop(), options);
    ASSERT_TRUE(program().waitForGrab(keys::space, controlAltBits));
    ASSERT_TRUE(desktop().tray() == nullptr || program().waitForTrayItem());
}

Witness& DesktopTest::startWitness(Witness::Size size, QColor background) {
    witness_.reset();
    witness_ = std::make_unique<Witness>(desktop().display(), size, background);
    return *witness_;
}

void DesktopTest::focusWitness() {
    XSetInputFocus(witness().connection().display(), witness().window(), RevertToParent, CurrentTime);
    witness().connection().synchronize();
}

void DesktopTest::startEverything(const Desktop::Options& options) {
    startDesktop(options);
    storeConfiguration(configurationText({{.sources = threeSources}}));
    startWitness();
    ASSERT_NO_FATAL_FAILURE(startProgram());
}

void DesktopTest::pressShortcut() {
    typist().chord(controlAlt, keys::space);
}

bool DesktopTest::waitForGroup(int group) {
    return waitUntil([&] { return desktop().server().group() == group; });
}

void DesktopTest::pressShortcutAndWaitFor(int group) {
    pressShortcut();
    ASSERT_TRUE(waitForGroup(group)) << "the layout in use is " << desktop().server().group();
}

void DesktopTest::waitForEverythingTyped() {
    const std::size_t before = witness().presses(keys::x);
    typist().tap(keys::x);
    ASSERT_TRUE(waitUntil([&] { return witness().presses(keys::x) > before; }));
}

std::string DesktopTest::storedConfiguration() {
    return desktop().settings().value("config").value_or("");
}

bool DesktopTest::waitUntilStored(bool isActive) {
    const std::string text = isActive ? R"("active":true)" : R"("active":false)";
    return waitUntil([&] { return storedConfiguration().find(text) != std::string::npos; });
}

void DesktopTest::killProgram() {
    program_->process().kill();
    program_.reset();
}

}  // namespace quillmere::support
