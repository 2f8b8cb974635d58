#include "Tests/Soak/Footprint.h"

#include "Tests/Support/SupportError.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace quillmere::soak {

namespace {

std::filesystem::path folderOf(pid_t process) {
    return "/proc/" + std::to_string(process);
}

}  // namespace

// Names of proc_pid_smaps(5).
Footprint Footprint::of(pid_t process) {
    Footprint footprint;
    std::ifstream file(folderOf(process) / "smaps_rollup");
    for (std::string word; file >> word;) {
        if (word == "Pss:") file >> footprint.memory;
        if (word == "Pss_Anon:") file >> footprint.written;
    }
    if (footprint.memory <= 0 || footprint.written <= 0) throw support::SupportError("no memory figures");
    footprint.descriptors =
        static_cast<int>(std::distance(std::filesystem::directory_iterator(folderOf(process) / "fd"), {}));
    return footprint;
}

std::vector<pid_t> childrenOf(pid_t process) {
    std::vector<pid_t> children;
    for (const auto& thread : std::filesystem::directory_iterator(folderOf(process) / "task")) {
        std::ifstream file(thread.path() / "children");
        for (pid_t child = 0; file >> child;)
            children.push_back(child);
    }
    return children;
}

}  // namespace quillmere::soak
