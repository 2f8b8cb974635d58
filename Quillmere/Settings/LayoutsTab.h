#pragma once

#include "Quillmere/ConfigModel.h"

#include <QWidget>

#include <vector>

namespace quillmere {

class ChipButton;
class GroupView;
class PaletteScrollArea;
class SwitchControl;

/// The page on which the user builds the groups: the master switch, a card for
/// each group, "Add group". Keeps no state but the cards. Main thread only.
class LayoutsTab : public QWidget {
public:
    /// `model` must outlive this.
    explicit LayoutsTab(ConfigModel& model, QWidget* parent = nullptr);

    SwitchControl& activeSwitch() const { return *active_; }
    ChipButton& addGroupButton() const { return *addGroup_; }
    /// The cards in the groups' order.
    const std::vector<GroupView*>& cards() const { return cards_; }
    /// Everything that takes the focus, in reading order.
    std::vector<QWidget*> controls() const;
    PaletteScrollArea& scrollArea() const { return *scroll_; }

private:
    void refresh();
    void updateCards();
    GroupView* makeCard(const UUID& groupID);
    void addGroup();
    void removeGroup(const UUID& groupID);

    ConfigModel& model_;
    SwitchControl* active_;
    PaletteScrollArea* scroll_;
    ChipButton* addGroup_;
    std::vector<GroupView*> cards_;
};

}  // namespace quillmere
