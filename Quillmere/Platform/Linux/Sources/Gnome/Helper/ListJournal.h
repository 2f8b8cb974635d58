#pragma once

#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeSource.h"

#include <filesystem>
#include <optional>

namespace quillmere::gnomehelper {

/// The user's list in a file of our own, for as long as something else may
/// stand in its place.
class ListJournal {
public:
    /// A folder that is missing is made when there is something to write.
    explicit ListJournal(std::filesystem::path file);

    /// Absent without a file, and for one with nothing in it.
    std::optional<GnomeSourceList> read() const;
    /// Once this has returned true, the list is there after a loss of power,
    /// too.
    bool write(const GnomeSourceList& list) const;
    void remove() const;

private:
    std::filesystem::path file_;
};

}  // namespace quillmere::gnomehelper
