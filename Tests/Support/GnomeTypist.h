#pragma once

#include <QDBusConnection>
#include <QString>

#include <string_view>

namespace quillmere::support {

/// Presses keys on a GNOME desktop as hardware would, by the interface that it
/// has for remote desktops (org.gnome.Mutter.RemoteDesktop). Ends with the
/// shell that it types on.
class GnomeTypist {
public:
    /// Throws when the shell gives it no keyboard.
    explicit GnomeTypist(const QDBusConnection& bus);

    /// Presses and releases keys without a gap, in the order of the words (see
    /// `keyMovements`): "+ctrl +alt +space -space -alt -ctrl". Returns before
    /// the shell has seen them.
    void type(std::string_view movements) const;

private:
    QDBusConnection bus_;
    QString session_;
};

}  // namespace quillmere::support
