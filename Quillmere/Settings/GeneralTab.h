#pragma once

#include "Quillmere/ConfigModel.h"
#include "Quillmere/Settings/AppSettings.h"

#include <QWidget>

class QVBoxLayout;

namespace quillmere {

class Card;
class SwitchControl;

/// The page with the program's own options: launch at login, updates, the
/// plate, and what the system offers beyond. Main thread only.
class GeneralTab : public QWidget {
public:
    /// Both must outlive this. `glassAvailable`: the system has a glass material.
    GeneralTab(ConfigModel& model, AppSettings& settings, bool glassAvailable, QWidget* parent = nullptr);

private:
    Card* makeLoginCard();
    Card* makeUpdatesCard();
    void addOffer(Offer& offer, QVBoxLayout& cards);
    void refresh();

    AppSettings& settings_;
    SwitchControl* login_ = nullptr;
    SwitchControl* automatic_ = nullptr;  ///< null when the program has no update feed
};

}  // namespace quillmere
