#pragma once

#include "Quillmere/Platform/MainQueue.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace quillmere {

/// A main queue whose clock stands still until a test moves it.
class ManualQueue : public MainQueue {
public:
    [[nodiscard]] JobHandle after(double seconds, std::function<void()> job) override {
        return add(seconds, std::nullopt, std::move(job));
    }

    [[nodiscard]] JobHandle every(double seconds, std::function<void()> job) override {
        return add(seconds, seconds, std::move(job));
    }

    Date now() const override {
        return start_ + std::chrono::duration_cast<Date::duration>(std::chrono::duration<double>(time_));
    }

    /// Moves the clock on and runs what falls due on the way, in the order of
    /// the due times; jobs scheduled meanwhile take part.
    void advance(double seconds) {
        const double end = time_ + seconds;
        while (const auto entry = nextDue(end)) {
            time_ = std::max(time_, entry->due);
            if (entry->period) {
                entry->due += *entry->period;
            } else {
                entry->live = false;
            }
            // A copy, since the job may drop its own handle.
            const auto job = entry->job;
            job();
        }
        time_ = end;
    }

    /// Sets the wall clock to `date` without running anything.
    void setNow(Date date) { start_ += date - now(); }

    /// How many jobs are waiting.
    std::size_t pendingCount() const {
        return static_cast<std::size_t>(std::ranges::count_if(entries_, [](const auto& e) { return e->live; }));
    }

    /// Seconds from now until the next job; none when nothing waits.
    std::optional<double> secondsUntilNext() const {
        std::optional<double> result;
        for (const auto& entry : entries_) {
            if (entry->live && (!result || entry->due - time_ < *result)) result = entry->due - time_;
        }
        return result;
    }

private:
    struct Entry {
        double due = 0;
        std::optional<double> period;
        std::function<void()> job;
        std::uint64_t order = 0;
        bool live = true;
    };

    class Handle : public Job {
    public:
        explicit Handle(std::shared_ptr<Entry> entry) : entry_(std::move(entry)) {}
        ~Handle() override { entry_->live = false; }

    private:
        std::shared_ptr<Entry> entry_;
    };

    JobHandle add(double seconds, std::optional<double> period, std::function<void()> job) {
        auto entry = std::make_shared<Entry>(Entry{time_ + seconds, period, std::move(job), nextOrder_++, true});
        entries_.push_back(entry);
        return std::make_unique<Handle>(std::move(entry));
    }

    std::shared_ptr<Entry> nextDue(double end) {
        std::erase_if(entries_, [](const auto& entry) { return !entry->live; });
        const auto earlier = [](const auto& a, const auto& b) {
            return std::pair(a->due, a->order) < std::pair(b->due, b->order);
        };
        const auto next = std::ranges::min_element(entries_, earlier);
        // Sums of decimal fractions miss the exact due time by a hair.
        constexpr double hair = 1e-9;
        return next != entries_.end() && (*next)->due <= end + hair ? *next : nullptr;
    }

    std::vector<std::shared_ptr<Entry>> entries_;
    std::uint64_t nextOrder_ = 0;
    double time_ = 0;
    Date start_ = Date(std::chrono::seconds(1'700'000'000));
};

}  // namespace quillmere
