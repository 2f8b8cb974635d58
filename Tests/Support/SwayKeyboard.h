#pragma once

#include <memory>
#include <string>

namespace quillmere::support {

/// A keyboard that a program adds to a Wayland desktop (the protocol
/// virtual-keyboard-unstable-v1), there as long as this object.
class SwayKeyboard {
public:
    /// With a keymap in libxkbcommon's text format: a newer desktop gives such a
    /// keyboard none. Throws when there is no such desktop, or it refuses.
    SwayKeyboard(const std::string& waylandDisplay, const std::string& keymap);
    ~SwayKeyboard();
    SwayKeyboard(const SwayKeyboard&) = delete;
    SwayKeyboard& operator=(const SwayKeyboard&) = delete;

    /// The keymap of these layouts, as text: "us,ua", variants as ",dvorak".
    static std::string keymap(const std::string& layouts, const std::string& variants = {});

private:
    struct Client;
    std::unique_ptr<Client> client_;
};

}  // namespace quillmere::support
