#include "Tests/Support/ChildProcess.h"

#include "Tests/Support/SupportError.h"
#include "Tests/Support/WaitUntil.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string_view>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace quillmere::support {

namespace {

std::string programPath(const std::string& name) {
    if (name.find('/') != std::string::npos) return name;
    const char* searchPath = std::getenv("PATH");
    std::string rest = searchPath != nullptr ? searchPath : "/usr/bin:/bin";
    while (!rest.empty()) {
        const std::size_t colon = std::min(rest.find(':'), rest.size());
        const std::string candidate = rest.substr(0, colon) + "/" + name;
        if (access(candidate.c_str(), X_OK) == 0) return candidate;
        rest.erase(0, colon + 1);
    }
    throw SupportError("program not found: " + name);
}

std::vector<char*> pointers(std::vector<std::string>& strings) {
    std::vector<char*> result;
    result.reserve(strings.size() + 1);
    for (std::string& string : strings)
        result.push_back(string.data());
    result.push_back(nullptr);
    return result;
}

std::vector<std::string> assignments(const Environment& environment) {
    std::vector<std::string> result;
    result.reserve(environment.size());
    for (const auto& [name, value] : environment)
        result.push_back(name + "=" + value);
    return result;
}

/// A pipe that closes by itself when the program starts, and carries `errno`
/// when it does not.
struct StartReport {
    int read = -1;
    int write = -1;

    StartReport() {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0) throw SupportError("no pipe", errno);
        read = ends[0];
        write = ends[1];
    }
    ~StartReport() {
        close(read);
        closeWriteEnd();
    }
    StartReport(const StartReport&) = delete;
    StartReport& operator=(const StartReport&) = delete;

    void closeWriteEnd() {
        if (write >= 0) close(write);
        write = -1;
    }
    int waitForError() {
        closeWriteEnd();
        int error = 0;
        return ::read(read, &error, sizeof error) == static_cast<ssize_t>(sizeof error) ? error : 0;
    }
};

void becomeChild(const ChildProcess::Options& options, pid_t parent, int output) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(127);  // the parent died before the line above
    // In a group of its own a terminal's stop signal works as in a shell's job.
    setpgid(0, 0);
    dup2(output, STDOUT_FILENO);
    dup2(output, STDERR_FILENO);
    for (const int descriptor : options.inheritedDescriptors)
        fcntl(descriptor, F_SETFD, 0);
    if (options.prepare) options.prepare();
}

int openOutput(const std::filesystem::path& path) {
    const char* name = path.empty() ? "/dev/null" : path.c_str();
    const int descriptor = open(name, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    if (descriptor < 0) throw SupportError("cannot write " + std::string(name), errno);
    return descriptor;
}

}  // namespace

ChildProcess::ChildProcess(const Options& options) : output_(options.output) {
    std::vector<std::string> arguments = options.arguments;
    std::vector<std::string> variables = assignments(options.environment);
    const std::string program = programPath(arguments.at(0));
    const std::vector<char*> argumentPointers = pointers(arguments);
    const std::vector<char*> variablePointers = pointers(variables);
    const int output = openOutput(output_);
    StartReport report;
    const pid_t parent = getpid();
    pid_ = fork();
    if (pid_ == 0) {
        becomeChild(options, parent, output);
        execve(program.c_str(), argumentPointers.data(), variablePointers.data());
        const int error = errno;
        _exit(write(report.write, &error, sizeof error) > 0 ? 127 : 126);
    }
    const int forkError = errno;
    close(output);
    if (pid_ < 0) throw SupportError("cannot fork", forkError);
    if (const int error = report.waitForError(); error != 0) {
        waitForExit(patience);
        throw SupportError("cannot run " + program, error);
    }
}

ChildProcess::~ChildProcess() {
    kill();
}

void ChildProcess::reap() {
    if (status_) return;
    int status = 0;
    const pid_t ended = waitpid(pid_, &status, WNOHANG);
    if (ended != pid_) return;
    if (WIFEXITED(status)) status_ = WEXITSTATUS(status);
    if (WIFSIGNALED(status)) status_ = -WTERMSIG(status);
}

bool ChildProcess::isRunning() {
    reap();
    return !status_;
}

void ChildProcess::signal(int number) const {
    if (!status_) ::kill(pid_, number);
}

void ChildProcess::kill() {
    if (!isRunning()) return;
    signal(SIGKILL);
    waitForExit(patience);
}

std::optional<int> ChildProcess::waitForExit(std::chrono::milliseconds deadline) {
    waitUntil([this] { return !isRunning(); }, deadline);
    return status_;
}

std::string ChildProcess::output() const {
    std::ifstream file(output_, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

char ChildProcess::state() const {
    std::ifstream file("/proc/" + std::to_string(pid_) + "/stat");
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    // The name before the state may hold anything, closing brackets too.
    const std::size_t nameEnd = text.rfind(") ");
    return nameEnd == std::string::npos ? '\0' : text.at(nameEnd + 2);
}

long ChildProcess::wakeUps() const {
    constexpr std::string_view name = "voluntary_ctxt_switches:";
    long count = 0;
    for (const auto& task : std::filesystem::directory_iterator("/proc/" + std::to_string(pid_) + "/task")) {
        std::ifstream file(task.path() / "status");
        for (std::string line; std::getline(file, line);)
            if (line.starts_with(name)) count += std::stol(line.substr(name.size()));
    }
    return count;
}

int ChildProcess::run(const Options& options) {
    ChildProcess child(options);
    const std::optional<int> status = child.waitForExit(patience);
    if (!status) throw SupportError(options.arguments.front() + " does not end");
    return *status;
}

}  // namespace quillmere::support
