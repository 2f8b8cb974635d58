#include "Quillmere/Settings/GroupBinding.h"

#include <algorithm>

namespace quillmere {

const CycleGroup* GroupBinding::group() const {
    const auto& groups = model_.config().groups;
    const auto found = std::ranges::find(groups, groupID_, &CycleGroup::id);
    return found == groups.end() ? nullptr : &*found;
}

void GroupBinding::edit(const std::function<void(CycleGroup&)>& change) const {
    Config config = model_.config();
    const auto found = std::ranges::find(config.groups, groupID_, &CycleGroup::id);
    if (found == config.groups.end()) return;
    change(*found);
    model_.setConfig(std::move(config));
}

}  // namespace quillmere
