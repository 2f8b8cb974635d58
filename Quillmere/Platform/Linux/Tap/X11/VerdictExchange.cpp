#include "Quillmere/Platform/Linux/Tap/X11/VerdictExchange.h"

#include "Quillmere/Platform/Linux/Sources/SwitchWait.h"

#include <QCoreApplication>
#include <QEvent>

#include <memory>
#include <utility>

namespace quillmere {

namespace {

QEvent::Type lookEventType() {
    static const int type = QEvent::registerEventType();
    return static_cast<QEvent::Type>(type);
}

bool isRepeat(const KeyEventFields& event) {
    return event.type == KeyEventType::keyDown && event.autorepeat != 0;
}

}  // namespace

VerdictExchange::VerdictExchange(EventTap::Callback callback, std::chrono::milliseconds patience)
    : callback_(std::move(callback)), patience_(patience) {}

InterceptDecision VerdictExchange::ask(const KeyEventFields& event) {
    std::unique_lock lock(mutex_);
    if (!isEnabled_ || isClosed_) return InterceptDecision::pass;
    const std::uint64_t request = ++lastRequest_;
    push({event, request});
    const bool isOver = answered_.wait_for(lock, patience_, [&] { return answeredRequest_ == request || isClosed_; });
    if (answeredRequest_ == request) return verdict_;
    // Under the same lock as the taking of it: either it is still here and is
    // gone now, or the main thread is at it.
    std::erase_if(queue_, [request](const Item& item) { return item.request == request; });
    if (!isOver) {
        isEnabled_ = false;
        push({{.type = KeyEventType::tapDisabledByTimeout, .timestamp = event.timestamp}});
    }
    return InterceptDecision::pass;
}

bool VerdictExchange::tell(const KeyEventFields& event) {
    const std::scoped_lock lock(mutex_);
    if (isClosed_ || (!isEnabled_ && event.type != KeyEventType::keyUp)) return false;
    // A held key repeats for as long as the main thread is busy.
    const bool isKnown = isRepeat(event) && !queue_.empty() && isRepeat(queue_.back().event)
                         && queue_.back().event.keyCode == event.keyCode;
    if (!isKnown) push({event});
    return true;
}

void VerdictExchange::push(const Item& item) {
    queue_.push_back(item);
    if (std::exchange(isScheduled_, true)) return;
    // Ahead of paint and timer events: a key waits for this one.
    QCoreApplication::postEvent(this, std::make_unique<QEvent>(lookEventType()).release(), Qt::HighEventPriority);
}

void VerdictExchange::enable() {
    const std::scoped_lock lock(mutex_);
    isEnabled_ = true;
}

bool VerdictExchange::isEnabled() const {
    const std::scoped_lock lock(mutex_);
    return isEnabled_;
}

void VerdictExchange::close() {
    const std::scoped_lock lock(mutex_);
    isClosed_ = true;
    queue_.clear();
    answered_.notify_all();
}

bool VerdictExchange::event(QEvent* event) {
    if (event->type() != lookEventType()) return QObject::event(event);
    deliverAll();
    return true;
}

void VerdictExchange::deliverAll() {
    Item item;
    while (takeNext(item)) {
        if (item.request != 0) SwitchWait::renew();
        ++deliveryDepth_;
        const InterceptDecision verdict = callback_(item.event);
        --deliveryDepth_;
        if (item.request != 0) answer(item.request, verdict);
    }
}

bool VerdictExchange::takeNext(Item& item) {
    const std::scoped_lock lock(mutex_);
    // A callback may run an event loop of its own; what comes meanwhile must
    // be able to wake that one.
    isScheduled_ = false;
    if (queue_.empty()) return false;
    item = queue_.front();
    queue_.pop_front();
    return true;
}

void VerdictExchange::answer(std::uint64_t request, InterceptDecision verdict) {
    {
        const std::scoped_lock lock(mutex_);
        // One asks at a time, so a late answer is to a question long given up.
        if (request != lastRequest_) return;
        answeredRequest_ = request;
        verdict_ = verdict;
    }
    // With the lock held, whoever is woken would have to wait for it again.
    answered_.notify_one();
}

}  // namespace quillmere
