#pragma once

#include <QByteArray>

#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace quillmere {

/// Hyprland's socket for requests: a connection for each, closed at the end of
/// the answer. Never waits past a given moment, whatever the compositor does.
/// One thread.
class HyprlandRequests {
public:
    using Clock = std::chrono::steady_clock;

    /// `folder` is that of the running compositor's sockets.
    explicit HyprlandRequests(const std::string& folder) : path_(folder + "/.socket.sock") {}
    ~HyprlandRequests();
    HyprlandRequests(const HyprlandRequests&) = delete;
    HyprlandRequests& operator=(const HyprlandRequests&) = delete;

    /// The whole answer to one request ("j/devices"); absent when it is not
    /// there by the deadline, or nobody listens. What is no request is answered
    /// with a sentence, so an answer proves nothing. While that of an earlier
    /// request is still missing nothing is sent and there is none at once: a
    /// compositor that stands still is waited for once, and switches nothing
    /// late.
    std::optional<QByteArray> ask(std::string_view request, Clock::time_point deadline);

private:
    enum class End { open, whole, lost };

    End receive();
    bool send(std::string_view request, Clock::time_point deadline);
    void hangUp();

    std::string path_;
    int descriptor_ = -1;  ///< of the request that has not been answered yet
    QByteArray answer_;    ///< as far as it has come
};

}  // namespace quillmere
