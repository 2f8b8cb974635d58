#include "Quillmere/Platform/Linux/Desktop/Gnome/Installer/ExtensionFolder.h"

#include <glib.h>

#include <fstream>
#include <iterator>
#include <map>
#include <regex>
#include <system_error>
#include <utility>

namespace quillmere::gnomeextension {

namespace fs = std::filesystem;

namespace {

std::string contentOf(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

/// Every file of a folder by its name, with what is in it.
std::map<std::string, std::string> filesOf(const fs::path& folder) {
    std::map<std::string, std::string> files;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, error))
        files.emplace(entry.path().filename().string(), contentOf(entry.path()));
    return files;
}

bool isFor(const fs::path& form, const std::string& shellVersion) {
    const std::string metadata = contentOf(form / "metadata.json");
    std::smatch versions;
    if (!std::regex_search(metadata, versions, std::regex(R"re("shell-version"\s*:\s*\[([^\]]*)\])re"))) return false;
    return versions[1].str().find('"' + shellVersion + '"') != std::string::npos;
}

}  // namespace

ExtensionFolder::ExtensionFolder(fs::path offered, const std::string& uuid)
    : offered_(std::move(offered)), own_(fs::path(g_get_user_data_dir()) / "gnome-shell" / "extensions" / uuid) {}

std::optional<fs::path> ExtensionFolder::formFor(const std::string& shellVersion) const {
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(offered_, error))
        if (isFor(entry.path(), shellVersion)) return entry.path();
    return std::nullopt;
}

bool ExtensionFolder::isThere() const {
    std::error_code error;
    return fs::exists(own_, error);
}

bool ExtensionFolder::isSame(const fs::path& form) const {
    return isThere() && filesOf(own_) == filesOf(form);
}

bool ExtensionFolder::unpack(const fs::path& form) const {
    // Beside its place first: the shell must never find a half of it.
    const fs::path fresh = own_.string() + ".new";
    std::error_code error;
    fs::remove_all(fresh, error);
    if (fs::create_directories(fresh, error); error) return false;
    if (fs::copy(form, fresh, error); error) return false;
    if (!remove()) return false;
    fs::rename(fresh, own_, error);
    return !error;
}

bool ExtensionFolder::remove() const {
    std::error_code error;
    fs::remove_all(own_, error);
    return !error;
}

}  // namespace quillmere::gnomeextension
