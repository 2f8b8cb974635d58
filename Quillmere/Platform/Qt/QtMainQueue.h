#pragma once

#include "Quillmere/Platform/MainQueue.h"

namespace quillmere {

/// Deferred work on Qt's event loop of the main thread.
class QtMainQueue : public MainQueue {
public:
    JobHandle after(double seconds, std::function<void()> job) override;
    JobHandle every(double seconds, std::function<void()> job) override;
    Date now() const override;
};

}  // namespace quillmere
