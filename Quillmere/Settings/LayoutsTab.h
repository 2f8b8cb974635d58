#pragma once

#include "Quillmere/ConfigModel.h"
#include "Quillmere/Settings/GroupBinding.h"

#include <QWidget>

#include <vector>

namespace quillmere {

class ChipButton;
class GroupView;
class PaletteScrollArea;
class SwitchControl;
class WrappedLabel;

/// The page on which the user builds the groups: the master switch, a card for
/// each group, "Add group". Keeps no state but the cards. Main thread only.
class LayoutsTab : public QWidget {
public:
    /// `model` must outlive this.
    explicit LayoutsTab(ConfigModel& model, QWidget* parent = nullptr);

private:
    void refresh();
    void updateCards(const std::vector<GroupKey>& keys);
    GroupView* makeCard(const GroupKey& key);
    void showHint();
    void addGroup();
    void removeGroup(const GroupKey& key);

    ConfigModel& model_;
    SwitchControl* active_;
    WrappedLabel* hint_;  ///< what is missing for there to be anything to switch
    PaletteScrollArea* scroll_;
    ChipButton* addGroup_;
    std::vector<GroupView*> cards_;  ///< in the groups' order
};

}  // namespace quillmere
