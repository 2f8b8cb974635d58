#include "Benchmarks/WaylandSession.h"

#include "Tests/Support/StoredSettings.h"
#include "Tests/Support/WaitUntil.h"

#include <stdexcept>

namespace quillmere::bench {

WaylandSession::WaylandSession()
    : environment_(support::baseEnvironment(folder_.makeFolder("home").string())),
      bus_(folder_.makeFolder("session"), environment_),
      tray_(bus_.connect()) {
    environment_["XDG_CONFIG_HOME"] = folder_.makeFolder("config");
    environment_["XDG_STATE_HOME"] = folder_.makeFolder("state");
    environment_["XDG_RUNTIME_DIR"] = folder_.makeFolder("run");
    environment_["XDG_SESSION_TYPE"] = "wayland";
    environment_["DBUS_SESSION_BUS_ADDRESS"] = bus_.address();
}

void WaylandSession::start(const std::filesystem::path& program, const support::Environment& desktop,
                           const support::StoredGroup& group) {
    support::Environment environment = environment_;
    for (const auto& [name, value] : desktop)
        environment[name] = value;
    // No key-tap service: what is measured is what everybody has.
    environment["DBUS_SYSTEM_BUS_ADDRESS"] = "disabled:";
    const support::StoredSettings settings(environment.at("XDG_CONFIG_HOME"));
    settings.set("config", support::configurationText({group}));
    program_.emplace(support::ChildProcess::Options{
        .arguments = {program}, .environment = environment, .output = folder() / "quillmere.log"});
    support::waitUntil([this] { return tray_.hasItem() || !program_->isRunning(); });
    if (!tray_.hasItem()) throw std::runtime_error("the program does not start: " + program_->output());
}

}  // namespace quillmere::bench
