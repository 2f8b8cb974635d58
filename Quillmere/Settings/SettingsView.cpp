#include "Quillmere/Settings/SettingsView.h"

#include "Quillmere/Controls/ChipButtonStyle.h"
#include "Quillmere/Settings/GeneralTab.h"
#include "Quillmere/Settings/LayoutsTab.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QStackedLayout>
#include <QVBoxLayout>

#include <algorithm>
#include <iterator>

namespace quillmere {

namespace {
constexpr int padding = 20;
constexpr QSize minimum(460, 520);

bool takesFocus(const QWidget* control) {
    return control->isEnabled() && control->isVisible() && (control->focusPolicy() & Qt::TabFocus);
}

}  // namespace

SettingsView::SettingsView(ConfigModel& model, AppSettings& settings, bool glassAvailable, QWidget* parent)
    : QWidget(parent),
      settings_(settings),
      layoutsChip_(makeTabChip(QStringLiteral("Layouts"), SettingsTab::layouts)),
      generalChip_(makeTabChip(QStringLiteral("General"), SettingsTab::general)),
      layouts_(new LayoutsTab(model)),
      general_(new GeneralTab(model, settings, glassAvailable)),
      pages_(new QStackedLayout) {
    setMinimumSize(minimum);
    auto* const chips = new QHBoxLayout;
    chips->setSpacing(8);
    chips->addWidget(layoutsChip_);
    chips->addWidget(generalChip_);
    chips->addStretch();
    pages_->addWidget(layouts_);
    pages_->addWidget(general_);
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(padding, padding, padding, padding);
    column->setSpacing(16);
    column->addLayout(chips);
    column->addLayout(pages_, 1);

    connect(&settings_, &AppSettings::changed, this, [this] { refresh(); });
    refresh();
}

ChipButton* SettingsView::makeTabChip(const QString& title, SettingsTab tab) {
    auto* const chip = new ChipButton(title, {}, this);
    connect(chip, &QAbstractButton::clicked, this, [this, tab] { settings_.setTab(tab); });
    return chip;
}

void SettingsView::refresh() {
    const bool isLayouts = settings_.tab() == SettingsTab::layouts;
    layoutsChip_->setSelected(isLayouts);
    generalChip_->setSelected(!isLayouts);
    pages_->setCurrentWidget(isLayouts ? static_cast<QWidget*>(layouts_) : general_);
}

std::vector<QWidget*> SettingsView::controls() const {
    std::vector<QWidget*> controls{layoutsChip_, generalChip_};
    const bool isLayouts = settings_.tab() == SettingsTab::layouts;
    std::ranges::copy(isLayouts ? layouts_->controls() : general_->controls(), std::back_inserter(controls));
    return controls;
}

bool SettingsView::focusNextPrevChild(bool next) {
    std::vector<QWidget*> controls = this->controls();
    if (!next) std::ranges::reverse(controls);
    // on from the one that has the focus now, round to itself
    const auto current = std::ranges::find(controls, focusWidget());
    if (current != controls.end()) std::rotate(controls.begin(), current + 1, controls.end());
    const auto target = std::ranges::find_if(controls, takesFocus);
    if (target == controls.end()) return false;
    (*target)->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    return true;
}

void SettingsView::paintEvent(QPaintEvent*) {
    QPainter(this).fillRect(rect(), Palette::window().resolved(Palette::isDark()));
}

}  // namespace quillmere
