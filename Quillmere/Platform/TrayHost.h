#pragma once

#include <QObject>

namespace quillmere {

/// Whether the desktop has a place for tray icons. An icon that is made before
/// there is one may never appear, so its maker waits. Main thread only.
class TrayHost : public QObject {
    Q_OBJECT
public:
    /// True from the moment on at which an icon can be made.
    virtual bool isAvailable() const = 0;

    /// Whether the tray draws a symbolic icon of the icon themes in its own
    /// colour of text. Elsewhere such an icon may well be black on black.
    virtual bool tintsSymbolicIcons() const { return false; }

    /// True for a menu bar: it tints the icons itself, as it does its own, and a
    /// click on one opens its menu without the program's help.
    virtual bool isMenuBar() const = 0;

signals:
    /// The tray has come up; sent at most once.
    void becameAvailable();
};

}  // namespace quillmere
