#pragma once

#include <QByteArray>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace quillmere {

/// A connection to the control socket of sway (the IPC of i3, version 4).
/// Requests and their replies are in one order; events come in between. Never
/// waits past a given moment, whatever the compositor does. One thread.
class SwayConnection {
public:
    using Clock = std::chrono::steady_clock;

    /// The requests that are made of it, by the protocol's numbers.
    enum class Request : std::uint32_t {
        runCommand = 0,
        subscribe = 2,
        getVersion = 7,
        getConfig = 9,
        getBindingState = 12,
        getInputs = 100,
    };

    struct Message {
        Request type;
        std::string payload;
    };

    /// Connects; null when nobody listens there. Does not wait for an answer.
    static std::unique_ptr<SwayConnection> open(const std::string& path);
    ~SwayConnection();
    SwayConnection(const SwayConnection&) = delete;
    SwayConnection& operator=(const SwayConnection&) = delete;

    /// Sends the messages together and returns their replies (JSON) in order;
    /// none when they are not all there by the deadline. While replies of an
    /// earlier exchange are still missing, nothing is sent and there is none
    /// at once: a compositor that stands still is waited for once.
    std::optional<std::vector<QByteArray>> exchange(std::span<const Message> messages, Clock::time_point deadline);

    /// Takes in what has come, without waiting.
    void receive();

    bool hasEvents() const { return !events_.empty(); }
    /// The events (JSON) that have come since the last call, oldest first.
    std::vector<QByteArray> takeEvents();

    int fileDescriptor() const { return descriptor_; }

    /// The compositor has closed it, or does not speak the protocol.
    bool isLost() const { return isLost_; }

private:
    explicit SwayConnection(int descriptor) : descriptor_(descriptor) {}

    bool send(std::span<const Message> messages, Clock::time_point deadline);
    void takeMessages();
    void sortIn(std::uint32_t type, QByteArray payload);

    int descriptor_;
    bool isLost_ = false;
    QByteArray incoming_;
    std::vector<QByteArray> replies_;
    std::vector<QByteArray> events_;
    std::size_t overdue_ = 0;  ///< replies that nobody waits for any more
};

}  // namespace quillmere
