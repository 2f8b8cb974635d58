#include "Quillmere/Platform/Linux/Tap/X11/X11TapThread.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

namespace quillmere {

namespace {

// While a verdict is awaited the keyboard stands still, so the wait is a limit
// for how long a busy main thread can hold up the user.
constexpr std::chrono::milliseconds verdictPatience{500};

// Taking grabs is a few round trips; more than this and the server is busy, so
// that the user's next press waits as well.
constexpr std::chrono::milliseconds ordersPatience{50};

}  // namespace

std::unique_ptr<X11TapThread> X11TapThread::start(EventTap::Callback callback, const KeyInterest& interest) {
    auto connection = X11Connection::open();
    if (connection == nullptr) return nullptr;
    std::unique_ptr<X11TapThread> result(new X11TapThread(std::move(connection), std::move(callback), interest));
    if (result->wakeDescriptor_ < 0) return nullptr;
    result->filter_.setInterest(interest);
    // From here on no press is missed.
    result->connection_->synchronize();
    result->thread_ = std::thread([self = result.get()] { self->run(); });
    return result;
}

X11TapThread::X11TapThread(std::unique_ptr<X11Connection> connection, EventTap::Callback callback,
                           const KeyInterest& interest)
    : exchange_(std::move(callback), verdictPatience),
      connection_(std::move(connection)),
      filter_(*connection_, exchange_),
      stopRequest_(std::in_place),
      wakeDescriptor_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      currentInterest_(interest) {}

X11TapThread::~X11TapThread() {
    exchange_.close();
    {
        const std::scoped_lock lock(mutex_);
        isEnding_ = true;
    }
    wake();
    if (thread_.joinable()) thread_.join();
    if (wakeDescriptor_ >= 0) close(wakeDescriptor_);
}

void X11TapThread::setInterest(const KeyInterest& interest) {
    std::unique_lock lock(mutex_);
    newInterest_ = interest;
    wake();
    // The thread may be waiting for the very callback that we are called from.
    if (exchange_.isDelivering()) return;
    ordersTaken_.wait_for(lock, ordersPatience, [this] { return !newInterest_ || hasEnded_; });
}

void X11TapThread::enable() {
    exchange_.enable();
    const std::scoped_lock lock(mutex_);
    wasEnabled_ = true;
    wake();
}

void X11TapThread::wake() const {
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = write(wakeDescriptor_, &one, sizeof one);
}

void X11TapThread::run() {
    for (;;) {
        filter_.processEvents();
        filter_.processDeadlines();
        // Whatever came in during their round trips is in Xlib's queue, where
        // poll does not see it.
        filter_.processEvents();
        {
            const std::scoped_lock lock(mutex_);
            if (isEnding_ || connection_->isLost()) break;
        }
        waitForWork();
        takeOrders();
        if (stopRequest_ && stopRequest_->take()) stopProcess();
    }
    if (!connection_->isLost()) filter_.letGo();
    // A request to stop would find nobody to grant it.
    stopRequest_.reset();
    const std::scoped_lock lock(mutex_);
    hasEnded_ = true;
    ordersTaken_.notify_all();
}

void X11TapThread::waitForWork() const {
    std::array<pollfd, 3> descriptors{{
        {.fd = connection_->fileDescriptor(), .events = POLLIN, .revents = 0},
        {.fd = wakeDescriptor_, .events = POLLIN, .revents = 0},
        {.fd = stopRequest_->fileDescriptor(), .events = POLLIN, .revents = 0},
    }};
    int timeout = -1;
    if (const auto deadline = filter_.deadline()) {
        using std::chrono::milliseconds;
        const auto left = std::chrono::ceil<milliseconds>(*deadline - std::chrono::steady_clock::now());
        timeout = static_cast<int>(std::max(left, milliseconds{0}).count());
    }
    poll(descriptors.data(), descriptors.size(), timeout);
}

void X11TapThread::takeOrders() {
    std::uint64_t count = 0;
    if (read(wakeDescriptor_, &count, sizeof count) != sizeof count) return;
    std::optional<KeyInterest> interest;
    bool wasEnabled = false;
    {
        const std::scoped_lock lock(mutex_);
        interest = newInterest_;
        wasEnabled = std::exchange(wasEnabled_, false);
    }
    if (wasEnabled) filter_.resynchronize();
    if (!interest) return;
    currentInterest_ = *interest;
    filter_.setInterest(currentInterest_);
    connection_->synchronize();
    const std::scoped_lock lock(mutex_);
    if (newInterest_ == interest) newInterest_.reset();
    ordersTaken_.notify_all();
}

/// A stopped process that holds a grab would freeze the keyboard for good.
void X11TapThread::stopProcess() {
    filter_.letGo();
    StopRequest::stopProcess();
    filter_.setInterest(currentInterest_);
}

}  // namespace quillmere
