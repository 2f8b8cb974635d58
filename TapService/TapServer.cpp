#include "TapService/TapServer.h"

#include "TapService/Clock.h"
#include "TapService/Log.h"

#include <algorithm>
#include <utility>

namespace quillmere::tap {

TapServer::TapServer(sd_event* loop, Keyboards& keyboards, Sessions& sessions)
    : loop_(loop), keyboards_(keyboards), sessions_(sessions), engine_(keyboards) {
    sessions_.onChange = [this] { chooseOwner(); };
}

TapServer::~TapServer() {
    sessions_.onChange = nullptr;
    engine_.releaseEverything(monotonicNow());
}

bool TapServer::start() {
    sd_event_source* source = nullptr;
    const auto handler = [](sd_event_source*, std::uint64_t, void* data) {
        auto* self = static_cast<TapServer*>(data);
        self->engine_.tick(monotonicNow());
        self->follow();
        return 0;
    };
    // A wait of half a second needs no exact end; the accuracy saves wake-ups.
    int status = sd_event_add_time(loop_, &source, CLOCK_MONOTONIC, 0, 10'000, handler, this);
    timer_.reset(source);
    if (status >= 0) status = sd_event_source_set_enabled(source, SD_EVENT_OFF);
    if (status < 0) {
        Log::error("Cannot make a timer", status);
        return false;
    }
    return keyboards_.start(*this);
}

FileDescriptor TapServer::openTap(uid_t user, const std::string& session) {
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
    for (bool isDone = false; !isDone;) {
        const auto channel = std::ranges::find_if_not(
            channels_, [&mayKeep](const auto& candidate) { return mayKeep(candidate->user()); });
        isDone = channel == channels_.end();
        if (!isDone) closed(**channel);
    }
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
    if (!channel.budget().spend(now)) return false;
    if (const auto* interest = std::get_if<Interest>(&message)) {
        channel.interest = *interest;
        if (isOwner) engine_.setInterest(*interest, now);
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
    return channel.hasAsked(verdict.sequence) && channel.budget().spend(now);
}

void TapServer::chooseOwner() {
    const auto isEntitled = [this](const auto& channel) {
        return !channel->isFreed() && sessions_.isActive(channel->session(), channel->user());
    };
    const auto found = std::ranges::find_if(channels_, isEntitled);
    TapChannel* next = found == channels_.end() ? nullptr : found->get();
    const Time now = monotonicNow();
    if (next != owner_) {
        engine_.detach(now);
        owner_ = next;
        if (next != nullptr) {
            const bool isLocked = sessions_.isLocked(next->session());
            engine_.attach(*next, next->interest, next->isEnabled(), isLocked, now);
        }
    } else if (next != nullptr) {
        engine_.setLocked(sessions_.isLocked(next->session()), now);
    }
    follow();
}

void TapServer::follow() {
    // The engine lets go of an owner from whom the user has freed the keyboards.
    if (owner_ != nullptr && owner_->isFreed()) {
        Log::notice("The keyboards were freed with Backspace, Escape and Enter; that program's tap stays off");
        owner_ = nullptr;
    }
    if (channels_.empty() && !engine_.isGrabbing()) keyboards_.dropClones();
    armTimer();
}

void TapServer::armTimer() {
    const std::optional<Time> deadline = engine_.deadline();
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
