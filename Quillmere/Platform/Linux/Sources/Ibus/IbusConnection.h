#pragma once

#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QFileSystemWatcher>
#include <QObject>

#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace quillmere {

/// The connection to the bus of IBus's daemon. The daemon may come and go, each
/// time at another address, and stand still: nothing here waits for it, and
/// nothing starts it. Main thread only.
class IbusConnection : public QObject {
    Q_OBJECT
public:
    IbusConnection() = default;
    ~IbusConnection() override;

    /// Connects to the daemon that is there now, unless that is done already or
    /// was tried less than a second ago; for the first time it has to be called,
    /// and after that only where no daemon has ever run: else its note is watched.
    void look();

    /// Absent while there is none. Before `greeted` the daemon answers to nothing
    /// that is sent, but it answers afterwards.
    const std::optional<QDBusConnection>& bus() const { return bus_; }

signals:
    /// The daemon takes calls from now on.
    void greeted();
    /// The daemon has gone, or another one has taken its place.
    void lost();

private slots:
    void noteEnd();

private:
    void lookNow();
    void watch();
    void lookAgain();
    void open(const std::string& address);
    void greet();
    void close();
    void replace();

    std::unique_ptr<QFileSystemWatcher> watcher_;  ///< null where no daemon has ever run
    std::optional<QDBusConnection> bus_;
    std::string address_;  ///< of that bus
    std::unique_ptr<QDBusPendingCallWatcher> greeting_;
    std::chrono::steady_clock::time_point nextLook_;
};

}  // namespace quillmere
