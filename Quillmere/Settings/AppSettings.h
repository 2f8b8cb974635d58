#pragma once

#include "Quillmere/Platform/LoginItem.h"
#include "Quillmere/Platform/Offer.h"
#include "Quillmere/Platform/Workspace.h"
#include "QuillmereCore/UpdateStore.h"

#include <QObject>

#include <functional>
#include <memory>
#include <vector>

namespace quillmere {

/// The tabs of the settings, in the order of their chips.
enum class SettingsTab { layouts, general };

/// What the settings window shows besides the configuration. Main thread only.
class AppSettings : public QObject {
    Q_OBJECT
public:
    /// Reads the state outside at once (`refresh`). The references must outlive
    /// this. `updatesEnabled`: the program knows where to ask for updates.
    AppSettings(UpdateStore& updateStore, bool updatesEnabled, LoginItem& loginItem, Workspace& workspace,
                const std::vector<std::unique_ptr<Offer>>& offers);

    SettingsTab tab() const { return tab_; }
    void setTab(SettingsTab tab);

    bool automaticUpdates() const { return automaticUpdates_; }
    /// Each call is written through to the update store.
    void setAutomaticUpdates(bool on);

    bool launchAtLogin() const { return launchAtLogin_; }
    /// Registers or unregisters the program with the system, with a beep when
    /// the system refuses; shows the system's state in either case. Nothing
    /// where `canLaunchAtLogin` is false.
    void setLaunchAtLogin(bool on);
    bool canLaunchAtLogin() const { return loginItem_.isAvailable(); }
    /// What it would take, where `canLaunchAtLogin` is false.
    QString loginRequirement() const { return loginItem_.requirement(); }

    /// What the system has to offer, open or not.
    const std::vector<std::unique_ptr<Offer>>& offers() const { return offers_; }

    bool updatesEnabled() const { return updatesEnabled_; }
    /// Runs a check for updates on the user's behalf; does nothing until set.
    std::function<void()> checkForUpdates = [] {};

    /// Reads again what others may have changed.
    void refresh();

signals:
    /// Some value changed or was set again; all are in place.
    void changed();

private:
    void readLoginItem();

    SettingsTab tab_ = SettingsTab::layouts;
    bool automaticUpdates_;
    bool launchAtLogin_ = false;
    UpdateStore& updateStore_;
    bool updatesEnabled_;
    LoginItem& loginItem_;
    Workspace& workspace_;
    const std::vector<std::unique_ptr<Offer>>& offers_;
};

}  // namespace quillmere
