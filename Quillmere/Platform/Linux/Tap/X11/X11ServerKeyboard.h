#pragma once

#include "Quillmere/Platform/Linux/Tap/X11/X11FillerKey.h"
#include "Quillmere/Platform/Linux/Tap/X11/X11KeyboardPort.h"
#include "Quillmere/Platform/Linux/X11/X11Connection.h"

namespace quillmere {

/// The engine's keyboard on a real X server: its verbs as requests of XInput 2
/// and XKB. One thread at a time.
class X11ServerKeyboard final : public X11KeyboardPort {
public:
    /// `connection` must outlive this; its end gives everything back.
    explicit X11ServerKeyboard(X11Connection& connection) : connection_(connection), filler_(connection) {}

    void listen(bool on) override;
    void listenToKeys(bool on) override;

    X11Keymap readKeymap() override;
    std::optional<unsigned int> readModifiers() override;
    X11Keys readKeysDown() override;

    Combinations grab(const Combinations& combinations) override;
    void ungrab(const Combinations& combinations) override;

    bool grabKeyboard(unsigned long since) override;
    void ungrabKeyboard() override;

    void keep() override;
    void replay() override;

    void tapFiller(unsigned int keyCode, int device) override { filler_.tap(keyCode, device); }
    void flush() override;

private:
    void allow(int mode);

    X11Connection& connection_;
    X11FillerKey filler_;
};

}  // namespace quillmere
