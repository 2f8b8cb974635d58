#pragma once

#include "Tests/Support/ChildProcess.h"

#include <QDBusConnection>

#include <memory>
#include <string>

namespace quillmere::support {

/// A private message bus that starts nothing by itself: what is on it is what
/// the test put there. Any user may.
class SessionBus {
public:
    /// Starts it and waits until it listens. `folder` holds its socket.
    SessionBus(const std::filesystem::path& folder, const Environment& environment);

    /// For DBUS_SESSION_BUS_ADDRESS.
    const std::string& address() const { return address_; }

    /// A new connection to it under a name of its own, so that several
    /// services of one process are told apart. Throws when the bus refuses.
    QDBusConnection connect() const;

private:
    std::unique_ptr<ChildProcess> process_;
    std::string address_;
};

}  // namespace quillmere::support
