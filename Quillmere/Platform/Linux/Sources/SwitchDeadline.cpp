#include "Quillmere/Platform/Linux/Sources/SwitchDeadline.h"

#include <QCoreApplication>

#include <optional>

namespace quillmere {

std::chrono::steady_clock::time_point switchDeadline() {
    static std::optional<std::chrono::steady_clock::time_point> deadline;
    if (!deadline) {
        deadline = std::chrono::steady_clock::now() + longestSwitch;
        QMetaObject::invokeMethod(QCoreApplication::instance(), [] { deadline.reset(); }, Qt::QueuedConnection);
    }
    return *deadline;
}

}  // namespace quillmere
