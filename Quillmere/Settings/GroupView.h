#pragma once

#include "Quillmere/Controls/CardStyle.h"
#include "Quillmere/Settings/GroupBinding.h"

#include <cstddef>
#include <functional>
#include <vector>

class QMenu;
class QVBoxLayout;

namespace quillmere {

class IconButton;
class MenuButton;
class ShortcutRecorder;
class SourceRow;
class WrappedLabel;

/// The card that edits one group in place. Its rows are kept and shown anew
/// rather than made anew, so that an edit redraws what it changed. Main thread
/// only.
class GroupView : public Card {
public:
    /// `onDelete` removes this group; the card may be gone soon after.
    GroupView(const GroupBinding& binding, std::function<void()> onDelete, QWidget* parent = nullptr);

    const GroupKey& key() const { return binding_.key(); }

    /// Shows `group`, which has this card's key, as the group with this number,
    /// from 1. Does nothing when it shows just that.
    void showGroup(const CycleGroup& group, int number);

    IconButton& deleteButton() const { return *delete_; }

private:
    void layOut();
    void refresh();
    void updateRowCount();
    /// The sources that can be added: the available ones that the group does
    /// not have, in their order.
    std::vector<SourceInfo> candidates() const;
    SourceRow* makeRow(std::size_t index);
    void fillMenu(QMenu& menu) const;
    void append(const std::string& sourceID) const;
    void moveSource(std::size_t from, std::size_t to);
    void removeSource(std::size_t index);

    GroupBinding binding_;
    CycleGroup shown_;
    int number_ = 0;
    ShortcutRecorder* recorder_;
    WrappedLabel* fnHint_;  ///< why a press of Fn does nothing
    IconButton* delete_;
    QVBoxLayout* rowColumn_ = nullptr;
    std::vector<SourceRow*> rows_;
    MenuButton* add_;
};

}  // namespace quillmere
