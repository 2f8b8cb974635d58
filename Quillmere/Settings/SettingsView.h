#pragma once

#include "Quillmere/ConfigModel.h"
#include "Quillmere/Settings/AppSettings.h"

#include <QWidget>

#include <vector>

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
    /// Moves the focus in reading order. Qt's own order is that of creation,
    /// and keeping that in step costs a walk through it for each new control.
    bool focusNextPrevChild(bool next) override;

private:
    ChipButton* makeTabChip(const QString& title, SettingsTab tab);
    void refresh();
    std::vector<QWidget*> controls() const;

    AppSettings& settings_;
    ChipButton* layoutsChip_;
    ChipButton* generalChip_;
    LayoutsTab* layouts_;
    GeneralTab* general_;
    QStackedLayout* pages_;
};

}  // namespace quillmere
