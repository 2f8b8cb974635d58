#pragma once

#include <QCoreApplication>
#include <QEvent>

namespace quillmere {

/// Does at once what an event loop would do before it next waits: handles what
/// has been posted, deletes what is to be deleted later, and what follows.
inline void settle() {
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCoreApplication::processEvents();
}

}  // namespace quillmere
