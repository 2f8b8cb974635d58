#pragma once

#include <QPoint>

#include <memory>
#include <string>
#include <string_view>

namespace quillmere::support {

/// Presses keys and moves the pointer on a KWin desktop as hardware would, by
/// the protocol that KDE has for remote desktops (org_kde_kwin_fake_input).
class KwinTypist {
public:
    /// At this WAYLAND_DISPLAY. Throws when there is no such desktop.
    explicit KwinTypist(const std::string& waylandDisplay);
    ~KwinTypist();
    KwinTypist(const KwinTypist&) = delete;
    KwinTypist& operator=(const KwinTypist&) = delete;

    /// Presses and releases keys without a gap, in the order of the words (see
    /// `keyMovements`): "+ctrl +alt +space -space -alt -ctrl".
    void type(std::string_view movements);

    /// Puts the pointer there, in points, and presses its left button once.
    void click(QPoint at);

private:
    struct Client;

    void flush() const;

    std::unique_ptr<Client> client_;
};

}  // namespace quillmere::support
