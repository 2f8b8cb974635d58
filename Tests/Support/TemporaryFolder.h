#pragma once

#include <filesystem>

namespace quillmere::support {

/// A fresh folder of the caller's own, removed with everything in it at the
/// end.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }

    /// Makes a folder in it, private to the user, and returns its path.
    std::filesystem::path makeFolder(const std::filesystem::path& name) const;

private:
    std::filesystem::path path_;
};

}  // namespace quillmere::support
