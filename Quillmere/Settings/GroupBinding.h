#pragma once

#include "Quillmere/ConfigModel.h"

#include <functional>

namespace quillmere {

/// One group of the live configuration, found by its identifier each time: an
/// editor that outlives its group for a moment changes nothing. Main thread
/// only.
class GroupBinding {
public:
    /// `model` must outlive this.
    GroupBinding(ConfigModel& model, const UUID& groupID) : model_(model), groupID_(groupID) {}

    ConfigModel& model() const { return model_; }
    const UUID& groupID() const { return groupID_; }

    /// The group as it is now, valid until the configuration changes; null
    /// when there is none any more.
    const CycleGroup* group() const;

    /// Changes a copy and replaces the group with it: one write. Nothing when
    /// the group is gone.
    void edit(const std::function<void(CycleGroup&)>& change) const;

private:
    ConfigModel& model_;
    UUID groupID_;
};

}  // namespace quillmere
