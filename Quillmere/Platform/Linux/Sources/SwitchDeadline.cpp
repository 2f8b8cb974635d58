#include "Quillmere/Platform/Linux/Sources/SwitchDeadline.h"

#include <QCoreApplication>

#include <optional>

namespace quillmere {

std::chrono::steady_clock::time_point switchDeadline() {
    static std::optional<std::chrono::steady_clock::time_point> deadline;
    const auto now = std::chrono::steady_clock::now();
    if (deadline && *deadline > now) return *deadline;
    if (!deadline)
        QMetaObject::invokeMethod(QCoreApplication::instance(), [] { deadline.reset(); }, Qt::QueuedConnection);
    // A turn in which other things have taken longer, as the program's start,
    // has not had its time for asking yet. Whoever did not answer in time is not
    // asked again in the same turn.
    deadline = now + longestSwitch;
    return *deadline;
}

}  // namespace quillmere
