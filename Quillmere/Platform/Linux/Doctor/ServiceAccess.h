#pragma once

#include <QDBusConnection>

#include <string>

namespace quillmere {

/// What the key-tap service says of this user, without a tap being asked for:
/// each session has one at a time, and the program's own would end. A value.
struct ServiceAccess {
    enum class Kind {
        noBus,    ///< there is no system bus to ask on
        missing,  ///< nobody offers the service
        silent,   ///< it did not answer as it should; `problem` says how
        refused,  ///< the user has not been given access
        given,
    };

    Kind kind = Kind::noBus;
    std::string problem;

    bool isGiven() const { return kind == Kind::given; }

    /// Asks, which starts the service as a program that needs it does. Waits
    /// as long as the program's start.
    static ServiceAccess asked(const QDBusConnection& bus);
};

}  // namespace quillmere
