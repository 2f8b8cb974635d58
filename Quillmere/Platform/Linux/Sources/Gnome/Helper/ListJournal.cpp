#include "Quillmere/Platform/Linux/Sources/Gnome/Helper/ListJournal.h"

#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeHelperWords.h"

#include <fcntl.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <string>
#include <system_error>
#include <utility>

namespace quillmere::gnomehelper {

namespace {

/// Forces what has been written to a file, or the names in a folder, to the
/// disk.
bool force(const std::filesystem::path& path) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) return false;
    const bool isForced = fsync(descriptor) == 0;
    close(descriptor);
    return isForced;
}

}  // namespace

ListJournal::ListJournal(std::filesystem::path file) : file_(std::move(file)) {}

std::optional<GnomeSourceList> ListJournal::read() const {
    std::ifstream stream(file_);
    GnomeSourceList list = listIn(std::string(std::istreambuf_iterator<char>(stream), {}));
    if (list.empty()) return std::nullopt;
    return list;
}

bool ListJournal::write(const GnomeSourceList& list) const {
    std::error_code error;
    std::filesystem::create_directories(file_.parent_path(), error);
    const std::filesystem::path fresh = file_.string() + ".new";
    std::ofstream stream(fresh, std::ios::trunc);
    stream << textOf(list);
    stream.close();
    if (!stream || !force(fresh)) return false;
    std::filesystem::rename(fresh, file_, error);
    return !error && force(file_.parent_path());
}

void ListJournal::remove() const {
    std::error_code error;
    std::filesystem::remove(file_, error);
}

}  // namespace quillmere::gnomehelper
