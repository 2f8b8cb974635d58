#pragma once

#include "Quillmere/Platform/Linux/Sources/DesktopInputSources.h"
#include "Quillmere/Platform/Linux/Sources/Xkb/XkbRulesNames.h"
#include "Quillmere/Platform/Linux/Sources/XkbLayoutRegistry.h"
#include "Quillmere/Platform/Linux/X11/X11Connection.h"

#include <QSocketNotifier>

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillmere {

/// The layouts of an X server's keyboard (XKB groups), on a connection of its
/// own.
///
/// The server reports every change of the layout and of the list before it
/// reports a key press that comes later, so what it has sent so far is the
/// state that a press has met. It is read without a round trip: the keyboard
/// stands still while a shortcut is decided about, and each trip would add a
/// fifth to the whole switch. `select` does take one, to know that the server
/// has switched.
class XkbInputSources final : public DesktopInputSources {
public:
    /// Null when there is no X server or its keyboard is not the desktop's.
    static std::unique_ptr<XkbInputSources> create();
    ~XkbInputSources() override;

    bool isAvailable() override { return !connection_->isLost(); }
    std::vector<InputSourceRecord> sources() override;
    std::optional<std::string> currentID() override;
    /// 0 once the group is locked and nothing else; 1 for a layout that is not
    /// there or that the server did not switch to.
    int select(const InputSourceRecord& source) override;

    /// Where the server has one layout, makes this one it, by setxkbmap, as
    /// frameworks of input methods do; true once the server has it. Several are
    /// somebody's own and stay, which is true as well. Waits for it within the
    /// time of a switch; what takes longer is done later.
    bool useAlone(const XkbLayout& layout);

private:
    explicit XkbInputSources(std::unique_ptr<X11Connection> connection);

    void subscribe();
    bool catchUp();
    bool handleQueuedEvents();
    bool waitForServer(std::chrono::steady_clock::time_point deadline) const;
    void readNames();
    XkbRulesNames readProperty() const;
    std::vector<std::string> readGroupsIfMoreThan(std::size_t limit) const;
    void followGroups();
    std::optional<unsigned int> queryGroup() const;
    std::optional<unsigned int> indexOf(const std::string& id) const;

    std::unique_ptr<X11Connection> connection_;
    unsigned long namesAtom_;
    XkbRulesNames names_;
    std::vector<InputSourceRecord> records_;  ///< of the names, once somebody has asked for them
    XkbLayoutRegistry registry_;
    unsigned int lockedGroup_ = 0;
    /// Reads what the server sends even when nobody asks, or it would have to
    /// keep it all.
    std::unique_ptr<QSocketNotifier> incoming_;
};

}  // namespace quillmere
