#pragma once

#include "TapService/Handles.h"
#include "TapService/Keyboards.h"
#include "TapService/Sessions.h"
#include "TapService/TapChannel.h"
#include "TapService/TapEngine.h"
#include "TapService/UserAccount.h"

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace quillmere::tap {

/// Brings keyboards, channels and sessions together: the tap of whoever sits
/// in front of the machine owns the engine.
class TapServer : public KeyboardSink {
public:
    /// How long a program sees every key before it must ask again.
    static constexpr Time recordingLimit = std::chrono::seconds(30);

    TapServer(sd_event* loop, Keyboards& keyboards, Sessions& sessions,
              Time recordingLimit = TapServer::recordingLimit);
    ~TapServer() override;

    /// False when there is no way to find the keyboards.
    bool start();

    /// Pays for opening a tap; false when the user's programs have opened too
    /// many in a short time.
    bool payForTap(uid_t user);
    /// Opens a tap for this session of the user, in place of an earlier one;
    /// returns the program's end of the channel, none when there are no
    /// descriptors left. The caller has made sure that it may.
    FileDescriptor openTap(uid_t user, const std::string& session);
    /// Closes the taps for whose users `mayKeep` says false.
    void closeTaps(const std::function<bool(uid_t)>& mayKeep);

    /// Closes all taps and opens none any more. The grabs end as soon as no key
    /// is held.
    void end();

    std::size_t tapCount() const { return channels_.size(); }
    /// Whether any keyboard is grabbed.
    bool isGrabbing() const { return engine_.isGrabbing(); }
    /// A tap was opened or closed.
    std::function<void()> onTapCountChange;

    void deviceAdded(DeviceId device, const KeySet& keys) override;
    void deviceRemoved(DeviceId device) override;
    void deviceEvent(DeviceId device, const InputEvent& event) override;
    void cloneMade(DeviceId device, bool ready) override;

private:
    bool handle(TapChannel& channel, const ClientMessage& message);
    bool handleVerdict(TapChannel& channel, const Verdict& verdict);
    void handleInterest(TapChannel& channel, const Interest& interest, Time now);
    void noteRecording(const TapChannel& channel, Time now);
    void endRecordings(Time now);
    UserAccount& account(uid_t user);
    void closeWhere(const std::function<bool(const TapChannel&)>& condition);
    void closed(TapChannel& channel);
    void erase(TapChannel& channel);
    void sessionsChanged();
    void chooseOwner();
    /// After anything that may have moved the engine.
    void follow();
    void armTimer();
    void timeHasCome();

    sd_event* loop_;
    Keyboards& keyboards_;
    Sessions& sessions_;
    TapEngine engine_;
    Time recordingLimit_;
    std::vector<std::unique_ptr<TapChannel>> channels_;
    /// Of those who were given access; nobody else can open a tap.
    std::map<uid_t, UserAccount> accounts_;
    TapChannel* owner_ = nullptr;
    bool isEnding_ = false;
    EventSource timer_;
};

}  // namespace quillmere::tap
