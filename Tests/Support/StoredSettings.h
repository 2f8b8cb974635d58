#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace quillmere::support {

/// The program's stored settings as they lie on the disk, read and written
/// beside it.
class StoredSettings {
public:
    /// `configHome` stands for XDG_CONFIG_HOME.
    explicit StoredSettings(const std::filesystem::path& configHome);

    const std::filesystem::path& file() const { return file_; }
    std::filesystem::path folder() const { return file_.parent_path(); }

    /// Stores bytes under a key, making the store when there is none. `type`
    /// is the store's name for the kind of value.
    void set(const std::string& key, const std::string& bytes, const std::string& type = "data") const;

    /// What is stored under the key now, whatever its kind; no value when
    /// there is nothing, or no readable store.
    std::optional<std::string> value(const std::string& key) const;

private:
    std::filesystem::path file_;
};

}  // namespace quillmere::support
