#pragma once

#include "QuillmereCore/UserDefaults.h"

#include <functional>
#include <memory>

namespace quillmere {

/// Deferred work on the main thread, and the time. Main thread only.
class MainQueue {
public:
    /// A scheduled job. Dropping the handle cancels the job, also from within
    /// the job itself; dropping it after the job ran does nothing.
    class Job {
    public:
        Job() = default;
        Job(const Job&) = delete;
        Job& operator=(const Job&) = delete;
        virtual ~Job() = default;
    };
    using JobHandle = std::unique_ptr<Job>;

    MainQueue() = default;
    MainQueue(const MainQueue&) = delete;
    MainQueue& operator=(const MainQueue&) = delete;
    virtual ~MainQueue() = default;

    /// Runs `job` once, `seconds` from now.
    [[nodiscard]] virtual JobHandle after(double seconds, std::function<void()> job) = 0;

    /// Runs `job` again and again with this period.
    [[nodiscard]] virtual JobHandle every(double seconds, std::function<void()> job) = 0;

    /// The wall-clock time.
    virtual Date now() const = 0;
};

}  // namespace quillmere
