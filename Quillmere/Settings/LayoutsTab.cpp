#include "Quillmere/Settings/LayoutsTab.h"

#include "Quillmere/Controls/ChipButtonStyle.h"
#include "Quillmere/Controls/IconButton.h"
#include "Quillmere/Controls/PaletteScrollArea.h"
#include "Quillmere/Controls/SwitchControl.h"
#include "Quillmere/Controls/WrappedLabel.h"
#include "Quillmere/Palette.h"
#include "Quillmere/Settings/GroupView.h"

#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace quillmere {

namespace {

std::vector<GroupKey> keysOf(const std::vector<CycleGroup>& groups) {
    std::vector<GroupKey> keys;
    for (const CycleGroup& group : groups) {
        const auto before = std::ranges::count(keys, group.id, &GroupKey::id);
        keys.push_back({.id = group.id, .nth = static_cast<std::size_t>(before)});
    }
    return keys;
}

}  // namespace

LayoutsTab::LayoutsTab(ConfigModel& model, QWidget* parent)
    : QWidget(parent),
      model_(model),
      active_(new SwitchControl(QStringLiteral("Active"), this)),
      hint_(new WrappedLabel({}, TextStyle::caption, Palette::muted(), this)),
      scroll_(new PaletteScrollArea(12, this)),
      addGroup_(new ChipButton(QStringLiteral("Add group"), {}, this)) {
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(16);
    column->addWidget(active_);
    column->addWidget(hint_);
    column->addWidget(scroll_, 1);
    column->addWidget(addGroup_);

    connect(active_, &QAbstractButton::clicked, this, [this](bool on) {
        Config config = model_.config();
        config.active = on;
        model_.setConfig(std::move(config));
    });
    connect(addGroup_, &QAbstractButton::clicked, this, [this] { addGroup(); });
    connect(&model_, &ConfigModel::configChanged, this, [this] { refresh(); });
    connect(&model_, &ConfigModel::availableChanged, this, [this] { showHint(); });
    refresh();
    showHint();
}

void LayoutsTab::refresh() {
    const Config& config = model_.config();
    active_->setChecked(config.active);
    const std::vector<GroupKey> keys = keysOf(config.groups);
    if (!std::ranges::equal(cards_, keys, {}, &GroupView::key)) updateCards(keys);
    for (std::size_t i = 0; i < cards_.size(); ++i)
        cards_[i]->showGroup(config.groups[i], static_cast<int>(i) + 1);
}

void LayoutsTab::showHint() {
    const std::size_t count = model_.available().size();
    hint_->setText(count == 0
                       ? QStringLiteral("No layouts found. Add some in the keyboard settings of this system.")
                       : QStringLiteral("There is only one layout here, so nothing to switch to. Add another in the "
                                        "keyboard settings of this system."));
    hint_->setVisible(count < 2);
}

void LayoutsTab::updateCards(const std::vector<GroupKey>& keys) {
    const std::vector<GroupView*> before = std::exchange(cards_, {});
    for (const GroupKey& key : keys) {
        const auto found = std::ranges::find(before, key, &GroupView::key);
        cards_.push_back(found == before.end() ? makeCard(key) : *found);
    }
    for (GroupView* const card : before) {
        scroll_->column().removeWidget(card);
        if (std::ranges::find(cards_, card) != cards_.end()) continue;
        // later: the button that was pressed may sit in this very card
        card->hide();
        card->deleteLater();
    }
    for (GroupView* const card : cards_)
        scroll_->column().addWidget(card);
}

GroupView* LayoutsTab::makeCard(const GroupKey& key) {
    return new GroupView(GroupBinding(model_, key), [this, key] { removeGroup(key); }, scroll_->widget());
}

void LayoutsTab::addGroup() {
    Config config = model_.config();
    config.groups.push_back({.id = makeUUID(), .shortcut = std::nullopt, .sourceIDs = {}});
    model_.setConfig(std::move(config));
}

void LayoutsTab::removeGroup(const GroupKey& key) {
    const auto card = std::ranges::find(cards_, key, &GroupView::key);
    const auto index = static_cast<std::size_t>(card - cards_.begin());
    const bool hadFocus = (*card)->deleteButton().hasFocus();
    Config config = model_.config();
    std::erase_if(config.groups, [&](const CycleGroup& group) { return group.id == key.id; });
    model_.setConfig(std::move(config));
    if (!hadFocus) return;
    QWidget* const next =
        cards_.empty() ? static_cast<QWidget*>(addGroup_) : &cards_[std::min(index, cards_.size() - 1)]->deleteButton();
    next->setFocus(Qt::TabFocusReason);
}

}  // namespace quillmere
