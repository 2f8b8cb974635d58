#include "Quillmere/Settings/GeneralTab.h"

#include "Quillmere/Controls/CardStyle.h"
#include "Quillmere/Controls/ChipButtonStyle.h"
#include "Quillmere/Controls/PaletteLabel.h"
#include "Quillmere/Controls/PaletteScrollArea.h"
#include "Quillmere/Controls/SwitchControl.h"
#include "Quillmere/Controls/WrappedLabel.h"
#include "Quillmere/Settings/PlateSection.h"

#include <QVBoxLayout>

namespace quillmere {

GeneralTab::GeneralTab(ConfigModel& model, AppSettings& settings, bool glassAvailable, QWidget* parent)
    : QWidget(parent), settings_(settings) {
    auto* const scroll = new PaletteScrollArea(12, this);
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addWidget(scroll);

    scroll->column().addWidget(makeLoginCard(), 0, Qt::AlignHCenter);
    if (settings_.updatesEnabled()) scroll->column().addWidget(makeUpdatesCard(), 0, Qt::AlignHCenter);
    scroll->column().addWidget(new PlateSection(model, glassAvailable));
    for (const auto& offer : settings_.offers())
        addOffer(*offer, scroll->column());

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
        column->addWidget(new PaletteLabel(settings_.loginRequirement(), TextStyle::caption, Palette::muted()));
    }
    return card;
}

Card* GeneralTab::makeUpdatesCard() {
    auto* const card = new Card;
    QVBoxLayout* const column = card->makeColumn(10);
    column->addWidget(new PaletteLabel(QStringLiteral("Updates"), TextStyle::headline));
    automatic_ = new SwitchControl(QStringLiteral("Check for updates automatically"));
    column->addWidget(automatic_);
    auto* const check = new ChipButton(QStringLiteral("Check for Updates…"));
    column->addWidget(check);
    connect(automatic_, &QAbstractButton::clicked, this, [this](bool on) { settings_.setAutomaticUpdates(on); });
    connect(check, &QAbstractButton::clicked, this, [this] { settings_.checkForUpdates(); });
    return card;
}

void GeneralTab::addOffer(Offer& offer, QVBoxLayout& cards) {
    auto* const card = new Card;
    QVBoxLayout* const column = card->makeColumn(10);
    auto* const line = new WrappedLabel(offer.text(), TextStyle::caption, Palette::muted());
    column->addWidget(line);
    if (!offer.action().isEmpty()) {
        auto* const accept = new ChipButton(offer.action());
        column->addWidget(accept, 0, Qt::AlignLeft);
        connect(accept, &QAbstractButton::clicked, this, [&offer] { offer.accept(); });
    }
    cards.addWidget(card);
    const auto update = [card, line, &offer] {
        line->setText(offer.text());
        card->setVisible(offer.isOpen());
    };
    connect(&offer, &Offer::changed, card, update);
    connect(&settings_, &AppSettings::changed, card, update);
    update();
}

void GeneralTab::refresh() {
    login_->setChecked(settings_.launchAtLogin());
    if (automatic_) automatic_->setChecked(settings_.automaticUpdates());
}

}  // namespace quillmere
