#pragma once

#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>

#include <memory>
#include <set>
#include <string>
#include <vector>

namespace quillmere {

/// Hyprland's socket for events: a line each, "activelayout>>board,English (US)".
/// It cannot be told which are wanted. Main thread only.
class HyprlandEvents final : public QObject {
    Q_OBJECT
public:
    struct Event {
        QByteArray name;  ///< "activelayout"
        QByteArray data;
    };

    /// Connects; null when nobody listens. `folder` is that of the running
    /// compositor's sockets; events of other names than `wanted` are left out.
    static std::unique_ptr<HyprlandEvents> open(const std::string& folder, std::set<QByteArray> wanted);
    ~HyprlandEvents() override;

    /// Takes in what has come, without waiting.
    void receive();

    /// The events that have come since the last call, oldest first.
    std::vector<Event> take();

    /// The compositor has closed it.
    bool isLost() const { return isLost_; }

signals:
    /// There are events to take, or it is lost.
    void came();

private:
    HyprlandEvents(int descriptor, std::set<QByteArray> wanted);
    void read();
    void takeLines();

    int descriptor_;
    std::set<QByteArray> wanted_;
    QSocketNotifier incoming_;
    bool isLost_ = false;
    QByteArray line_;         ///< of which the end has not come yet
    bool isTooLong_ = false;  ///< what comes until the line's end is no event
    std::vector<Event> events_;
};

}  // namespace quillmere
