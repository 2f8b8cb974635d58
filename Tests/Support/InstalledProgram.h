#pragma once

#include <filesystem>
#include <string>

namespace quillmere::support {

/// A copy of the built program and its plug-ins with an information file of its
/// own beside it, as a packager would install it.
class InstalledProgram {
public:
    /// Copies `program` into `folder`, which must outlive this. `feed` is the
    /// update feed's address; none when empty.
    InstalledProgram(const std::filesystem::path& folder, const std::filesystem::path& program, const std::string& feed,
                     const std::string& version);

    /// The program file.
    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

}  // namespace quillmere::support
