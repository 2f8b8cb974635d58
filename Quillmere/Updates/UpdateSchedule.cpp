#include "Quillmere/Updates/UpdateSchedule.h"

#include "QuillmereCore/UpdateCheck.h"

#include <utility>

namespace quillmere {

namespace {

// In seconds.
constexpr double firstCheck = 30;
constexpr double hour = 3600;
constexpr double day = 86'400;

}  // namespace

UpdateSchedule::UpdateSchedule(MainQueue& queue, UpdateStore& store, AppVersion current, Actions actions)
    : queue_(queue), store_(store), current_(std::move(current)), actions_(std::move(actions)) {}

void UpdateSchedule::startUpdateSchedule() {
    firstCheck_ = queue_.after(firstCheck, [this] { automaticUpdateCheck(); });
    // Hourly although a check is due daily: a computer that was asleep catches
    // up soon after it wakes.
    updateTimer_ = queue_.every(hour, [this] { automaticUpdateCheck(); });
}

void UpdateSchedule::automaticUpdateCheck() {
    if (!store_.automatic()) return;
    if (UpdateCheck::isDue(store_.lastCheck(), queue_.now(), day)) runUpdateCheck(false);
}

void UpdateSchedule::runUpdateCheck(bool manual) {
    if (checkingUpdate_) return;
    checkingUpdate_ = true;
    // Before the request: a server in trouble is left alone until the next day.
    store_.setLastCheck(queue_.now());
    actions_.check([self = std::weak_ptr(self_), manual](const UpdateResult& result) {
        if (const auto schedule = self.lock()) (*schedule)->complete(result, manual);
    });
}

void UpdateSchedule::complete(const UpdateResult& result, bool manual) {
    checkingUpdate_ = false;
    if (const UpdateOffer* offer = result.offer()) {
        if (UpdateCheck::shouldPresent(offer->version, store_.skipped(), manual)) actions_.present(*offer);
        return;
    }
    if (!manual) return;
    if (const std::string* message = result.failure())
        actions_.alert("Couldn't check for updates.", *message);
    else
        actions_.alert("You're up to date.", "Quillmere " + current_.description() + " is the latest version.");
}

}  // namespace quillmere
