#include "Quillmere/Platform/Linux/Sources/SwitchWait.h"

#include <QCoreApplication>

#include <algorithm>
#include <utility>

namespace quillmere {

namespace {

using Clock = std::chrono::steady_clock;

/// What the waits of this turn have taken so far.
Clock::duration spent{};
bool endsWithTurn = false;

void endTurn() {
    SwitchWait::renew();
    endsWithTurn = false;
}

}  // namespace

SwitchWait::SwitchWait() {
    if (std::exchange(endsWithTurn, true)) return;
    QMetaObject::invokeMethod(QCoreApplication::instance(), endTurn, Qt::QueuedConnection);
}

SwitchWait::~SwitchWait() {
    spent += Clock::now() - start_;
}

void SwitchWait::renew() {
    spent = {};
}

Clock::time_point SwitchWait::deadline() const {
    return start_ + std::max<Clock::duration>(longestSwitch - spent, {});
}

}  // namespace quillmere
