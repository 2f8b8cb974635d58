#pragma once

#include "TapService/Handles.h"
#include "TapService/TapPorts.h"
#include "TapService/TapProtocol.h"

#include <sys/types.h>

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace quillmere::tap {

/// The service's end of one program's channel. It trusts nothing that comes
/// in.
class TapChannel : public OwnerPort {
public:
    struct Handlers {
        /// False when this message may not be sent now; the channel then
        /// closes.
        std::function<bool(TapChannel&, const ClientMessage&)> onMessage;
        /// No more comes; this may be destroyed then.
        std::function<void(TapChannel&)> onClosed;
    };

    /// Makes both ends; `program` receives the other one. Null when there are
    /// no descriptors left.
    static std::unique_ptr<TapChannel> make(sd_event* loop, uid_t user, std::string session, Handlers handlers,
                                            FileDescriptor& program);

    uid_t user() const { return user_; }
    const std::string& session() const { return session_; }

    /// What the program has told last.
    Interest interest;
    /// When it has seen every key for long enough.
    std::optional<Time> recordsUntil;
    bool isEnabled() const { return isEnabled_; }
    /// The user has freed the keyboards from this tap, for good.
    bool isFreed() const { return isFreed_; }
    /// False when it stays off.
    bool enable();
    /// Whether this question was ever asked here.
    bool hasAsked(std::uint32_t sequence) const { return sequence <= lastAsked_; }

    bool tell(const KeyEvent& event) override;
    void tellDisabled(DisabledReason reason) override;

private:
    TapChannel(FileDescriptor file, uid_t user, std::string session, Handlers handlers);

    bool watch(sd_event* loop);
    void handle(std::uint32_t readiness);
    void read();
    void handlePacket(std::span<const std::byte> packet);
    void close();
    bool send(const ServiceMessage& message);
    void sendOwed();

    FileDescriptor file_;
    EventSource source_;
    uid_t user_;
    std::string session_;
    Handlers handlers_;
    bool isEnabled_ = true;
    bool isFreed_ = false;
    std::uint32_t lastAsked_ = 0;
    /// What could not be sent, because the program does not read.
    std::optional<Disabled> owed_;
};

}  // namespace quillmere::tap
