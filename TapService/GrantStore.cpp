#include "TapService/GrantStore.h"

#include "TapService/Log.h"

#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

namespace quillmere::tap {

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
    // Nobody but root writes here, whatever the umask was.
    if (!error) std::filesystem::permissions(folder_, std::filesystem::perms::owner_all, error);
    if (error) {
        Log::error("Cannot make " + folder_.string(), error.value());
        return false;
    }
    sd_event_source* source = nullptr;
    const auto handler = [](sd_event_source*, const inotify_event*, void* data) {
        auto* self = static_cast<GrantStore*>(data);
        if (self->onRevoked) self->onRevoked();
        return 0;
    };
    const int status =
        sd_event_add_inotify(loop, &source, folder_.c_str(), IN_DELETE | IN_MOVED_FROM | IN_DELETE_SELF, handler, this);
    source_.reset(source);
    if (status < 0) Log::error("Cannot watch " + folder_.string(), status);
    return status >= 0;
}

bool GrantStore::isGranted(uid_t user) const {
    struct stat status{};
    return ::lstat(file(user).c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

bool GrantStore::grant(uid_t user) {
    const FileDescriptor created(
        ::open(file(user).c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR));
    if (!created) Log::warning("Cannot remember a grant", errno);
    return static_cast<bool>(created);
}

void GrantStore::revoke(uid_t user) {
    if (::unlink(file(user).c_str()) < 0 && errno != ENOENT) Log::warning("Cannot forget a grant", errno);
}

}  // namespace quillmere::tap
