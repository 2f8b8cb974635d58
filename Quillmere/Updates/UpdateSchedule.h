#pragma once

#include "Quillmere/Platform/MainQueue.h"
#include "Quillmere/Updates/UpdateResult.h"
#include "QuillmereCore/UpdateStore.h"

#include <functional>
#include <memory>
#include <string>

namespace quillmere {

/// When to look for updates, and what the user gets to see of it: an automatic
/// check 30 seconds after launch and then about once a day, which shows nothing
/// but a newer version; and checks on the user's request, which always answer.
/// Main thread only.
class UpdateSchedule {
public:
    using Completion = std::function<void(UpdateResult)>;

    /// What the schedule sets in motion.
    struct Actions {
        /// Begins a check and calls the completion once, later, on the main
        /// thread. Not calling it at all blocks every further check.
        std::function<void(Completion)> check;
        std::function<void(const UpdateOffer&)> present;
        std::function<void(const std::string& message, const std::string& informativeText)> alert;
    };

    /// Nothing runs yet. `current` is the version that runs. The references
    /// must outlive this.
    UpdateSchedule(MainQueue& queue, UpdateStore& store, AppVersion current, Actions actions);

    /// Begins the automatic checks; once, at launch.
    void startUpdateSchedule();

    /// Checks now. Nothing happens while a check is under way, not even for a
    /// manual one.
    void runUpdateCheck(bool manual);

    /// Whether a check is under way.
    bool checkingUpdate() const { return checkingUpdate_; }

private:
    void automaticUpdateCheck();
    void complete(const UpdateResult& result, bool manual);

    MainQueue& queue_;
    UpdateStore& store_;
    AppVersion current_;
    Actions actions_;
    MainQueue::JobHandle firstCheck_;
    MainQueue::JobHandle updateTimer_;
    bool checkingUpdate_ = false;
    // Tells a completion that comes too late that the schedule is gone.
    std::shared_ptr<UpdateSchedule*> self_ = std::make_shared<UpdateSchedule*>(this);
};

}  // namespace quillmere
