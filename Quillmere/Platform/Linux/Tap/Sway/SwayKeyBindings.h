#pragma once

#include "Quillmere/Platform/Linux/Sources/Sway/SwayConnection.h"
#include "Quillmere/Platform/Linux/Tap/ReservedKeys.h"
#include "Quillmere/Platform/Linux/Tap/Sway/SwayBinding.h"
#include "Quillmere/Platform/Linux/Tap/Sway/SwayLeftovers.h"

#include <QJsonObject>
#include <QObject>
#include <QSocketNotifier>

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace quillmere {

/// This program's runtime bindings in sway, and what sway tells of keys. All are
/// taken back at the end, and at the start those that were left by a program
/// that was killed. Main thread only.
class SwayKeyBindings final : public QObject {
    Q_OBJECT
public:
    /// Null when no sway that can do it (1.7) listens at this socket. Waits some
    /// seconds for the first answer, since a session that is starting has much
    /// to do.
    static std::unique_ptr<SwayKeyBindings> create(const std::string& socket);
    /// Takes back what is set; waits for that, but not long.
    ~SwayKeyBindings() override;

    /// Replaces what is set; false when sway has not said in time that it has
    /// done so: to be tried again.
    bool set(const std::vector<SwayBinding>& wanted);

    /// The combinations that the user's configuration binds; absent when sway
    /// does not tell.
    std::optional<ReservedKeys> reserved();

    /// The same of the sway at this socket, with nothing bound; absent also where
    /// none is that this program could bind keys in.
    static std::optional<ReservedKeys> reservedAt(const std::string& socket);

signals:
    /// A key of this binding went down: sway has done what it does, if anything.
    void pressed(const SwayBinding& binding);
    /// Keyboards came, went or have other layouts.
    void layoutsChanged();
    /// Sway has read its configuration anew, or it is another one: nothing is
    /// set any more.
    void forgotten();

private:
    using Clock = SwayConnection::Clock;

    explicit SwayKeyBindings(std::string socket);
    bool open(Clock::time_point deadline);
    void readSocket();
    void takeEvents();
    void note(const QJsonObject& event);
    void notePress(const QJsonObject& binding);
    bool run(const std::string& commands);
    std::optional<std::vector<QByteArray>> exchange(const std::vector<SwayConnection::Message>& messages,
                                                    Clock::time_point deadline);

    std::string socket_;
    SwayLeftovers leftovers_;
    std::unique_ptr<SwayConnection> connection_;
    std::unique_ptr<QSocketNotifier> incoming_;
    std::string mode_;  ///< of bindings, the one in use
    std::vector<SwayBinding> set_;
    std::set<std::string> bound_;  ///< combinations that may be bound, by whomever
};

}  // namespace quillmere
