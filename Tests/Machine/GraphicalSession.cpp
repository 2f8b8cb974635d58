#include "Tests/Machine/GraphicalSession.h"

#include "Tests/Machine/Service.h"
#include "Tests/Support/SupportError.h"
#include "Tests/Support/WaitUntil.h"

#include <cerrno>

#include <unistd.h>

namespace quillmere::machine {

using support::ChildProcess;
using support::SupportError;

namespace {

void giveTo(uid_t user, const std::filesystem::path& path) {
    if (chown(path.c_str(), user, user) != 0) throw SupportError("cannot give " + path.string(), errno);
}

}  // namespace

GraphicalSession::GraphicalSession(Session& session) : session_(session), environment_(session.environment()) {
    session.activate();
    const std::filesystem::path config = folder_.makeFolder("config");
    giveTo(session.user(), folder_.path());
    giveTo(session.user(), config);
    const std::filesystem::path bus = folder_.path() / "bus";
    environment_["XDG_CONFIG_HOME"] = config;
    environment_["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=" + bus.string();
    bus_.emplace(program("bus", {"dbus-daemon", "--session", "--nofork", "--nopidfile",
                                 "--address=" + environment_["DBUS_SESSION_BUS_ADDRESS"]}));
    if (!support::waitUntil([&] { return std::filesystem::exists(bus); })) throw SupportError("no session bus");
}

support::StoredSettings GraphicalSession::settings() const {
    return support::StoredSettings(folder_.path() / "config");
}

ChildProcess::Options GraphicalSession::program(const std::string& name,
                                                const std::vector<std::string>& arguments) const {
    return {.arguments = arguments,
            .environment = environment_,
            .output = std::filesystem::current_path() / (name + ".txt"),
            .inheritedDescriptors = {},
            .prepare = session_.entrance()};
}

void GraphicalSession::startQuillmere() {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder_.path() / "config"))
        giveTo(session_.user(), entry.path());
    Service().start();
    quillmere_.emplace(program("quillmere", {"quillmere"}));
}

}  // namespace quillmere::machine
