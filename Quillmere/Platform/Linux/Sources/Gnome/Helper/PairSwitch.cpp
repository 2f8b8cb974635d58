#include "Quillmere/Platform/Linux/Sources/Gnome/Helper/PairSwitch.h"

#include "Quillmere/Platform/Linux/Sources/Gnome/Helper/ShellTurn.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace quillmere::gnomehelper {

namespace {

/// What no user's list is.
bool isPair(const GnomeSourceList& list) {
    return list.size() == 2 && list[0] == list[1];
}

/// The list with the one that has been chosen in front: what the shell makes of
/// its own memory on the way through the pair.
GnomeSourceList ledBy(const GnomeSource& first, GnomeSourceList list) {
    const auto found = std::ranges::find(list, first);
    std::rotate(list.begin(), found, found + 1);
    return list;
}

}  // namespace

PairSwitch::PairSwitch(InputSourceSettings& settings, ListJournal& journal) : settings_(settings), journal_(journal) {
    putBack();
}

PairSwitch::~PairSwitch() {
    journal_.remove();
}

void PairSwitch::putBack() {
    const std::optional<GnomeSourceList> list = journal_.read();
    const GnomeSourceList now = settings_.sources();
    if (list && isPair(now) && contains(*list, now.front())) {
        const GnomeSourceList recent = ledBy(now.front(), *list);
        settings_.write(*list, &recent);
    }
    journal_.remove();
}

GnomeSourceList PairSwitch::sources() const {
    return settings_.sources();
}

std::size_t PairSwitch::current() const {
    const GnomeSourceList list = sources();
    for (const GnomeSource& source : settings_.recent()) {
        const auto found = std::ranges::find(list, source);
        if (found != list.end()) return static_cast<std::size_t>(found - list.begin());
    }
    return 0;
}

bool PairSwitch::select(const GnomeSource& source) {
    const GnomeSourceList list = sources();
    if (!contains(list, source) || !settings_.isWritable() || !note(list)) return false;
    const GnomeSourceList pair{source, source};
    settings_.write(pair);
    std::this_thread::sleep_for(pairStands);
    waitForShell(longestPair);
    // Somebody who has written a list meanwhile means that one.
    if (settings_.sources() != pair) return false;
    // The shell does not write its memory when it is not the user who chooses
    // there, and it is what tells which source is current.
    const GnomeSourceList recent = ledBy(source, list);
    settings_.write(list, &recent);
    std::this_thread::sleep_for(listStands);
    waitForShell(longestList);
    return true;
}

/// Once for a list that stays: to force it to the disk takes as long as the
/// disk does.
bool PairSwitch::note(const GnomeSourceList& list) {
    if (list == noted_) return true;
    if (!journal_.write(list)) return false;
    noted_ = list;
    return true;
}

}  // namespace quillmere::gnomehelper
