#pragma once

#include "Quillmere/Platform/Linux/Sources/Gnome/Helper/InputSourceSettings.h"
#include "Quillmere/Platform/Linux/Sources/Gnome/Helper/ListJournal.h"

#include <chrono>
#include <cstddef>

namespace quillmere::gnomehelper {

/// Switches a GNOME Shell that can be told nothing: it puts into use whatever
/// it finds to be the first source that it has used before, and of a list that
/// has only one, twice, that is this one. So the list is made such a pair for a
/// moment, and then what it was. (One entry alone would take the shell's own
/// indicator away meanwhile.)
///
/// For that moment the user's list is not in the settings: it is in a journal,
/// and whoever finds a pair and the journal puts it back.
class PairSwitch {
public:
    /// How long the shell needs to take in a list, and the compositor to have
    /// its keymap after the second one: with less, of 100 letters typed at once
    /// afterwards some were in the former layout.
    static constexpr std::chrono::milliseconds pairStands{50};
    static constexpr std::chrono::milliseconds listStands{30};
    /// How much longer each of them waits for a shell that is busy, as one that
    /// draws without a graphics card: together with the above less than the
    /// program waits for a switch.
    static constexpr std::chrono::milliseconds longestPair{150};
    static constexpr std::chrono::milliseconds longestList{100};

    /// Both must outlive this. Puts back what a process that was killed has
    /// left.
    PairSwitch(InputSourceSettings& settings, ListJournal& journal);
    /// The journal goes.
    ~PairSwitch();
    PairSwitch(const PairSwitch&) = delete;
    PairSwitch& operator=(const PairSwitch&) = delete;

    /// The user's list.
    GnomeSourceList sources() const;
    /// The place of the current one in it; its size when it is empty.
    std::size_t current() const;
    /// Makes a source of the list current, and returns when that is in effect;
    /// false for one that is not in the list, and where the list may not be
    /// changed.
    bool select(const GnomeSource& source);

private:
    void putBack();
    bool note(const GnomeSourceList& list);

    InputSourceSettings& settings_;
    ListJournal& journal_;
    GnomeSourceList noted_;  ///< what is in the journal
};

}  // namespace quillmere::gnomehelper
