#pragma once

#include "Quillmere/ConfigModel.h"
#include "Quillmere/Settings/AppSettings.h"

#include <QWidget>

class QStackedLayout;

namespace quillmere {

class GeneralTab;
class LayoutsTab;
class TabChip;

/// The whole content of the settings window: a chip for each tab, and the tab.
/// Main thread only.
class SettingsView : public QWidget {
public:
    /// Both must outlive this. `glassAvailable`: the system has a glass material.
    SettingsView(ConfigModel& model, AppSettings& settings, bool glassAvailable, QWidget* parent = nullptr);

private:
    TabChip* makeTabChip(const QString& title, SettingsTab tab);
    void refresh();

    AppSettings& settings_;
    TabChip* layoutsChip_;
    TabChip* generalChip_;
    LayoutsTab* layouts_;
    GeneralTab* general_;
    QStackedLayout* pages_;
};

}  // namespace quillmere
