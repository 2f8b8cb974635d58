#pragma once

#include <QObject>

class QMenu;

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

    /// Shows this menu where the desktop, without a tray, has another place for
    /// it: its entries with an object name, by their texts, and whether switching
    /// is active. Called at first and whenever that may have changed. What is
    /// chosen there triggers the menu's entry.
    virtual void showMenu(QMenu& /*menu*/, bool /*isActive*/) {}

    /// Whether there is such a place at this moment.
    virtual bool hasPlaceForMenu() const { return false; }

signals:
    /// The tray has come up; sent at most once.
    void becameAvailable();
    /// `hasPlaceForMenu` has changed.
    void placeForMenuChanged();
};

}  // namespace quillmere
