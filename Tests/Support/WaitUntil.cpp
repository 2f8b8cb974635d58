#include "Tests/Support/WaitUntil.h"

#include <QCoreApplication>
#include <QThread>

namespace quillmere::support {

namespace {

constexpr unsigned long pollMilliseconds = 2;

void runEventLoopBriefly() {
    QCoreApplication::processEvents();
    QThread::msleep(pollMilliseconds);
}

}  // namespace

bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds deadline) {
    const auto end = std::chrono::steady_clock::now() + deadline;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end) return false;
        runEventLoopBriefly();
    }
    return true;
}

bool holdsFor(const std::function<bool()>& condition, std::chrono::milliseconds duration) {
    return !waitUntil([&] { return !condition(); }, duration);
}

}  // namespace quillmere::support
