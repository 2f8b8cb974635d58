#include "TapService/TapServer.h"

#include "TapService/EventHandler.h"
#include "TapService/Log.h"

#include <algorithm>
#include <utility>

namespace quillmere::tap {

TapServer::TapServer(sd_event* loop, Keyboards& keyboards, Sessions& sessions, Time recordingLimit)
    : loop_(loop), keyboards_(keyboards), sessions_(sessions), engine_(keyboards), recordingLimit_(recordingLimit) {
    sessions_.onChange = [this] { sessionsChanged(); };
}

TapServer::~TapServer() {
    sessions_.onChange = nullptr;
    engine_.releaseEverything(monotonicNow());
}

bool TapServer::start() {
    // A wait of half a second needs no exact end; the accuracy saves wake-ups.
    constexpr Time accuracy = std::chrono::milliseconds(10);
    int status = EventHandler<&TapServer::timeHasCome>::at(loop_, timer_, Time::zero(), accuracy, this);
    if (status >= 0) status = sd_event_source_set_enabled(timer_.get(), SD_EVENT_OFF);
    if (status < 0) {
        Log::error("Cannot make a timer", status);
        return false;
    }
    return keyboards_.start(*this);
}

UserAccount& TapServer::account(uid_t user) {
    return accounts_.try_emplace(user, monotonicNow()).first->second;
}

bool TapServer::payForTap(uid_t user) {
    return account(user).openings.spend(monotonicNow());
}

FileDescriptor TapServer::openTap(uid_t user, const std::string& session) {
    if (isEnding_) return {};
    TapChannel::Handlers handlers{
        .onMessage = [this](TapChannel& channel, const ClientMessage& message) { return handle(channel, message); },
        .onClosed = [this](TapChannel& channel) { closed(channel); },
    };
    FileDescriptor program;
    auto channel = TapChannel::make(loop_, user, session, std::move(handlers), program);
    if (!channel) return {};
    const auto earlier = std::ranges::find(channels_, session, &TapChannel::session);
    if (earlier != channels_.end()) erase(**earlier);
    channels_.push_back(std::move(channel));
    sessions_.watch(session);
    chooseOwner();
    if (onTapCountChange) onTapCountChange();
    return program;
}

void TapServer::closeTaps(const std::function<bool(uid_t)>& mayKeep) {
    closeWhere([&mayKeep](const TapChannel& channel) { return !mayKeep(channel.user()); });
}

void TapServer::end() {
    isEnding_ = true;
    closeWhere([](const TapChannel&) { return true; });
}

void TapServer::closeWhere(const std::function<bool(const TapChannel&)>& condition) {
    for (bool isDone = false; !isDone;) {
        const auto channel =
            std::ranges::find_if(channels_, [&condition](const auto& candidate) { return condition(*candidate); });
        isDone = channel == channels_.end();
        if (!isDone) closed(**channel);
    }
}

void TapServer::sessionsChanged() {
    closeWhere([this](const TapChannel& channel) { return sessions_.hasEnded(channel.session()); });
    chooseOwner();
}

void TapServer::closed(TapChannel& channel) {
    erase(channel);
    chooseOwner();
    if (onTapCountChange) onTapCountChange();
}

void TapServer::erase(TapChannel& channel) {
    if (owner_ == &channel) {
        engine_.detach(monotonicNow());
        owner_ = nullptr;
    }
    sessions_.unwatch(channel.session());
    std::erase_if(channels_, [&channel](const auto& candidate) { return candidate.get() == &channel; });
}

bool TapServer::handle(TapChannel& channel, const ClientMessage& message) {
    const Time now = monotonicNow();
    const bool isOwner = owner_ == &channel;
    if (const auto* verdict = std::get_if<Verdict>(&message)) return handleVerdict(channel, *verdict);
    if (!account(channel.user()).messages.spend(now)) return false;
    if (const auto* interest = std::get_if<Interest>(&message)) {
        handleInterest(channel, *interest, now);
    } else if (channel.enable() && isOwner) {
        engine_.enable(now);
    }
    follow();
    return true;
}

bool TapServer::handleVerdict(TapChannel& channel, const Verdict& verdict) {
    const Time now = monotonicNow();
    if (owner_ == &channel && engine_.awaits(verdict.sequence)) {
        engine_.verdict(verdict.sequence, verdict.swallow, now);
        follow();
        return true;
    }
    return channel.hasAsked(verdict.sequence) && account(channel.user()).messages.spend(now);
}

void TapServer::handleInterest(TapChannel& channel, const Interest& interest, Time now) {
    channel.interest = interest;
    channel.recordsUntil.reset();
    if (interest.everyKey) {
        channel.recordsUntil = now + recordingLimit_;
        noteRecording(channel, now);
    }
    if (owner_ == &channel) engine_.setInterest(interest, now);
}

void TapServer::noteRecording(const TapChannel& channel, Time now) {
    UserAccount& user = account(channel.user());
    ++user.recordings;
    // A line for each would let a program fill the journal.
    if (user.recordingNoted && now < *user.recordingNoted + TapServer::recordingLimit) return;
    user.recordingNoted = now;
    Log::notice("User " + std::to_string(channel.user())
                + " records a shortcut and sees every key meanwhile; asked for " + std::to_string(user.recordings)
                + " times");
}

void TapServer::endRecordings(Time now) {
    for (const auto& channel : channels_) {
        if (!channel->recordsUntil || now < *channel->recordsUntil) continue;
        channel->recordsUntil.reset();
        channel->interest.everyKey = false;
        if (owner_ == channel.get()) engine_.setInterest(channel->interest, now);
    }
}

void TapServer::chooseOwner() {
    // In front of a lock screen sits nobody knows who.
    const auto isEntitled = [this](const auto& channel) {
        return !channel->isFreed() && sessions_.isActive(channel->session(), channel->user())
               && !sessions_.isLocked(channel->session());
    };
    const auto found = std::ranges::find_if(channels_, isEntitled);
    TapChannel* next = found == channels_.end() ? nullptr : found->get();
    const Time now = monotonicNow();
    if (next != owner_) {
        engine_.detach(now);
        owner_ = next;
        if (next != nullptr) engine_.attach(*next, next->interest, next->isEnabled(), now);
    }
    follow();
}

void TapServer::follow() {
    // The engine lets go of an owner from whom the user has freed the keyboards.
    if (owner_ != nullptr && owner_->isFreed()) {
        Log::notice("The keyboards were freed with Backspace, Escape and Enter; that program's tap stays off");
        owner_ = nullptr;
    }
    // What has not been read of a clone goes with it; at the end they all go.
    if (channels_.empty() && !isEnding_ && !engine_.isGrabbing()) keyboards_.dropClones();
    armTimer();
}

void TapServer::timeHasCome() {
    const Time now = monotonicNow();
    endRecordings(now);
    engine_.tick(now);
    follow();
}

void TapServer::armTimer() {
    std::optional<Time> deadline = engine_.deadline();
    for (const auto& channel : channels_) {
        if (channel->recordsUntil) deadline = std::min(deadline.value_or(Time::max()), *channel->recordsUntil);
    }
    if (deadline) sd_event_source_set_time(timer_.get(), microseconds(*deadline));
    sd_event_source_set_enabled(timer_.get(), deadline ? SD_EVENT_ONESHOT : SD_EVENT_OFF);
}

void TapServer::deviceAdded(DeviceId device, const KeySet& keys) {
    engine_.addDevice(device, keys, monotonicNow());
    follow();
}

void TapServer::deviceRemoved(DeviceId device) {
    engine_.removeDevice(device, monotonicNow());
    follow();
}

void TapServer::deviceEvent(DeviceId device, const InputEvent& event) {
    engine_.handleEvent(device, event, monotonicNow());
    follow();
}

void TapServer::cloneMade(DeviceId device, bool ready) {
    engine_.cloneMade(device, ready, monotonicNow());
    follow();
}

}  // namespace quillmere::tap
