#include "Tests/Machine/Sandbox.h"

#include "Tests/Support/ChildProcess.h"
#include "Tests/Support/SupportError.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>

namespace quillmere::machine {

using support::SupportError;

namespace {

constexpr const char* installed = "/usr/lib/systemd/system/quillmere-tapd.service";
constexpr const char* unit = "/run/systemd/system/quillmere-probe.service";
constexpr const char* script = "/run/quillmere-probe";
constexpr const char* results = "/run/quillmere-probe.txt";

/// What makes it a service of the bus, and what a shell cannot work with: too
/// few processes would look like a wall.
bool isOfTheService(std::string_view line) {
    constexpr const char* keys[] = {"Type=", "BusName=", "ExecStart=", "WatchdogSec=", "WatchdogSignal=", "TasksMax="};
    return std::ranges::any_of(keys, [line](const char* key) { return line.starts_with(key); });
}

/// The service's unit, with the commands in the service's place.
void writeUnit() {
    std::ifstream service(installed);
    if (!service) throw SupportError("the service is not installed");
    std::ofstream probe(unit);
    for (std::string line; std::getline(service, line);) {
        if (isOfTheService(line)) continue;
        probe << line << '\n';
        if (line == "[Service]")
            probe << "Type=oneshot\nExecStart=/bin/sh " << script << "\nStandardOutput=truncate:" << results << '\n';
    }
}

void writeScript(const Sandbox::Commands& commands) {
    std::ofstream file(script);
    for (std::size_t index = 0; index < commands.size(); ++index)
        file << "(\n" << commands[index] << "\n) > /dev/null 2>&1 && echo " << index << '\n';
    // It comes to the end of them, whatever becomes of each.
    file << "echo end\n";
}

/// Which of the commands succeed when the script is run in this way.
Sandbox::Commands tryAll(const Sandbox::Commands& commands, const std::vector<std::string>& way) {
    std::filesystem::remove(results);
    support::ChildProcess::run({.arguments = way,
                                .environment = support::baseEnvironment("/"),
                                .output = {},
                                .inheritedDescriptors = {},
                                .prepare = {}});
    Sandbox::Commands succeeded;
    std::ifstream lines(results);
    for (std::string line; std::getline(lines, line);) {
        if (line == "end") return succeeded;
        succeeded.push_back(commands.at(std::stoul(line)));
    }
    throw SupportError("the commands were not tried");
}

}  // namespace

Sandbox::Sandbox(const Commands& commands) {
    writeUnit();
    writeScript(commands);
    // First behind the walls, so that nothing is there yet that root has left.
    succeeded_ = tryAll(commands, {"systemctl", "start", "quillmere-probe.service"});
    succeededAsRoot_ = tryAll(commands, {"sh", "-c", std::string("sh ") + script + " > " + results});
    for (const char* file : {unit, script, results})
        std::filesystem::remove(file);
}

Sandbox::Commands Sandbox::common(const Commands& commands, const Commands& succeeded) {
    Commands result;
    std::ranges::copy_if(commands, std::back_inserter(result), [&succeeded](const std::string& command) {
        return std::ranges::find(succeeded, command) != succeeded.end();
    });
    return result;
}

}  // namespace quillmere::machine
