#pragma once

#include "Quillmere/Platform/EventTap.h"
#include "Quillmere/Platform/KeyEvent.h"
#include "Quillmere/Platform/Linux/Tap/X11/VerdictPort.h"

#include <QObject>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>

namespace quillmere {

/// Brings key events from a tap's thread to the callback on the main thread,
/// in order, and verdicts back.
///
/// A verdict is awaited for a limited time only. Whoever asked then gets
/// "pass"; if the main thread had not begun with the event by then it never
/// will, so that a key that has passed does not switch anything later. The
/// exchange is disabled from then on: nothing is asked, and the callback finds
/// `tapDisabledByTimeout` next in the row, to answer it with `enable`.
class VerdictExchange final : public QObject, public VerdictPort {
public:
    /// Made and destroyed on the main thread, whose event loop delivers.
    /// `patience` is how long a verdict is awaited.
    VerdictExchange(EventTap::Callback callback, std::chrono::milliseconds patience);

    // On the tap's thread:

    /// Delivers the event and waits for the verdict; "pass" when there is none
    /// in time, and at once while disabled.
    InterceptDecision ask(const KeyEventFields& event) override;

    /// Delivers the event without waiting. While disabled nothing is delivered
    /// but releases, which end what is known of a press; false then. Of equal
    /// repeats that the main thread has not fetched yet one is kept.
    bool tell(const KeyEventFields& event) override;

    // On the main thread:

    /// Delivers again after a time-out.
    void enable();

    /// Whether the callback is running, so that the tap's thread may be
    /// waiting for it.
    bool isDelivering() const { return deliveryDepth_ > 0; }

    // On any thread:

    bool isEnabled() const override;

    /// Ends the exchange: nothing is delivered any more, and whoever waits
    /// gets "pass" at once.
    void close();

protected:
    bool event(QEvent* event) override;

private:
    struct Item {
        KeyEventFields event;
        std::uint64_t request = 0;  ///< 0: nobody waits for a verdict
    };

    void push(const Item& item);
    void deliverAll();
    bool takeNext(Item& item);
    void answer(std::uint64_t request, InterceptDecision verdict);

    EventTap::Callback callback_;
    const std::chrono::milliseconds patience_;
    int deliveryDepth_ = 0;

    mutable std::mutex mutex_;
    std::condition_variable answered_;
    std::deque<Item> queue_;
    bool isScheduled_ = false;  ///< the main thread has been asked to look
    bool isEnabled_ = true;
    bool isClosed_ = false;
    std::uint64_t lastRequest_ = 0;
    std::uint64_t answeredRequest_ = 0;
    InterceptDecision verdict_ = InterceptDecision::pass;
};

}  // namespace quillmere
