#pragma once

#include "Quillmere/Platform/LoginItem.h"

#include <QString>
#include <QStringList>

namespace quillmere {

class DesktopEntry;

/// Starts the program at login with an autostart entry in the user's
/// configuration folder, after the Desktop Application Autostart Specification
/// 0.5. The entry is read again for each answer: desktops and users edit it.
class DesktopLoginItem : public LoginItem {
public:
    /// This program, in this user's folders.
    DesktopLoginItem();
    /// `program`: absolute path. `userFolder`: where the user's own entries
    /// are; empty when there is no such place. `systemFolders`: where entries
    /// for all users are, the first ones winning.
    DesktopLoginItem(QString program, QString userFolder, QStringList systemFolders);

    bool isAvailable() const override { return !userFolder_.isEmpty(); }
    QString requirement() const override;
    bool isEnabled() const override;
    /// Disabling removes the entry, unless somebody has edited it or there is
    /// one for all users: then it stays or is made, and says "Hidden". Enabling
    /// changes in an existing entry only what keeps it from working.
    bool setEnabled(bool enabled) override;

private:
    QString userFile() const;
    QString systemFile() const;
    bool startsAtLogin(const DesktopEntry& entry) const;
    DesktopEntry freshEntry() const;
    DesktopEntry enabledEntry(DesktopEntry entry) const;
    bool enable() const;
    bool disable() const;

    QString program_;
    QString userFolder_;
    QStringList systemFolders_;
};

}  // namespace quillmere
