#include "Quillmere/Settings/GroupView.h"

#include "Quillmere/Controls/IconButton.h"
#include "Quillmere/Controls/MenuButton.h"
#include "Quillmere/Controls/WrappedLabel.h"
#include "Quillmere/Palette.h"
#include "Quillmere/Settings/ShortcutChip.h"
#include "Quillmere/Settings/ShortcutRecorder.h"
#include "Quillmere/Settings/SourceRow.h"

#include <QHBoxLayout>
#include <QMenu>
#include <QVBoxLayout>

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace quillmere {

GroupView::GroupView(const GroupBinding& binding, std::function<void()> onDelete, QWidget* parent)
    : Card(parent),
      binding_(binding),
      shown_{.id = binding.key().id, .shortcut = std::nullopt, .sourceIDs = {}},
      recorder_(new ShortcutRecorder(binding, this)),
      fnHint_(new WrappedLabel(
          QStringLiteral("This keyboard does not tell of Fn: press the chip and choose another shortcut"),
          TextStyle::caption, Palette::muted(), this)),
      delete_(new IconButton(Icon::trash, {}, this)),
      add_(new MenuButton(QStringLiteral("Add source ▾"), [this](QMenu& menu) { fillMenu(menu); }, this)) {
    layOut();
    connect(delete_, &QAbstractButton::clicked, this, std::move(onDelete));
    connect(&binding_.model(), &ConfigModel::availableChanged, this, [this] { refresh(); });
    connect(&binding_.model(), &ConfigModel::mayHearFnChanged, this, [this] { refresh(); });
}

void GroupView::layOut() {
    auto* const header = new QHBoxLayout;
    header->setSpacing(8);
    header->addWidget(recorder_, 0, Qt::AlignTop);
    header->addStretch();
    header->addWidget(delete_, 0, Qt::AlignTop);
    rowColumn_ = new QVBoxLayout;
    rowColumn_->setSpacing(2);
    QVBoxLayout* const column = makeColumn(8);
    column->addLayout(header);
    column->addWidget(fnHint_);
    column->addLayout(rowColumn_);
    column->addWidget(add_);
}

void GroupView::showGroup(const CycleGroup& group, int number) {
    if (number == number_ && group == shown_) return;
    number_ = number;
    shown_ = group;
    refresh();
}

void GroupView::refresh() {
    recorder_->setNumber(number_);
    const bool isOnFn = shown_.shortcut && shown_.shortcut->isFnAlone();
    fnHint_->setVisible(isOnFn && !binding_.model().mayHearFn());
    delete_->setAccessibleName(QStringLiteral("Delete group %1").arg(number_));
    add_->setAccessibleName(QStringLiteral("Add source to group %1").arg(number_));
    add_->setEnabled(!candidates().empty());
    updateRowCount();
    for (std::size_t i = 0; i < rows_.size(); ++i)
        rows_[i]->setSource(QString::fromStdString(binding_.model().name(shown_.sourceIDs[i])),
                            static_cast<int>(rows_.size()));
}

void GroupView::updateRowCount() {
    while (rows_.size() > shown_.sourceIDs.size()) {
        // later: the button that was pressed may sit in this very row
        rows_.back()->hide();
        rows_.back()->deleteLater();
        rows_.pop_back();
    }
    while (rows_.size() < shown_.sourceIDs.size())
        rows_.push_back(makeRow(rows_.size()));
}

SourceRow* GroupView::makeRow(std::size_t index) {
    auto* const row = new SourceRow(static_cast<int>(index), this);
    connect(row, &SourceRow::moveUpRequested, this, [this, index] { moveSource(index, index - 1); });
    connect(row, &SourceRow::moveDownRequested, this, [this, index] { moveSource(index, index + 1); });
    connect(row, &SourceRow::removeRequested, this, [this, index] { removeSource(index); });
    rowColumn_->addWidget(row);
    return row;
}

std::vector<SourceInfo> GroupView::candidates() const {
    const std::unordered_set<std::string> taken(shown_.sourceIDs.begin(), shown_.sourceIDs.end());
    std::vector<SourceInfo> candidates;
    std::ranges::copy_if(binding_.model().available(), std::back_inserter(candidates),
                         [&](const SourceInfo& source) { return !taken.contains(source.id); });
    return candidates;
}

void GroupView::fillMenu(QMenu& menu) const {
    for (const SourceInfo& source : candidates()) {
        QString title = QString::fromStdString(source.name);
        title.replace(QLatin1Char('&'), QLatin1String("&&"));  // names carry no shortcuts
        connect(menu.addAction(title), &QAction::triggered, this, [this, id = source.id] { append(id); });
    }
}

void GroupView::append(const std::string& sourceID) const {
    binding_.edit([&](CycleGroup& group) { group.sourceIDs.push_back(sourceID); });
}

void GroupView::moveSource(std::size_t from, std::size_t to) {
    const bool hadFocus = rows_.at(from)->up().hasFocus() || rows_.at(from)->down().hasFocus();
    binding_.edit([&](CycleGroup& group) { std::swap(group.sourceIDs.at(from), group.sourceIDs.at(to)); });
    if (!hadFocus) return;
    // along with the source, so that pressing again moves it on
    const SourceRow& moved = *rows_.at(to);
    IconButton& same = to < from ? moved.up() : moved.down();
    IconButton& other = to < from ? moved.down() : moved.up();
    (same.isEnabled() ? same : other).setFocus(Qt::TabFocusReason);
}

void GroupView::removeSource(std::size_t index) {
    const bool hadFocus = rows_.at(index)->remove().hasFocus();
    binding_.edit([&](CycleGroup& group) {
        group.sourceIDs.erase(group.sourceIDs.begin() + static_cast<std::ptrdiff_t>(index));
    });
    if (!hadFocus) return;
    if (rows_.empty())
        add_->setFocus(Qt::TabFocusReason);
    else
        rows_.at(std::min(index, rows_.size() - 1))->remove().setFocus(Qt::TabFocusReason);
}

}  // namespace quillmere
