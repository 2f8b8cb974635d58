#include "Quillmere/Settings/LayoutsTab.h"

#include "Quillmere/Controls/ChipButtonStyle.h"
#include "Quillmere/Controls/IconButton.h"
#include "Quillmere/Controls/PaletteScrollArea.h"
#include "Quillmere/Controls/SwitchControl.h"
#include "Quillmere/Settings/GroupView.h"

#include <QVBoxLayout>

#include <algorithm>
#include <iterator>
#include <utility>

namespace quillmere {

LayoutsTab::LayoutsTab(ConfigModel& model, QWidget* parent)
    : QWidget(parent),
      model_(model),
      active_(new SwitchControl(QStringLiteral("Active"), this)),
      scroll_(new PaletteScrollArea(12, this)),
      addGroup_(new ChipButton(QStringLiteral("Add group"), {}, this)) {
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(16);
    column->addWidget(active_);
    column->addWidget(scroll_, 1);
    column->addWidget(addGroup_);

    connect(active_, &QAbstractButton::clicked, this, [this](bool on) {
        Config config = model_.config();
        config.active = on;
        model_.setConfig(std::move(config));
    });
    connect(addGroup_, &QAbstractButton::clicked, this, [this] { addGroup(); });
    connect(&model_, &ConfigModel::configChanged, this, [this] { refresh(); });
    connect(&model_, &ConfigModel::availableChanged, this, [this] {
        for (GroupView* const card : cards_)
            card->showSources();
    });
    refresh();
}

void LayoutsTab::refresh() {
    active_->setChecked(model_.config().active);
    updateCards();
}

void LayoutsTab::updateCards() {
    std::vector<GroupView*> old = std::exchange(cards_, {});
    for (const CycleGroup& group : model_.config().groups) {
        const std::size_t index = cards_.size();
        const auto found =
            std::ranges::find_if(old, [&](const GroupView* card) { return card && card->groupID() == group.id; });
        cards_.push_back(found == old.end() ? makeCard(group.id) : std::exchange(*found, nullptr));
        cards_.back()->showGroup(group, static_cast<int>(index) + 1);
        const int place = static_cast<int>(index);
        const QLayoutItem* const there = scroll_->column().itemAt(place);
        if (!there || there->widget() != cards_.back()) scroll_->column().insertWidget(place, cards_.back());
    }
    for (GroupView* const card : old) {
        if (!card) continue;
        // later: the button that was pressed may sit in this very card
        card->hide();
        scroll_->column().removeWidget(card);
        card->deleteLater();
    }
}

GroupView* LayoutsTab::makeCard(const UUID& groupID) {
    return new GroupView(GroupBinding(model_, groupID), [this, groupID] { removeGroup(groupID); }, scroll_->widget());
}

std::vector<QWidget*> LayoutsTab::controls() const {
    std::vector<QWidget*> controls{active_};
    for (const GroupView* const card : cards_)
        std::ranges::copy(card->controls(), std::back_inserter(controls));
    controls.push_back(addGroup_);
    return controls;
}

void LayoutsTab::addGroup() {
    Config config = model_.config();
    config.groups.push_back({.id = makeUUID(), .shortcut = std::nullopt, .sourceIDs = {}});
    model_.setConfig(std::move(config));
}

void LayoutsTab::removeGroup(const UUID& groupID) {
    const auto card = std::ranges::find(cards_, groupID, &GroupView::groupID);
    const auto index = static_cast<std::size_t>(card - cards_.begin());
    const bool hadFocus = (*card)->deleteButton().hasFocus();
    Config config = model_.config();
    std::erase_if(config.groups, [&](const CycleGroup& group) { return group.id == groupID; });
    model_.setConfig(std::move(config));
    if (!hadFocus) return;
    QWidget* const next =
        cards_.empty() ? static_cast<QWidget*>(addGroup_) : &cards_[std::min(index, cards_.size() - 1)]->deleteButton();
    next->setFocus(Qt::TabFocusReason);
}

}  // namespace quillmere
