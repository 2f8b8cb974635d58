#include "Tests/Machine/Session.h"

#include "Tests/Support/SupportError.h"
#include "Tests/Support/WaitUntil.h"

#include <filesystem>
#include <fstream>
#include <string_view>

#include <fcntl.h>
#include <grp.h>
#include <unistd.h>

namespace quillmere::machine {

using support::ChildProcess;
using support::SupportError;

namespace {

constexpr const char* login = "org.freedesktop.login1";
constexpr const char* manager = "/org/freedesktop/login1";
constexpr const char* interface = "org.freedesktop.login1.Manager";

std::string controlGroupOf(pid_t pid) {
    std::ifstream file("/proc/" + std::to_string(pid) + "/cgroup");
    std::string line;
    std::getline(file, line);
    constexpr std::string_view prefix = "0::";
    return line.starts_with(prefix) ? line.substr(prefix.size()) : std::string{};
}

// Between fork and exec: system calls only.
void moveSelf(const char* group) {
    const int file = open(group, O_WRONLY | O_CLOEXEC);
    if (file < 0 || write(file, "0", 1) != 1) _exit(125);
    close(file);
}

void becomeUser(uid_t user) {
    if (setgroups(0, nullptr) != 0 || setgid(user) != 0 || setuid(user) != 0) _exit(125);
}

}  // namespace

Session::Session(const Form& form) : user_(form.user) {
    // Whoever leads a session must not be the test itself, which would move
    // into it.
    leader_.emplace(ChildProcess::Options{.arguments = {"sleep", "infinity"},
                                          .environment = support::baseEnvironment("/"),
                                          .output = {},
                                          .inheritedDescriptors = {},
                                          .prepare = [user = user_] { becomeUser(user); }});
    const std::string terminal = form.terminal != 0 ? "tty" + std::to_string(form.terminal) : std::string{};
    const BusReply reply = bus_.call({login, manager, interface, "CreateSession"}, "uusssssussbssa(sv)", form.user,
                                     static_cast<std::uint32_t>(leader_->pid()), "test", form.type, form.kind, "",
                                     form.terminal != 0 ? "seat0" : "", form.terminal, terminal.c_str(), "",
                                     form.isRemote ? 1 : 0, "", form.isRemote ? "elsewhere.example" : "", 0);
    const char* id = nullptr;
    const char* path = nullptr;
    const char* runtime = nullptr;
    int lifeline = -1;
    if (!reply.error.empty() || sd_bus_message_read(reply.message.get(), "sosh", &id, &path, &runtime, &lifeline) < 0)
        throw SupportError("no session: " + reply.error);
    id_ = id;
    path_ = path;
    lifeline_ = fcntl(lifeline, F_DUPFD_CLOEXEC, 0);
    group_ = "/sys/fs/cgroup" + controlGroupOf(leader_->pid()) + "/cgroup.procs";
}

Session::~Session() {
    close(lifeline_);
    leader_.reset();
}

void Session::activate() {
    const BusReply reply = bus_.call({login, manager, interface, "ActivateSession"}, "s", id_.c_str());
    if (!reply.error.empty()) throw SupportError("no switch: " + reply.error);
    if (!support::waitUntil([this] { return isActive(); })) throw SupportError("the session does not become active");
}

void Session::setLocked(bool isLocked) {
    const BusReply reply =
        bus_.call({login, path_.c_str(), "org.freedesktop.login1.Session", "SetLockedHint"}, "b", isLocked ? 1 : 0);
    if (!reply.error.empty()) throw SupportError("cannot lock: " + reply.error);
}

std::function<void()> Session::entrance() const {
    return entrance(user_);
}

std::function<void()> Session::entrance(uid_t user) const {
    return [group = group_, user] {
        moveSelf(group.c_str());
        becomeUser(user);
    };
}

std::function<void()> Session::becoming(uid_t user) {
    // The test itself is a service of the system.
    return [user] { becomeUser(user); };
}

std::function<void()> Session::usersService() const {
    const std::string name = std::to_string(user_);
    const std::filesystem::path group =
        "/sys/fs/cgroup/user.slice/user-" + name + ".slice/user@" + name + ".service/app.slice/test.service";
    std::filesystem::create_directories(group);
    return [group = (group / "cgroup.procs").string(), user = user_] {
        moveSelf(group.c_str());
        becomeUser(user);
    };
}

support::Environment Session::environment() const {
    support::Environment result = support::baseEnvironment(user_ == writer ? "/home/writer" : "/home/stranger");
    result["XDG_RUNTIME_DIR"] = "/run/user/" + std::to_string(user_);
    result["XDG_SESSION_ID"] = id_;
    result["XDG_SEAT"] = "seat0";
    return result;
}

bool Session::isActive() {
    const BusReply reply =
        bus_.call({login, "/org/freedesktop/login1/seat/seat0", "org.freedesktop.DBus.Properties", "Get"}, "ss",
                  "org.freedesktop.login1.Seat", "ActiveSession");
    const char* id = nullptr;
    const char* path = nullptr;
    return reply.error.empty() && sd_bus_message_read(reply.message.get(), "v", "(so)", &id, &path) >= 0 && id == id_;
}

}  // namespace quillmere::machine
