#include "Tests/Desktop/ProgramTest.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <iostream>

namespace quillmere::support {

ProgramTest::ProgramTest()
    : environment(baseEnvironment(folder.makeFolder("home").string())),
      bus(folder.makeFolder("session"), environment),
      tray(bus.connect()),
      settings(folder.makeFolder("config")) {}

void ProgramTest::TearDown() {
    if (HasFailure() && program) std::cout << "The program wrote: " << program->output() << '\n';
    program.reset();
}

void ProgramTest::enterDesktop(const char* name, const std::string& waylandDisplay, const std::string& xDisplay) {
    environment["XDG_CONFIG_HOME"] = settings.folder().parent_path();
    environment["XDG_RUNTIME_DIR"] = folder.makeFolder("run");
    environment["XDG_SESSION_TYPE"] = "wayland";
    environment["XDG_CURRENT_DESKTOP"] = name;
    environment["DBUS_SESSION_BUS_ADDRESS"] = bus.address();
    environment["WAYLAND_DISPLAY"] = waylandDisplay;
    environment["DISPLAY"] = xDisplay;
}

int ProgramTest::storedKeyCode() const {
    const auto stored = QByteArray::fromStdString(settings.value("config").value_or(std::string()));
    const QJsonValue group = QJsonDocument::fromJson(stored)["groups"][0];
    return group["shortcut"]["keyCode"].toInt(-1);
}

void ProgramTest::launch() {
    program.emplace(ChildProcess::Options{.arguments = {DesktopTest::programPath()},
                                          .environment = environment,
                                          .output = folder.path() / "quillmere.log",
                                          .inheritedDescriptors = {},
                                          .prepare = {}});
}

void ProgramTest::startProgram() {
    launch();
    ASSERT_TRUE(waitUntil([this] { return tray.hasItem() || !program->isRunning(); }));
    ASSERT_TRUE(program->isRunning());
}

}  // namespace quillmere::support
