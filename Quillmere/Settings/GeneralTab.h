#pragma once

#include "Quillmere/ConfigModel.h"
#include "Quillmere/Settings/AppSettings.h"

#include <QWidget>

#include <vector>

namespace quillmere {

class Card;
class ChipButton;
class PaletteLabel;
class PlateSection;
class SwitchControl;

/// The page with the program's own options: launch at login, updates, the
/// plate. Main thread only.
class GeneralTab : public QWidget {
public:
    /// Both must outlive this. `glassAvailable`: the system has a glass material.
    GeneralTab(ConfigModel& model, AppSettings& settings, bool glassAvailable, QWidget* parent = nullptr);

    SwitchControl& loginSwitch() const { return *login_; }
    /// The note that this system cannot start programs at login; null when it can.
    PaletteLabel* loginNote() const { return loginNote_; }
    /// The updates card and its parts; null when the program has no update feed.
    Card* updatesCard() const { return updatesCard_; }
    SwitchControl* updatesSwitch() const { return automatic_; }
    ChipButton* checkButton() const { return check_; }
    PlateSection& plateSection() const { return *plate_; }

    /// Everything that takes the focus, in reading order.
    std::vector<QWidget*> controls() const;

private:
    Card* makeLoginCard();
    Card* makeUpdatesCard();
    void refresh();

    AppSettings& settings_;
    SwitchControl* login_ = nullptr;
    PaletteLabel* loginNote_ = nullptr;
    Card* updatesCard_ = nullptr;
    SwitchControl* automatic_ = nullptr;
    ChipButton* check_ = nullptr;
    PlateSection* plate_ = nullptr;
};

}  // namespace quillmere
