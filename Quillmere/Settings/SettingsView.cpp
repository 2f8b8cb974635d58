#include "Quillmere/Settings/SettingsView.h"

#include "Quillmere/Settings/GeneralTab.h"
#include "Quillmere/Settings/LayoutsTab.h"
#include "Quillmere/Settings/TabChip.h"

#include <QHBoxLayout>
#include <QStackedLayout>
#include <QVBoxLayout>

namespace quillmere {

namespace {
constexpr int padding = 20;
constexpr QSize minimum(460, 520);
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

TabChip* SettingsView::makeTabChip(const QString& title, SettingsTab tab) {
    return new TabChip(title, [this, tab] { settings_.setTab(tab); }, this);
}

void SettingsView::refresh() {
    const bool isLayouts = settings_.tab() == SettingsTab::layouts;
    layoutsChip_->setSelected(isLayouts);
    generalChip_->setSelected(!isLayouts);
    pages_->setCurrentWidget(isLayouts ? static_cast<QWidget*>(layouts_) : general_);
}

}  // namespace quillmere
