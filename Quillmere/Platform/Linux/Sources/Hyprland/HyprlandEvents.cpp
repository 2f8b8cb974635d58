#include "Quillmere/Platform/Linux/Sources/Hyprland/HyprlandEvents.h"

#include "Quillmere/Platform/Linux/Sources/LocalSocket.h"

#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <utility>

namespace quillmere {

namespace {

// The longest are the titles of windows. More than this is kept by nobody.
constexpr qsizetype longestLine = 65536;

// What one reading takes in at most: somebody who never ends must not hold up
// the main thread. The rest calls for the next one.
constexpr int mostChunks = 64;

}  // namespace

std::unique_ptr<HyprlandEvents> HyprlandEvents::open(const std::string& folder, std::set<QByteArray> wanted) {
    const int descriptor = localSocket::open(folder + "/.socket2.sock");
    if (descriptor < 0) return nullptr;
    return std::unique_ptr<HyprlandEvents>(new HyprlandEvents(descriptor, std::move(wanted)));
}

HyprlandEvents::HyprlandEvents(int descriptor, std::set<QByteArray> wanted)
    : descriptor_(descriptor), wanted_(std::move(wanted)), incoming_(descriptor, QSocketNotifier::Read) {
    connect(&incoming_, &QSocketNotifier::activated, this, &HyprlandEvents::read);
}

HyprlandEvents::~HyprlandEvents() {
    close(descriptor_);
}

void HyprlandEvents::read() {
    receive();
    if (isLost_ || !events_.empty()) emit came();
}

void HyprlandEvents::receive() {
    std::array<char, 16384> chunk;
    for (int i = 0; i < mostChunks && !isLost_; ++i) {
        const ssize_t count = recv(descriptor_, chunk.data(), chunk.size(), 0);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0 && errno == EAGAIN) return;
        if (count <= 0) {
            isLost_ = true;
            // A lost connection stays readable for ever.
            incoming_.setEnabled(false);
            return;
        }
        line_.append(chunk.data(), count);
        takeLines();
    }
}

void HyprlandEvents::takeLines() {
    qsizetype from = 0;
    for (qsizetype end = 0; (end = line_.indexOf('\n', from)) >= 0; from = end + 1) {
        const QByteArray line = line_.mid(from, end - from);
        const qsizetype mark = line.indexOf(">>");
        if (!std::exchange(isTooLong_, false) && mark > 0 && wanted_.contains(line.first(mark)))
            events_.push_back({line.first(mark), line.mid(mark + 2)});
    }
    line_.remove(0, from);
    if (line_.size() <= longestLine) return;
    isTooLong_ = true;
    line_.clear();
}

std::vector<HyprlandEvents::Event> HyprlandEvents::take() {
    return std::exchange(events_, {});
}

}  // namespace quillmere
