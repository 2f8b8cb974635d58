#pragma once

#include "Quillmere/Platform/EventTap.h"

#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

namespace quillmere {

/// A tap whose events a test feeds by hand.
class FakeEventTap : public EventTap {
public:
    bool install(Callback newCallback) override {
        ++installCalls;
        if (onInstall) onInstall();
        if (!allowed) return false;
        callback = std::move(newCallback);
        return deliversAll();
    }
    void enable() override { ++enableCalls; }
    void setInterest(const KeyInterest& newInterest) override { interest = newInterest; }
    void arm(const std::vector<ArmedShortcut>& shortcuts) override { armed = shortcuts; }
    bool deliversAll() const override {
        return hearsFn || std::ranges::none_of(interest.shortcuts, &Shortcut::isFnAlone);
    }

    std::function<void()> onInstall;  ///< each time before the answer
    bool allowed = true;
    bool hearsFn = true;  ///< otherwise nothing that is on Fn is delivered
    int installCalls = 0;
    int enableCalls = 0;
    Callback callback;
    KeyInterest interest;
    std::vector<ArmedShortcut> armed;
};

}  // namespace quillmere
