#include "Tests/Machine/Service.h"

#include "Tests/Support/ChildProcess.h"
#include "Tests/Support/SupportError.h"
#include "Tests/Support/WaitUntil.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace quillmere::machine {

using support::SupportError;

namespace {

std::filesystem::path grantOf(uid_t user) {
    return "/var/lib/quillmere/grants/" + std::to_string(user);
}

}  // namespace

pid_t Service::pid() {
    const BusReply reply = bus_.call(
        {"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetConnectionUnixProcessID"}, "s",
        "org.quillmere.KeyTap1");
    std::uint32_t pid = 0;
    return reply.error.empty() && sd_bus_message_read(reply.message.get(), "u", &pid) >= 0 ? static_cast<pid_t>(pid)
                                                                                           : 0;
}

pid_t Service::waitForPid(pid_t old) {
    pid_t found = 0;
    const bool runs = support::waitUntil([&] {
        found = pid();
        return found != 0 && found != old;
    });
    if (!runs) throw SupportError("the service does not run");
    return found;
}

void Service::start() {
    bus_.call({"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "StartServiceByName"}, "su",
              "org.quillmere.KeyTap1", 0U);
    waitForPid();
}

void Service::signal(int number) {
    if (kill(waitForPid(), number) != 0) throw SupportError("the service has gone", errno);
}

void Service::upgrade() {
    const std::filesystem::path program = "/usr/libexec/quillmere-tapd";
    const std::filesystem::path newer = program.string() + ".new";
    std::filesystem::copy_file(program, newer);
    std::filesystem::rename(newer, program);
    const std::filesystem::path old = "/proc/" + std::to_string(pid());
    const int status =
        support::ChildProcess::run({.arguments = {"systemctl", "--no-block", "restart", "quillmere-tapd.service"},
                                    .environment = support::baseEnvironment("/"),
                                    .output = {},
                                    .inheritedDescriptors = {},
                                    .prepare = {}});
    if (status != 0) throw SupportError("the service does not restart");
    if (!support::waitUntil([&] { return !std::filesystem::exists(old); }))
        throw SupportError("the old service does not end");
}

std::size_t Service::openFiles() {
    const std::filesystem::directory_iterator files("/proc/" + std::to_string(waitForPid()) + "/fd");
    return static_cast<std::size_t>(std::distance(begin(files), end(files)));
}

std::size_t Service::wakeUps() {
    const std::string file = "/proc/" + std::to_string(waitForPid()) + "/status";
    std::ifstream stream(file);
    for (std::string word; stream >> word;)
        if (std::size_t number = 0; word == "voluntary_ctxt_switches:" && stream >> number) return number;
    throw SupportError("no wake-ups in " + file);
}

void Service::grant(uid_t user) {
    std::filesystem::create_directories(grantOf(user).parent_path());
    if (!std::ofstream(grantOf(user))) throw SupportError("cannot grant the tap");
}

void Service::revoke(uid_t user) {
    std::filesystem::remove(grantOf(user));
}

bool Service::isGranted(uid_t user) {
    return std::filesystem::exists(grantOf(user));
}

}  // namespace quillmere::machine
