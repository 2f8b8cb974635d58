#include "Quillmere/Platform/Linux/Doctor/StoreFinding.h"

#include "Quillmere/Platform/Linux/Desktop/SqliteDefaults.h"
#include "QuillmereCore/ConfigStore.h"

#include <QTemporaryDir>

#include <unistd.h>

#include <string>
#include <system_error>

namespace quillmere {

namespace {

namespace fs = std::filesystem;

/// Copies the store with its log; false when it cannot be read.
bool copyStore(const fs::path& from, const fs::path& to) {
    std::error_code error;
    for (const char* suffix : {"", "-wal"}) {
        const std::string source = from.string() + suffix;
        if (!fs::exists(source, error) && *suffix != '\0') continue;
        if (!fs::copy_file(source, to.string() + suffix, error)) return false;
    }
    return true;
}

/// Whether some of the folders that there are takes the store's files.
bool isWritable(const fs::path& file) {
    std::error_code error;
    fs::path folder = file.parent_path();
    while (!fs::exists(folder, error) && folder.has_relative_path())
        folder = folder.parent_path();
    const bool takesFile = !fs::exists(file, error) || access(file.c_str(), W_OK) == 0;
    return takesFile && access(folder.c_str(), W_OK) == 0;
}

}  // namespace

Examination::Stored storedIn(const fs::path& file) {
    Examination::Stored result{.finding = {.subject = "Settings", .state = file.string(), .advice = {}}, .config = {}};
    Finding& row = result.finding;
    if (!isWritable(file)) {
        row.state += ", which cannot be written";
        row.advice = "Make the file and its folder yours: what you change is lost when Quillmere ends.";
    }
    std::error_code error;
    if (!fs::exists(file, error)) {
        row.state += "\nnothing is stored yet";
        return result;
    }
    const QTemporaryDir folder;
    const fs::path copy = fs::path(folder.path().toStdString()) / file.filename();
    if (!folder.isValid() || !copyStore(file, copy)) {
        row.state += "\ncannot be read";
        row.advice = "Make the file and its folder yours.";
        return result;
    }
    SqliteDefaults defaults(copy);
    result.config = ConfigStore(defaults, "config").load();
    if (fs::exists(copy.string() + ".corrupt-1", error)) {
        row.state += "\nis damaged";
        row.advice = "Quillmere sets it aside at its next start, and begins anew.";
    } else if (result.config) {
        row.state += "\ncan be read";
    } else if (defaults.data("config")) {
        row.state += "\nholds groups that cannot be read";
        row.advice = "Quillmere begins with its first group; what you change there replaces them.";
    } else {
        row.state += "\nno groups are stored yet";
    }
    return result;
}

}  // namespace quillmere
