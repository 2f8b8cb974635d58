#pragma once

#include <cstdlib>
#include <filesystem>

namespace quillmere::gnomehelper {

/// Where the helper keeps the user's list while another may stand in its place:
/// in $XDG_STATE_HOME/quillmere. The file is there only while the helper runs,
/// or when it could not end in order.
inline std::filesystem::path listJournalFile() {
    const char* const state = std::getenv("XDG_STATE_HOME");
    const char* const home = std::getenv("HOME");
    std::filesystem::path folder = state == nullptr ? "" : state;
    // A relative one is to be ignored.
    if (!folder.is_absolute()) folder = std::filesystem::path(home == nullptr ? "/" : home) / ".local" / "state";
    return folder / "quillmere" / "gnome-sources";
}

}  // namespace quillmere::gnomehelper
