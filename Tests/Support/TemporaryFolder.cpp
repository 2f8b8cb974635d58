#include "Tests/Support/TemporaryFolder.h"

#include "Tests/Support/SupportError.h"

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

namespace quillmere::support {

TemporaryFolder::TemporaryFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "quillmere-test-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw SupportError("no temporary folder", errno);
    path_ = name;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;  // a leftover in /tmp fails no test
    std::filesystem::remove_all(path_, ignored);
}

std::filesystem::path TemporaryFolder::makeFolder(const std::filesystem::path& name) const {
    const std::filesystem::path folder = path_ / name;
    std::filesystem::create_directories(folder);
    std::filesystem::permissions(folder, std::filesystem::perms::owner_all);
    return folder;
}

}  // namespace quillmere::support
