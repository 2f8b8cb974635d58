#include "Quillmere/Platform/Linux/Tap/Service/ServiceEventTap.h"

#include "Quillmere/Platform/Linux/Sources/SwitchWait.h"
#include "Quillmere/Platform/Linux/Tap/Service/TapServiceEvents.h"
#include "TapService/KeyTapNames.h"

#include <QDBusMessage>
#include <QDBusPendingReply>
#include <QDBusUnixFileDescriptor>
#include <QPointer>
#include <QSocketNotifier>

#include <algorithm>
#include <utility>
#include <variant>

#include <fcntl.h>

namespace quillmere {

namespace {

using namespace std::chrono_literals;

// Of a call that nobody waits for; the bus's own limit for starting a service.
constexpr std::chrono::milliseconds patience = 25s;
constexpr std::chrono::seconds firstRetry = 1s;
constexpr std::chrono::seconds longestRetry = 30s;
// A channel that is shorter-lived has been taken away by another program of
// the session, which would do so again and again.
constexpr std::chrono::seconds shortLife = 5s;

bool isQuestion(const tap::ServiceMessage& message) {
    const auto* event = std::get_if<tap::KeyEvent>(&message);
    return event != nullptr && event->sequence != 0;
}

}  // namespace

ServiceEventTap::ServiceEventTap(const QDBusConnection& bus, std::chrono::milliseconds firstWait,
                                 std::chrono::milliseconds renewal)
    : bus_(bus), retryDelay_(firstRetry) {
    renewalTimer_.setSingleShot(true);
    renewalTimer_.setInterval(renewal);
    connect(&renewalTimer_, &QTimer::timeout, this, [this] { sendInterest(); });
    retryTimer_.setSingleShot(true);
    connect(&retryTimer_, &QTimer::timeout, this, [this] { ask(patience); });
    ask(firstWait);
}

ServiceEventTap::~ServiceEventTap() = default;

bool ServiceEventTap::install(Callback callback) {
    callback_ = std::move(callback);
    if (!socket_ && !std::exchange(hasWaited_, true) && question_) {
        question_->waitForFinished();
        // It may have sent its signal, or keep that for later.
        if (question_) answered();
    }
    ask(patience);
    if (socket_ && !std::exchange(isInstalled_, true)) sendInterest();
    return isInstalled_;
}

void ServiceEventTap::enable() {
    send(tap::Enable{});
}

void ServiceEventTap::setInterest(const KeyInterest& interest) {
    // Each message counts for the service, which cuts off who sends too many.
    if (interest == interest_) return;
    interest_ = interest;
    // Before that nobody would answer.
    if (isInstalled_) sendInterest();
}

// The service's channel

void ServiceEventTap::request() {
    asksAgain_ = question_ != nullptr;
    ask(patience);
}

void ServiceEventTap::ask(std::chrono::milliseconds patience) {
    if (socket_ || question_ || !bus_.isConnected()) return;
    const QDBusMessage call = QDBusMessage::createMethodCall(tap::KeyTapNames::service, tap::KeyTapNames::path,
                                                             tap::KeyTapNames::interface, "OpenTap");
    question_ = std::make_unique<QDBusPendingCallWatcher>(bus_.asyncCall(call, static_cast<int>(patience.count())));
    connect(question_.get(), &QDBusPendingCallWatcher::finished, this, [this] { answered(); });
}

void ServiceEventTap::answered() {
    const QDBusPendingReply<QDBusUnixFileDescriptor> reply = *question_;
    // Not deleted at once: this may be its own signal.
    question_->disconnect();
    question_.release()->deleteLater();
    if (reply.error().type() != QDBusError::NoReply) hasSpoken_ = true;
    if (!reply.isError()) open(fcntl(reply.value().fileDescriptor(), F_DUPFD_CLOEXEC, 0));
    if (!socket_ && std::exchange(asksAgain_, false)) ask(patience);
    if (socket_ || !isInstalled_) return;
    retryLater();
    emit lost();
}

void ServiceEventTap::retryLater() {
    retryTimer_.start(retryDelay_);
    retryDelay_ = std::min(2 * retryDelay_, longestRetry);
}

void ServiceEventTap::open(int descriptor) {
    if (descriptor < 0) return;
    socket_ = TapSocket::adopt(descriptor);
    if (!socket_) return;
    openFor_.start();
    connect(&socket_->notifier(), &QSocketNotifier::activated, this, [this] { receive(); });
    if (isInstalled_) sendInterest();
    emit opened();
}

void ServiceEventTap::close() {
    // Its notifier may be what has called.
    socket_->notifier().setEnabled(false);
    QMetaObject::invokeMethod(this, [old = std::shared_ptr<TapSocket>(std::move(socket_))] {}, Qt::QueuedConnection);
    releaseFn();
    if (std::chrono::milliseconds(openFor_.elapsed()) < shortLife) {
        retryLater();
        return;
    }
    // The service may have been exchanged for a newer one, and is started by
    // asking.
    retryDelay_ = firstRetry;
    ask(patience);
}

void ServiceEventTap::send(const tap::ClientMessage& message) {
    // A service that has hung up is found out by receiving.
    if (socket_) socket_->send(message);
}

void ServiceEventTap::sendInterest() {
    send(TapServiceEvents::interest(interest_));
    // The recorder ends the wish when it is no longer to be seen; until then
    // the recording goes on.
    if (interest_.everyKey && socket_) {
        renewalTimer_.start();
    } else {
        renewalTimer_.stop();
    }
}

// Events

void ServiceEventTap::receive() {
    // The callback may run an event loop of its own.
    if (std::exchange(isReceiving_, true)) return;
    while (socket_) {
        const auto messages = socket_->receive();
        if (!messages) {
            close();
            break;
        }
        if (messages->empty()) break;
        if (isInstalled_) handle(*messages);
    }
    isReceiving_ = false;
}

void ServiceEventTap::handle(const std::vector<tap::ServiceMessage>& messages) {
    const auto isDisabled = [](const tap::ServiceMessage& message) {
        return std::holds_alternative<tap::Disabled>(message);
    };
    for (auto message = messages.begin(); message != messages.end(); ++message) {
        if (const auto* disabled = std::get_if<tap::Disabled>(&*message)) {
            handleDisabled(disabled->reason);
        } else if (const auto* event = std::get_if<tap::KeyEvent>(&*message)) {
            const bool isLate = isQuestion(*message) && std::any_of(message, messages.end(), isDisabled);
            handleKey(*event, !isLate);
        }
    }
}

void ServiceEventTap::handleKey(const tap::KeyEvent& event, bool isStillAwaited) {
    // A key that has passed meanwhile must not switch anything later.
    if (!isStillAwaited) return;
    if (event.sequence != 0) SwitchWait::renew();
    InterceptDecision decision = InterceptDecision::pass;
    if (const auto fields = TapServiceEvents::fields(event)) {
        if (fields->type == KeyEventType::flagsChanged) {
            fnIsDown_ = (fields->flags & KeyEventFlags::secondaryFn) != 0;
        }
        decision = callback_(*fields);
    }
    if (event.sequence != 0) send(tap::Verdict{event.sequence, decision == InterceptDecision::swallow});
}

void ServiceEventTap::handleDisabled(tap::DisabledReason reason) {
    const bool byUser = reason == tap::DisabledReason::userInput;
    callback_({.type = byUser ? KeyEventType::tapDisabledByUserInput : KeyEventType::tapDisabledByTimeout});
}

void ServiceEventTap::releaseFn() {
    if (!std::exchange(fnIsDown_, false)) return;
    // First a key, or the release that nobody saw could complete a tap.
    callback_({.type = KeyEventType::systemDefined});
    callback_({.type = KeyEventType::flagsChanged});
}

}  // namespace quillmere
