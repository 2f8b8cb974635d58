#include "Quillmere/Settings/AppSettings.h"

namespace quillmere {

AppSettings::AppSettings(UpdateStore& updateStore, bool updatesEnabled, LoginItem& loginItem, Workspace& workspace,
                         const std::vector<std::unique_ptr<Offer>>& offers)
    : automaticUpdates_(updateStore.automatic()),
      updateStore_(updateStore),
      updatesEnabled_(updatesEnabled),
      loginItem_(loginItem),
      workspace_(workspace),
      offers_(offers) {
    refresh();
}

void AppSettings::setTab(SettingsTab tab) {
    tab_ = tab;
    emit changed();
}

void AppSettings::setAutomaticUpdates(bool on) {
    automaticUpdates_ = on;
    updateStore_.setAutomatic(on);
    emit changed();
}

void AppSettings::setLaunchAtLogin(bool on) {
    if (!canLaunchAtLogin()) return;
    if (!loginItem_.setEnabled(on)) workspace_.beep();
    readLoginItem();
    emit changed();
}

void AppSettings::refresh() {
    setAutomaticUpdates(updateStore_.automatic());
    if (!canLaunchAtLogin()) return;
    readLoginItem();
    emit changed();
}

void AppSettings::readLoginItem() {
    launchAtLogin_ = loginItem_.isEnabled();
}

}  // namespace quillmere
