#pragma once

#include "Quillmere/Platform/EventTap.h"

#include <utility>

namespace quillmere {

/// A tap whose events a test feeds by hand.
class FakeEventTap : public EventTap {
public:
    bool install(Callback newCallback) override {
        ++installCalls;
        if (!allowed) return false;
        callback = std::move(newCallback);
        return true;
    }
    void enable() override { ++enableCalls; }
    void setInterest(const KeyInterest& newInterest) override { interest = newInterest; }

    bool allowed = true;
    int installCalls = 0;
    int enableCalls = 0;
    Callback callback;
    KeyInterest interest;
};

}  // namespace quillmere
