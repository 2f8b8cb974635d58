#pragma once

#include "Quillmere/ConfigModel.h"

#include <cstddef>
#include <functional>
#include <optional>

namespace quillmere {

/// Which group: the `nth`, from 0, of those with this identifier. There is more
/// than one only in a configuration that was edited by hand.
struct GroupKey {
    UUID id;
    std::size_t nth = 0;

    friend bool operator==(const GroupKey&, const GroupKey&) = default;
};

/// One group of the live configuration, found by its key each time: an editor
/// that outlives its group for a moment changes nothing. Main thread only.
class GroupBinding {
public:
    /// `model` must outlive this.
    GroupBinding(ConfigModel& model, const GroupKey& key) : model_(model), key_(key) {}

    ConfigModel& model() const { return model_; }
    const GroupKey& key() const { return key_; }

    /// The group as it is now, valid until the configuration changes; null
    /// when there is none any more.
    const CycleGroup* group() const;

    /// Changes a copy and replaces the group with it: one write. Nothing when
    /// the group is gone.
    void edit(const std::function<void(CycleGroup&)>& change) const;

private:
    std::optional<std::size_t> index() const;

    ConfigModel& model_;
    GroupKey key_;
};

}  // namespace quillmere
