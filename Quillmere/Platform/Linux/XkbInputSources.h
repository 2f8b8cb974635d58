#pragma once

#include "Quillmere/Platform/InputSourceService.h"
#include "Quillmere/Platform/Linux/X11Connection.h"
#include "Quillmere/Platform/Linux/XkbLayoutRegistry.h"
#include "Quillmere/Platform/Linux/XkbRulesNames.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillmere {

/// The layouts of an X server's keyboard (XKB groups), on a connection of its
/// own. `currentID` and `select` cost one round trip each.
class XkbInputSources final : public InputSourceService {
public:
    /// Null when there is no X server or its keyboard is not the desktop's.
    static std::unique_ptr<XkbInputSources> create();

    std::vector<InputSourceRecord> sources() override;
    std::optional<std::string> currentID() override;
    /// 0 once the group is locked and nothing else; 1 for a layout that is not
    /// there or that the server did not switch to.
    int select(const InputSourceRecord& source) override;

private:
    explicit XkbInputSources(std::unique_ptr<X11Connection> connection);

    std::optional<unsigned int> lockedGroup();
    std::optional<unsigned int> queryLockedGroup();
    std::optional<unsigned int> indexOf(const std::string& id) const;
    bool refreshNames();
    void readNames();

    std::unique_ptr<X11Connection> connection_;
    unsigned long namesAtom_;
    bool areNamesStale_ = true;
    XkbRulesNames names_;
    XkbLayoutRegistry registry_;
};

}  // namespace quillmere
