#include "TapService/GrantStore.h"

#include "TapService/EventHandler.h"
#include "TapService/Log.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/inotify.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <system_error>
#include <vector>

namespace quillmere::tap {

namespace {

/// The user whose grant a file of this name would be.
std::optional<uid_t> userOf(const std::string& file) {
    uid_t user = 0;
    const char* end = file.data() + file.size();
    const auto [rest, error] = std::from_chars(file.data(), end, user);
    return error == std::errc() && rest == end ? std::optional(user) : std::nullopt;
}

}  // namespace

std::filesystem::path GrantStore::standardFolder() {
    const char* state = std::getenv("STATE_DIRECTORY");
    return std::filesystem::path(state != nullptr && *state == '/' ? state : "/var/lib/quillmere") / "grants";
}

std::filesystem::path GrantStore::file(uid_t user) const {
    return folder_ / std::to_string(user);
}

bool GrantStore::start(sd_event* loop) {
    std::error_code error;
    std::filesystem::create_directories(folder_, error);
    // Nobody but the service and an administrator writes here, whatever the
    // umask was.
    if (!error) std::filesystem::permissions(folder_, std::filesystem::perms::owner_all, error);
    if (error) {
        Log::error("Cannot make " + folder_.string(), error.value());
        return false;
    }
    int status = EventHandler<&GrantStore::grantsChanged>::onChange(
        loop, grantsSource_, folder_.c_str(), IN_CLOSE_WRITE | IN_DELETE | IN_MOVED_FROM | IN_DELETE_SELF, this);
    if (status < 0) Log::error("Cannot watch " + folder_.string(), status);
    if (status < 0) return false;
    // Its folder: the list is never changed but exchanged for a new one.
    const std::filesystem::path lists = users_.parent_path();
    status = EventHandler<&GrantStore::usersChanged>::onChange(loop, usersSource_, lists.c_str(),
                                                               IN_CLOSE_WRITE | IN_MOVED_TO, this);
    if (status < 0) Log::warning("Cannot watch " + lists.string(), status);
    tidy();
    return true;
}

void GrantStore::grantsChanged(const inotify_event& event) {
    tidy();
    if ((event.mask & IN_CLOSE_WRITE) == 0 && onRevoked) onRevoked();
}

void GrantStore::usersChanged(const inotify_event& event) {
    // What is removed here tells `grantsChanged`.
    if (event.len > 0 && users_.filename() == event.name) tidy();
}

void GrantStore::tidy() {
    std::error_code error;
    std::vector<uid_t> users;
    for (const auto& entry : std::filesystem::directory_iterator(folder_, error)) {
        if (const auto user = userOf(entry.path().filename())) users.push_back(*user);
    }
    for (const uid_t user : users) {
        const auto name = grantedName(user);
        if (!name) continue;
        if (name->empty() && !nameOf(user).empty()) {
            // An administrator's own file is not the service's to write to.
            revoke(user);
            grant(user);
        } else if (!isGranted(user)) {
            Log::notice("The access of user " + std::to_string(user) + " has ended with the account of " + *name);
            revoke(user);
        }
    }
}

std::string GrantStore::nameOf(uid_t user) const {
    constexpr auto close = [](std::FILE* file) { std::fclose(file); };
    const std::unique_ptr<std::FILE, decltype(close)> list(std::fopen(users_.c_str(), "re"));
    if (!list) return {};
    // Not through the name service, which may ask a network and take its time.
    while (const passwd* account = ::fgetpwent(list.get())) {
        if (account->pw_uid == user) return account->pw_name;
    }
    return {};
}

std::optional<std::string> GrantStore::grantedName(uid_t user) const {
    struct stat status{};
    if (::lstat(file(user).c_str(), &status) < 0 || !S_ISREG(status.st_mode)) return std::nullopt;
    const FileDescriptor opened(::open(file(user).c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    std::array<char, 256> name{};
    const ssize_t size = opened ? ::read(opened.get(), name.data(), name.size()) : 0;
    return std::string(name.data(), size > 0 ? static_cast<std::size_t>(size) : 0);
}

bool GrantStore::isGranted(uid_t user) const {
    const std::optional<std::string> name = grantedName(user);
    return name && (name->empty() || *name == nameOf(user));
}

bool GrantStore::grant(uid_t user) {
    const FileDescriptor created(
        ::open(file(user).c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR));
    const std::string name = nameOf(user);
    const bool isWritten =
        created && ::write(created.get(), name.data(), name.size()) == static_cast<ssize_t>(name.size());
    if (!isWritten) Log::warning("Cannot remember a grant", errno);
    return isWritten;
}

void GrantStore::revoke(uid_t user) {
    if (::unlink(file(user).c_str()) < 0 && errno != ENOENT) Log::warning("Cannot forget a grant", errno);
}

}  // namespace quillmere::tap
