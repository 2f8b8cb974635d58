#include "Quillmere/Platform/Linux/Desktop/Gnome/Installer/EnabledExtensions.h"
#include "Quillmere/Platform/Linux/Desktop/Gnome/Installer/ExtensionFolder.h"
#include "Quillmere/Platform/Linux/Desktop/Gnome/Installer/RunningShell.h"

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>

namespace {

using namespace quillmere::gnomeextension;

const std::string uuid = "quillmere@quillmere.org";

std::filesystem::path offeredFolder() {
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    return program.parent_path() / QUILLMERE_SHARE_FROM_PLUGINS / "quillmere" / "gnome-extension";
}

/// What there is to do, in a word.
std::string state(const ExtensionFolder& folder, const std::optional<std::filesystem::path>& form) {
    if (!form) return "unsuitable";
    if (!folder.isThere() || !isEnabled(uuid)) return "absent";
    return folder.isSame(*form) ? "present" : "other";
}

}  // namespace

// quillmere-gnome-extension state | add | remove
//
// Of the extension for GNOME Shell in the user's own folder. `state` prints one
// of: absent, present, other (than this program's), unsuitable (for the shell
// that runs, or none runs). `add` and `remove` succeed when it is so afterwards;
// the shell looks at its next start.
int main(int argc, char** argv) {
    constexpr int usage = 2;
    const std::string what = argc == 2 ? argv[1] : "";
    const ExtensionFolder folder(offeredFolder(), uuid);
    if (what == "remove") {
        const bool isOff = disable(uuid);
        return folder.remove() && isOff ? EXIT_SUCCESS : EXIT_FAILURE;
    }
    const auto version = runningShellVersion();
    const auto form = version ? folder.formFor(*version) : std::nullopt;
    if (what == "state") {
        std::cout << state(folder, form) << '\n';
        return EXIT_SUCCESS;
    }
    if (what != "add") return usage;
    return form && folder.unpack(*form) && enable(uuid) ? EXIT_SUCCESS : EXIT_FAILURE;
}
