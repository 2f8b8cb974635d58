#include "Quillmere/Settings/GeneralTab.h"

#include "Quillmere/Controls/CardStyle.h"
#include "Quillmere/Controls/ChipButtonStyle.h"
#include "Quillmere/Controls/PaletteLabel.h"
#include "Quillmere/Controls/PaletteScrollArea.h"
#include "Quillmere/Controls/SwitchControl.h"
#include "Quillmere/Settings/PlateSection.h"

#include <QVBoxLayout>

#include <algorithm>
#include <iterator>

namespace quillmere {

GeneralTab::GeneralTab(ConfigModel& model, AppSettings& settings, bool glassAvailable, QWidget* parent)
    : QWidget(parent), settings_(settings) {
    auto* const scroll = new PaletteScrollArea(12, this);
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(scroll);

    scroll->column().addWidget(makeLoginCard());
    if (settings_.updatesEnabled()) scroll->column().addWidget(makeUpdatesCard());
    plate_ = new PlateSection(model, glassAvailable);
    scroll->column().addWidget(plate_);

    connect(&settings_, &AppSettings::changed, this, [this] { refresh(); });
    refresh();
}

Card* GeneralTab::makeLoginCard() {
    auto* const card = new Card;
    QVBoxLayout* const column = card->makeColumn(6);
    login_ = new SwitchControl(QStringLiteral("Launch at login"));
    column->addWidget(login_);
    connect(login_, &QAbstractButton::clicked, this, [this](bool on) {
        settings_.setLaunchAtLogin(on);
        refresh();
    });
    if (!settings_.canLaunchAtLogin()) {
        login_->setEnabled(false);
        loginNote_ = new PaletteLabel(QStringLiteral("Needs macOS 13 or later"), TextStyle::caption, Palette::muted());
        column->addWidget(loginNote_);
    }
    return card;
}

Card* GeneralTab::makeUpdatesCard() {
    updatesCard_ = new Card;
    QVBoxLayout* const column = updatesCard_->makeColumn(10);
    column->addWidget(new PaletteLabel(QStringLiteral("Updates"), TextStyle::headline));
    automatic_ = new SwitchControl(QStringLiteral("Check for updates automatically"));
    column->addWidget(automatic_);
    check_ = new ChipButton(QStringLiteral("Check for Updates…"));
    column->addWidget(check_);
    connect(automatic_, &QAbstractButton::clicked, this, [this](bool on) { settings_.setAutomaticUpdates(on); });
    connect(check_, &QAbstractButton::clicked, this, [this] { settings_.checkForUpdates(); });
    return updatesCard_;
}

std::vector<QWidget*> GeneralTab::controls() const {
    std::vector<QWidget*> controls{login_};
    if (updatesCard_) controls.insert(controls.end(), {automatic_, check_});
    std::ranges::copy(plate_->controls(), std::back_inserter(controls));
    return controls;
}

void GeneralTab::refresh() {
    login_->setChecked(settings_.launchAtLogin());
    if (automatic_) automatic_->setChecked(settings_.automaticUpdates());
}

}  // namespace quillmere
