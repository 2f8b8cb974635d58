#pragma once

#include "TapService/TapProtocol.h"

#include <memory>
#include <optional>
#include <vector>

class QSocketNotifier;

namespace quillmere {

/// The program's end of the key-tap service's channel. Never blocks. Main
/// thread only.
class TapSocket {
public:
    /// Takes the descriptor over. Null when the service does not begin as it
    /// should: it is of another version, then.
    static std::unique_ptr<TapSocket> adopt(int descriptor);
    ~TapSocket();
    TapSocket(const TapSocket&) = delete;
    TapSocket& operator=(const TapSocket&) = delete;

    /// Tells when there is something to receive, or the service has hung up.
    QSocketNotifier& notifier() const { return *notifier_; }

    /// All that has come; no value when the service has hung up, or speaks
    /// nonsense.
    std::optional<std::vector<tap::ServiceMessage>> receive();

    /// False when the service has hung up, or does not read.
    bool send(const tap::ClientMessage& message);

private:
    explicit TapSocket(int descriptor);

    enum class Reception { message, nothing, broken };
    Reception receiveOne(tap::ServiceMessage& message);

    int descriptor_;
    std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace quillmere
