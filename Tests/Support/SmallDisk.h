#pragma once

#include <filesystem>

namespace quillmere::support {

/// A file system of its own on a folder, seen by this process and its
/// children alone, that can be filled up and made read-only.
class SmallDisk {
public:
    /// Whether this process may mount file systems.
    static bool isAllowed();

    /// Mounts it over the existing empty folder.
    SmallDisk(std::filesystem::path folder, std::size_t bytes);
    ~SmallDisk();
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    /// Uses up all that is free.
    void fill() const;
    /// Frees what `fill` used.
    void makeRoom() const;
    void setReadOnly(bool isReadOnly) const;

private:
    std::filesystem::path filler() const { return folder_ / "filler"; }

    std::filesystem::path folder_;
    std::size_t bytes_;
};

}  // namespace quillmere::support
