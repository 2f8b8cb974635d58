#include "Tests/Machine/PasswordDialog.h"

#include "Tests/Support/SupportError.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/WaitUntil.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <functional>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

namespace quillmere::machine {

using support::ChildProcess;
using support::SupportError;

namespace {

std::function<void()> entrance(const Session& session, std::string terminal) {
    return [enter = session.entrance(), terminal = std::move(terminal)] {
        const int descriptor = open(terminal.c_str(), O_RDWR | O_NOCTTY);
        for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            if (dup2(descriptor, standard) < 0) _exit(125);
        enter();
    };
}

}  // namespace

PasswordDialog::PasswordDialog(const Session& session, pid_t subject)
    : terminal_(posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)) {
    if (terminal_ < 0 || grantpt(terminal_) != 0 || unlockpt(terminal_) != 0) throw SupportError("no terminal", errno);
    const std::string terminal = ptsname(terminal_);
    if (chown(terminal.c_str(), session.user(), session.user()) != 0) throw SupportError("no terminal", errno);

    // It closes its end when polkit knows it. A pipe made here would have a
    // second end in setsid.
    const support::TemporaryFolder folder;
    const std::string ready = folder.path() / "ready";
    if (mkfifo(ready.c_str(), 0600) != 0 || chown(ready.c_str(), session.user(), session.user()) != 0
        || chown(folder.path().c_str(), session.user(), session.user()) != 0)
        throw SupportError("no pipe", errno);
    const int isReady = open(ready.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    agent_.emplace(ChildProcess::Options{
        // It reads the password from the terminal that controls it.
        .arguments = {"setsid", "--ctty", "--wait", "sh", "-c",
                      R"(exec pkttyagent --process "$1" --notify-fd 3 3> "$2")", "sh", std::to_string(subject), ready},
        .environment = session.environment(),
        .output = {},
        .inheritedDescriptors = {},
        .prepare = entrance(session, terminal)});
    pollfd end{isReady, 0, 0};
    const bool ended = poll(&end, 1, static_cast<int>(support::patience.count())) == 1;
    close(isReady);
    if (!ended || !agent_->isRunning()) throw SupportError("no dialog: " + shown());
}

PasswordDialog::~PasswordDialog() {
    agent_.reset();
    close(terminal_);
}

void PasswordDialog::enter(std::string_view password) {
    // What is typed before the echo is off is thrown away.
    if (!support::waitUntil([this] { return shown().find("Password:") != std::string::npos && !echoes(); }))
        throw SupportError("nobody asks for a password: " + shown());
    const std::string line = std::string(password) + "\n";
    if (write(terminal_, line.data(), line.size()) != static_cast<ssize_t>(line.size()))
        throw SupportError("cannot type the password", errno);
}

bool PasswordDialog::echoes() const {
    termios settings{};
    if (tcgetattr(terminal_, &settings) != 0) throw SupportError("cannot ask the terminal", errno);
    return (settings.c_lflag & ECHO) != 0;
}

const std::string& PasswordDialog::shown() {
    std::array<char, 4096> buffer{};
    ssize_t size = 0;
    while ((size = read(terminal_, buffer.data(), buffer.size())) > 0)
        shown_.append(buffer.data(), static_cast<std::size_t>(size));
    return shown_;
}

}  // namespace quillmere::machine
