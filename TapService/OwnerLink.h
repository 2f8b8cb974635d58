#pragma once

#include "TapService/KeySet.h"
#include "TapService/TapPorts.h"
#include "TapService/TapProtocol.h"

#include <cstdint>
#include <utility>

namespace quillmere::tap {

/// The engine's side of the tap's owner: what it wants, and what it is told of
/// the keys. There may be no owner.
class OwnerLink {
public:
    bool isAttached() const { return port_ != nullptr; }
    bool isEnabled() const { return enabled_; }

    /// `port` must live until `detach` or `drop`.
    void attach(OwnerPort& port, bool enabled);
    /// Takes leave: an owner that believes Fn to be down learns that it must
    /// not wait for it.
    void detach(std::uint8_t flags, Time now);
    /// Without a word.
    void drop();

    /// Of the shortcuts those count whose keys may be one (`KeyRole::key`), and
    /// that are no keys of typing.
    void setInterest(const Interest& interest);
    /// False when it already was, or there is no owner.
    bool enable();
    /// Tells the owner, unless it already was disabled.
    void disable(DisabledReason reason);
    /// Whether it has been disabled, by whatever, since this was last asked.
    bool takeDisabled() { return std::exchange(wasDisabled_, false); }

    /// Whether the user records a shortcut.
    bool isRecording() const { return isAttached() && interest_.everyKey; }
    bool hasShortcuts() const { return isAttached() && codes_.any(); }
    bool wantsFn() const { return isAttached() && (interest_.wantsFn || isRecording()); }
    /// Whether this press is to be told in full.
    bool isOfInterest(std::uint16_t code, std::uint8_t flags) const;
    /// Whether a device that can send these keys must be grabbed.
    bool wantsGrab(const KeySet& keys, bool isTyping) const;

    // Each returns false when the owner was not told; one that cannot take
    // what it is told has then been disabled.

    /// A press (with the number of the question, or 0), repeat or release.
    bool tellKey(KeyEventKind kind, const InputEvent& event, std::uint8_t flags, std::uint32_t sequence = 0);
    /// That some key was pressed, while Fn is down.
    bool tellOther(Time time, std::uint8_t flags);
    /// What is held now, if that concerns a tap of Fn.
    bool tellFlags(Time time, std::uint8_t flags);

private:
    bool tell(const KeyEvent& event);

    OwnerPort* port_ = nullptr;
    Interest interest_;
    KeySet codes_;  ///< of the shortcuts that count
    bool enabled_ = false;
    bool wasDisabled_ = false;
    bool fnWasTold_ = false;  ///< the owner believes Fn to be down
};

}  // namespace quillmere::tap
