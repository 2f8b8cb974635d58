#pragma once

#include "Quillmere/Platform/EventTap.h"
#include "Quillmere/Platform/Linux/Tap/Service/TapSocket.h"
#include "TapService/TapProtocol.h"

#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <chrono>
#include <memory>
#include <vector>

namespace quillmere {

/// The keyboard filter of the key-tap service, under any display server. Once
/// installed it finds its service again by itself, whatever becomes of that.
class ServiceEventTap final : public QObject, public EventTap {
    Q_OBJECT
public:
    /// The service ends a recording after 30 seconds by itself.
    static constexpr std::chrono::milliseconds recordingRenewal = std::chrono::seconds(20);

    /// Asks for a tap at once, so that the answer is there when it is needed.
    /// `firstWait` is how long the first `install` waits for it at the most: the
    /// service may have to be started. No later call waits.
    /// `renewal` is how often a recording is asked for anew while it lasts.
    ServiceEventTap(const QDBusConnection& bus, std::chrono::milliseconds firstWait,
                    std::chrono::milliseconds renewal = recordingRenewal);
    ~ServiceEventTap() override;

    bool install(Callback callback) override;
    void enable() override;
    void setInterest(const KeyInterest& interest) override;

    /// What was last set.
    const KeyInterest& interest() const { return interest_; }

    /// Asks for a tap, unless there is one: the permission has just come.
    void request();

    /// Whether the service has not said anything yet, as while it is being
    /// started.
    bool isStarting() const { return question_ != nullptr && !hasSpoken_; }

signals:
    /// There is a tap to be had, or again: the next `install` returns true.
    void opened();
    /// An installed tap has gone, and the service gives no other for now.
    void lost();

private:
    void ask(std::chrono::milliseconds patience);
    void answered();
    void retryLater();
    void open(int descriptor);
    void close();
    void send(const tap::ClientMessage& message);
    void sendInterest();

    void receive();
    void handle(const std::vector<tap::ServiceMessage>& messages);
    void handleKey(const tap::KeyEvent& event, bool isStillAwaited);
    void handleDisabled(tap::DisabledReason reason);
    void releaseFn();

    QDBusConnection bus_;
    Callback callback_;
    KeyInterest interest_;
    std::unique_ptr<QDBusPendingCallWatcher> question_;
    std::unique_ptr<TapSocket> socket_;
    bool asksAgain_ = false;  ///< the answer that is on its way may be out of date
    bool isReceiving_ = false;
    bool hasWaited_ = false;
    bool hasSpoken_ = false;
    bool isInstalled_ = false;
    bool fnIsDown_ = false;  ///< as the callback was last told
    QElapsedTimer openFor_;
    QTimer retryTimer_;
    QTimer renewalTimer_;
    std::chrono::seconds retryDelay_;
};

}  // namespace quillmere
