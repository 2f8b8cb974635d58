#include "Quillmere/Settings/GroupBinding.h"

#include <utility>

namespace quillmere {

std::optional<std::size_t> GroupBinding::index() const {
    const auto& groups = model_.config().groups;
    std::size_t passed = 0;
    for (std::size_t i = 0; i < groups.size(); ++i)
        if (groups[i].id == key_.id && passed++ == key_.nth) return i;
    return std::nullopt;
}

const CycleGroup* GroupBinding::group() const {
    const auto found = index();
    return found ? &model_.config().groups[*found] : nullptr;
}

void GroupBinding::edit(const std::function<void(CycleGroup&)>& change) const {
    const auto found = index();
    if (!found) return;
    Config config = model_.config();
    change(config.groups[*found]);
    model_.setConfig(std::move(config));
}

}  // namespace quillmere
