#pragma once

#include "Quillmere/ConfigModel.h"
#include "Quillmere/Settings/AppSettings.h"

#include <QWidget>

class QStackedLayout;

namespace quillmere {

class ChipButton;
class GeneralTab;
class LayoutsTab;

/// The whole content of the settings window: a chip for each tab, and the tab.
/// Main thread only.
class SettingsView : public QWidget {
public:
    /// Both must outlive this. `glassAvailable`: the system has a glass material.
    SettingsView(ConfigModel& model, AppSettings& settings, bool glassAvailable, QWidget* parent = nullptr);

    ChipButton& layoutsChip() const { return *layoutsChip_; }
    ChipButton& generalChip() const { return *generalChip_; }
    LayoutsTab& layoutsTab() const { return *layouts_; }
    GeneralTab& generalTab() const { return *general_; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    ChipButton* makeTabChip(const QString& title, SettingsTab tab);
    void refresh();

    AppSettings& settings_;
    ChipButton* layoutsChip_;
    ChipButton* generalChip_;
    LayoutsTab* layouts_;
    GeneralTab* general_;
    QStackedLayout* pages_;
};

}  // namespace quillmere
