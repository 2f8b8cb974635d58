#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>
#include <QVariantList>

#include <chrono>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace quillmere {

/// A program of the desktop that is asked over the message bus while the
/// keyboard waits: it may come and go, and it may stand still. Nothing here
/// ever starts it. Main thread only.
class BusService : public QObject {
    Q_OBJECT
public:
    using Clock = std::chrono::steady_clock;

    struct Call {
        QString method;
        QVariantList arguments;
        QString interface;  ///< empty: that of the address
    };

    /// Where it is to be found, and a method without arguments or effect, by
    /// which to learn that it moves again.
    struct Address {
        QString name;
        QString path;
        QString interface;
        QString harmlessMethod;
    };

    /// Asks the bus, by `deadline`, whether somebody has the name.
    BusService(const QDBusConnection& bus, Address address, Clock::time_point deadline);

    /// Whether somebody has the name.
    bool isOwned() const { return isOwned_; }

    /// Whether a call would be sent: somebody has the name and does not stand
    /// still.
    bool isAnswering() const { return isOwned_ && !sign_; }

    /// Makes the calls together and returns their answers in order; none when
    /// one is an error or missing at the deadline. After that nothing is sent
    /// and there is none at once until the service has answered something: who
    /// stands still is waited for once.
    std::optional<std::vector<QVariantList>> call(std::span<const Call> calls, Clock::time_point deadline);

signals:
    /// Somebody has taken the name, or nobody has it any more.
    void ownedChanged();

private:
    QDBusMessage message(const Call& call) const;
    void setOwned(bool isOwned);
    void waitForSign();
    void noteError(const QDBusMessage& error);

    QDBusConnection bus_;
    Address address_;
    QDBusServiceWatcher watcher_;
    bool isOwned_ = false;
    std::unique_ptr<QDBusPendingCallWatcher> sign_;  ///< of a service that stands still
};

}  // namespace quillmere
