#pragma once

#include "Quillmere/Platform/EventTap.h"
#include "Quillmere/Platform/Linux/Tap/X11/X11TapThread.h"

#include <memory>

namespace quillmere {

/// The keyboard filter of an X session; needs no privilege. Only keys of
/// interest are held up at all, each for at most 500 ms.
class X11EventTap final : public EventTap {
public:
    /// False when there is no X server with XInput 2.2 and XKB, or it is
    /// Xwayland, which does not see the desktop's keyboard.
    bool install(Callback callback) override;
    void enable() override;
    void setInterest(const KeyInterest& interest) override;

private:
    KeyInterest interest_;
    std::unique_ptr<X11TapThread> thread_;
};

}  // namespace quillmere
