#include "Tests/Support/OrdinaryUser.h"

#include "Tests/Support/SupportError.h"

#include <cerrno>
#include <csignal>
#include <fstream>

#include <X11/Xlib.h>
#include <grp.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace quillmere::support {

namespace {

// The user that owns nothing.
constexpr uid_t nobody = 65534;

}  // namespace

void becomeOrdinaryUser() {
    if (geteuid() != 0) return;
    if (setgroups(0, nullptr) != 0 || setresgid(nobody, nobody, nobody) != 0 || setresuid(nobody, nobody, nobody) != 0)
        _exit(127);
    // Was dropped with the rights.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
}

void giveToOrdinaryUser(const std::filesystem::path& path) {
    if (geteuid() == 0 && chown(path.c_str(), nobody, nobody) != 0)
        throw SupportError("cannot give " + path.string() + " away", errno);
}

std::filesystem::path programOfOrdinaryUser(const std::filesystem::path& program,
                                            const std::filesystem::path& wrapper) {
    if (geteuid() != 0) return program;
    const std::string user = std::to_string(nobody);
    std::ofstream(wrapper) << "#!/bin/sh\nexec setpriv --reuid " << user << " --regid " << user << " --clear-groups '"
                           << program.string() << "' \"$@\"\n";
    std::filesystem::permissions(wrapper, std::filesystem::perms::owner_all);
    return wrapper;
}

void openXwaylandToTests(const std::string& display) {
    if (geteuid() != 0 || display.empty()) return;
    const bool isNobody = seteuid(nobody) == 0;
    Display* connection = XOpenDisplay(display.c_str());
    if (!isNobody || seteuid(0) != 0 || connection == nullptr) throw SupportError("no Xwayland at " + display);
    std::string type = "localuser";
    std::string value = "root";
    XServerInterpretedAddress user{.typelength = static_cast<int>(type.size()),
                                   .valuelength = static_cast<int>(value.size()),
                                   .type = type.data(),
                                   .value = value.data()};
    XHostAddress address{
        .family = FamilyServerInterpreted, .length = sizeof user, .address = reinterpret_cast<char*>(&user)};
    XAddHost(connection, &address);
    XCloseDisplay(connection);
}

}  // namespace quillmere::support
