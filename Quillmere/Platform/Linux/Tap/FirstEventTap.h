#pragma once

#include "Quillmere/Platform/EventTap.h"

#include <memory>
#include <vector>

namespace quillmere {

/// The first of several taps that there is on this desktop. One that delivers
/// only a part of what is wanted does so until another delivers all. Main
/// thread only.
class FirstEventTap final : public EventTap {
public:
    /// In the order of who is taken first.
    explicit FirstEventTap(std::vector<std::unique_ptr<EventTap>> taps);

    bool install(Callback callback) override;
    void enable() override;
    void setInterest(const KeyInterest& interest) override;
    bool deliversAll() const override { return inUse_ == nullptr || inUse_->deliversAll(); }
    void arm(const std::vector<ArmedShortcut>& shortcuts) override;

private:
    void use(EventTap& tap);

    std::vector<std::unique_ptr<EventTap>> taps_;
    EventTap* inUse_ = nullptr;
};

}  // namespace quillmere
