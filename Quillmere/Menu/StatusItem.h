#pragma once

#include "Quillmere/ConfigModel.h"
#include "Quillmere/Platform/Appearance.h"
#include "Quillmere/Platform/TrayHost.h"

#include <QMenu>
#include <QObject>

#include <functional>
#include <memory>

class QSystemTrayIcon;

namespace quillmere {

/// The tray icon and its menu, the program's only permanent user interface.
/// The icon appears as soon as the desktop has a tray, also when that starts
/// after the program. Main thread only.
class StatusItem : public QObject {
    Q_OBJECT
public:
    struct Actions {
        std::function<void()> toggleActive;
        std::function<void()> openSettings;
        std::function<void()> quit;
    };

    /// `model`, `appearance` and `trayHost` must outlive this.
    StatusItem(ConfigModel& model, Appearance& appearance, TrayHost& trayHost, Actions actions);
    ~StatusItem() override;

    QMenu& menu() { return *menu_; }
    /// Makes the menu's key equivalents act in this window, too.
    void lendKeyEquivalents(QWidget& window) const;
    /// The icon, once the desktop has a tray; null before.
    const QSystemTrayIcon* trayIcon() const { return icon_.get(); }

private:
    void buildMenu();
    void addKeyEquivalent(QAction& item, const QKeySequence& keys);
    void menuWillOpen();
    void showInTray();
    void openMenu() const;
    void updateIcon();

    ConfigModel& model_;
    Appearance& appearance_;
    TrayHost& trayHost_;
    Actions actions_;
    QMetaObject::Connection subscription_;  ///< to the configuration, for the icon
    std::unique_ptr<QMenu> menu_;
    QAction* activeItem_ = nullptr;  ///< owned by the menu
    std::unique_ptr<QSystemTrayIcon> icon_;
};

}  // namespace quillmere
