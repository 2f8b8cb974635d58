#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace quillmere::support {

/// A keyboard that a program adds to a Wayland desktop (the protocol
/// virtual-keyboard-unstable-v1), there as long as this object. Its keys press
/// the desktop's shortcuts as a real one's do.
class SwayKeyboard {
public:
    /// With a keymap in libxkbcommon's text format: a newer desktop gives such a
    /// keyboard none. Throws when there is no such desktop, or it refuses.
    SwayKeyboard(const std::string& waylandDisplay, const std::string& keymap);
    ~SwayKeyboard();
    SwayKeyboard(const SwayKeyboard&) = delete;
    SwayKeyboard& operator=(const SwayKeyboard&) = delete;

    /// Moves keys without a gap: words of `keyMovements`. The keyboard takes a
    /// keymap of its own first.
    ///
    /// Where a real keyboard is in the layout that the desktop has last given it,
    /// this one says with each modifier which one it is in: `layout`.
    void type(std::string_view movements, int layout);

    /// The keymap of these layouts, as text: "us,ua", variants as ",dvorak".
    static std::string keymap(const std::string& layouts, const std::string& variants = {});

private:
    struct Client;
    std::unique_ptr<Client> client_;
};

}  // namespace quillmere::support
