#include "Quillmere/Platform/Qt/QtMainQueue.h"

#include <QTimer>

#include <cmath>
#include <utility>

namespace quillmere {

namespace {

class TimerJob : public MainQueue::Job {
public:
    TimerJob(double seconds, bool repeats, std::function<void()> job) : timer_(new QTimer) {
        timer_->setSingleShot(!repeats);
        // Long periods may be shifted to where the processor wakes up anyway.
        timer_->setTimerType(seconds < 60 ? Qt::PreciseTimer : Qt::VeryCoarseTimer);
        timer_->setInterval(static_cast<int>(std::lround(seconds * 1000)));
        QObject::connect(timer_, &QTimer::timeout, std::move(job));
        timer_->start();
    }

    ~TimerJob() override {
        timer_->stop();
        timer_->disconnect();
        // Not deleted at once: this may run within the timer's own job.
        timer_->deleteLater();
    }

private:
    QTimer* timer_;
};

}  // namespace

MainQueue::JobHandle QtMainQueue::after(double seconds, std::function<void()> job) {
    return std::make_unique<TimerJob>(seconds, false, std::move(job));
}

MainQueue::JobHandle QtMainQueue::every(double seconds, std::function<void()> job) {
    return std::make_unique<TimerJob>(seconds, true, std::move(job));
}

Date QtMainQueue::now() const {
    return std::chrono::system_clock::now();
}

}  // namespace quillmere
