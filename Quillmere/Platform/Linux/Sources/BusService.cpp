#include "Quillmere/Platform/Linux/Sources/BusService.h"

#include <QDBusPendingCall>
#include <QDBusReply>

#include <algorithm>
#include <limits>
#include <utility>

namespace quillmere {

namespace {

const QString noOwner = QStringLiteral("org.freedesktop.DBus.Error.NameHasNoOwner");

/// What the bus's client library takes: whole milliseconds, at least one.
int millisecondsUntil(BusService::Clock::time_point deadline) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - BusService::Clock::now());
    return static_cast<int>(std::max<std::chrono::milliseconds::rep>(left.count(), 1));
}

}  // namespace

BusService::BusService(const QDBusConnection& bus, Address address, Clock::time_point deadline)
    : bus_(bus), address_(std::move(address)), watcher_(address_.name, bus_, QDBusServiceWatcher::WatchForOwnerChange) {
    connect(&watcher_, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString&, const QString&, const QString& owner) {
                // Whoever has it now has not been asked anything.
                sign_.reset();
                setOwned(!owner.isEmpty());
            });
    QDBusMessage question =
        QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
                                       QStringLiteral("org.freedesktop.DBus"), QStringLiteral("NameHasOwner"));
    question << address_.name;
    const QDBusReply<bool> reply = bus_.call(question, QDBus::Block, millisecondsUntil(deadline));
    isOwned_ = reply.isValid() && reply.value();
}

QDBusMessage BusService::message(const Call& call) const {
    const QString& interface = call.interface.isEmpty() ? address_.interface : call.interface;
    QDBusMessage message = QDBusMessage::createMethodCall(address_.name, address_.path, interface, call.method);
    message.setArguments(call.arguments);
    message.setAutoStartService(false);
    return message;
}

std::optional<std::vector<QVariantList>> BusService::call(std::span<const Call> calls, Clock::time_point deadline) {
    if (!isAnswering() || Clock::now() >= deadline) return std::nullopt;
    std::vector<QDBusPendingCall> pending;
    for (const Call& each : calls)
        pending.push_back(bus_.asyncCall(message(each), millisecondsUntil(deadline)));
    std::vector<QVariantList> answers;
    for (QDBusPendingCall& each : pending) {
        each.waitForFinished();
        const QDBusMessage reply = each.reply();
        if (reply.type() != QDBusMessage::ReplyMessage) {
            noteError(reply);
            return std::nullopt;
        }
        answers.push_back(reply.arguments());
    }
    return answers;
}

/// The watcher's signal comes in the event loop's next turn, and until then
/// somebody else could be asked.
void BusService::noteError(const QDBusMessage& error) {
    const QDBusError::ErrorType type = QDBusError(error).type();
    // The second is the answer to what must not start anything.
    if (type == QDBusError::ServiceUnknown || error.errorName() == noOwner) setOwned(false);
    if (type == QDBusError::NoReply || type == QDBusError::Timeout || type == QDBusError::TimedOut) waitForSign();
}

void BusService::waitForSign() {
    const QDBusMessage question = message({address_.harmlessMethod, {}, {}});
    sign_ = std::make_unique<QDBusPendingCallWatcher>(bus_.asyncCall(question, std::numeric_limits<int>::max()));
    connect(sign_.get(), &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* watcher) {
        if (watcher != sign_.get()) return;
        // Its own signal: not deleted at once.
        sign_.release()->deleteLater();
        const QDBusMessage answer = watcher->reply();
        if (answer.type() == QDBusMessage::ErrorMessage) noteError(answer);
    });
}

void BusService::setOwned(bool isOwned) {
    if (std::exchange(isOwned_, isOwned) == isOwned) return;
    // Not from within a call, whose caller has not got its answer yet.
    QMetaObject::invokeMethod(this, &BusService::ownedChanged, Qt::QueuedConnection);
}

}  // namespace quillmere
