#pragma once

#include "Quillmere/Platform/EventTap.h"
#include "Quillmere/Platform/Linux/Sources/ComposedInputSources.h"

#include <memory>
#include <vector>

namespace quillmere {

/// The first of several taps that there is on this desktop. One that delivers
/// only a part of what is wanted does so until another delivers all. Main
/// thread only.
///
/// None is let switch by itself while a framework of input methods runs: a
/// desktop knows its own layouts alone, and not which method is in use.
class FirstEventTap final : public EventTap {
public:
    /// In the order of who is taken first. `sources` must outlive this.
    FirstEventTap(std::vector<std::unique_ptr<EventTap>> taps, ComposedInputSources& sources);
    ~FirstEventTap() override;

    bool install(Callback callback) override;
    void enable() override;
    void setInterest(const KeyInterest& interest) override;
    bool deliversAll() const override { return inUse_ == nullptr || inUse_->deliversAll(); }
    void arm(const std::vector<ArmedShortcut>& shortcuts) override;

private:
    void use(EventTap& tap);
    void arm();

    ComposedInputSources& sources_;
    std::vector<std::unique_ptr<EventTap>> taps_;
    EventTap* inUse_ = nullptr;
    std::vector<ArmedShortcut> shortcuts_;
};

}  // namespace quillmere
