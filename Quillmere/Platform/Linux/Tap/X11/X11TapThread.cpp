#include "Quillmere/Platform/Linux/Tap/X11/X11TapThread.h"

#include <X11/Xlib.h>
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
constexpr std::chrono::milliseconds verdictDeadline{500};

// Taking grabs is a few round trips; more than this and the server is busy, so
// that the user's next press waits as well.
constexpr std::chrono::milliseconds ordersPatience{50};

}  // namespace

std::unique_ptr<X11TapThread> X11TapThread::start(EventTap::Callback callback, const KeyInterest& interest) {
    auto connection = X11Connection::open();
    if (connection == nullptr) return nullptr;
    std::unique_ptr<X11TapThread> result(new X11TapThread(std::move(connection), std::move(callback), interest));
    if (result->wakeDescriptor_ < 0) return nullptr;
    result->filter_->setInterest(interest);
    // From here on no press is missed.
    result->connection_->synchronize();
    result->thread_ = std::thread([self = result.get()] { self->run(); });
    return result;
}

X11TapThread::X11TapThread(std::unique_ptr<X11Connection> connection, EventTap::Callback callback,
                           const KeyInterest& interest)
    : exchange_(std::move(callback), verdictDeadline),
      connection_(std::move(connection)),
      filter_(std::in_place, *connection_, exchange_),
      guardProgram_(TapGuard::standardProgram()),
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
    startGuard();
    for (;;) {
        filter_->processEvents();
        filter_->processDeadlines();
        // Whatever came in during their round trips is in Xlib's queue, where
        // poll does not see it.
        filter_->processEvents();
        {
            const std::scoped_lock lock(mutex_);
            if (isEnding_) break;
        }
        if (connection_->isLost()) {
            if (reconnect()) continue;
            break;
        }
        waitForWork();
        takeOrders();
        if (stopRequest_ && stopRequest_->take()) stopProcess();
    }
    if (connection_ && !connection_->isLost()) filter_->letGo();
    guard_.reset();
    // A request to stop would find nobody to grant it.
    stopRequest_.reset();
    const std::scoped_lock lock(mutex_);
    hasEnded_ = true;
    ordersTaken_.notify_all();
}

void X11TapThread::startGuard() {
    // The guard names the connection by something that was made through it.
    const unsigned long resource = XCreatePixmap(connection_->display(), connection_->root(), 1, 1, 1);
    connection_->synchronize();
    guard_ = TapGuard::start(guardProgram_, resource);
    if (guard_ && currentInterest_.everyKey) guard_->setRecording(true);
}

/// The guard has closed the connection, since this process was stopped for a
/// while, or the server has gone.
bool X11TapThread::reconnect() {
    guard_.reset();
    filter_.reset();
    connection_ = X11Connection::open();
    if (connection_ == nullptr) return false;
    filter_.emplace(*connection_, exchange_);
    filter_->setInterest(currentInterest_);
    startGuard();
    return true;
}

void X11TapThread::waitForWork() {
    std::array<pollfd, 4> descriptors{{
        {.fd = connection_->fileDescriptor(), .events = POLLIN, .revents = 0},
        {.fd = wakeDescriptor_, .events = POLLIN, .revents = 0},
        {.fd = stopRequest_->fileDescriptor(), .events = POLLIN, .revents = 0},
        {.fd = guard_ ? guard_->fileDescriptor() : -1, .events = POLLIN, .revents = 0},
    }};
    int timeout = -1;
    if (const auto deadline = filter_->deadline()) {
        using std::chrono::milliseconds;
        const auto left = std::chrono::ceil<milliseconds>(*deadline - std::chrono::steady_clock::now());
        timeout = static_cast<int>(std::max(left, milliseconds{0}).count());
    }
    if (poll(descriptors.data(), descriptors.size(), timeout) <= 0) return;
    // What was pressed before the connection was closed must not switch
    // anything now: it is not even looked at.
    if ((descriptors.front().revents & (POLLHUP | POLLERR)) != 0) connection_->synchronize();
    if (descriptors.back().revents != 0 && !guard_->answer()) guard_.reset();
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
    if (wasEnabled) filter_->resynchronize();
    if (!interest) return;
    if (guard_ && interest->everyKey != currentInterest_.everyKey) guard_->setRecording(interest->everyKey);
    currentInterest_ = *interest;
    filter_->setInterest(currentInterest_);
    connection_->synchronize();
    const std::scoped_lock lock(mutex_);
    if (newInterest_ == interest) newInterest_.reset();
    ordersTaken_.notify_all();
}

/// A stopped process that holds a grab would freeze the keyboard for good.
void X11TapThread::stopProcess() {
    filter_->letGo();
    StopRequest::stopProcess();
    filter_->setInterest(currentInterest_);
}

}  // namespace quillmere
