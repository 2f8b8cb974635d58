#include "Quillmere/Settings/PlateSection.h"

#include "Quillmere/Controls/ChipButtonStyle.h"
#include "Quillmere/Controls/PaletteLabel.h"
#include "Quillmere/Controls/PaletteSlider.h"
#include "Quillmere/Controls/PopUpPicker.h"
#include "Quillmere/Controls/SegmentedPicker.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace quillmere {

namespace {

constexpr int percentageWidth = 48;

QStringList visibilityTitles() {
    return {QStringLiteral("Always"), QStringLiteral("Only with more than two layouts")};
}

QStringList backgroundTitles() {
    return {QStringLiteral("Solid"), QStringLiteral("Glass")};
}

template <typename Cases>
int indexOf(const Cases& cases, typename Cases::value_type value) {
    return static_cast<int>(std::ranges::find(cases, value) - cases.begin());
}

/// A label and what it labels, side by side from the left.
QHBoxLayout* row(PaletteLabel* label, QWidget* control) {
    control->setAccessibleName(label->text());
    // of a list that pops up, assistive programs take the choice for its name
    label->setBuddy(control);
    auto* const row = new QHBoxLayout;
    row->setSpacing(8);
    row->addWidget(label);
    row->addWidget(control);
    row->addStretch();
    return row;
}

}  // namespace

PlateSection::PlateSection(ConfigModel& model, bool glassAvailable, QWidget* parent)
    : Card(parent),
      model_(model),
      glassAvailable_(glassAvailable),
      visibility_(new PopUpPicker(visibilityTitles(), this)),
      background_(new SegmentedPicker(backgroundTitles(), this)),
      opacityRow_(new QWidget(this)),
      opacity_(new PaletteSlider(opacityRow_)),
      percentage_(new PaletteLabel({}, TextStyle::monospaced, Palette::muted(), opacityRow_)),
      preview_(new ChipButton(QStringLiteral("Preview"), {}, this)) {
    layOut();
    observe();
    refresh();
}

void PlateSection::layOut() {
    auto* const opacityLabel =
        new PaletteLabel(QStringLiteral("Background opacity"), TextStyle::body, labelColor(), opacityRow_);
    opacity_->setAccessibleName(opacityLabel->text());
    percentage_->setFixedWidth(percentageWidth);
    percentage_->setAlignment(Qt::AlignTrailing | Qt::AlignVCenter);
    auto* const opacityLine = new QHBoxLayout(opacityRow_);
    opacityLine->setContentsMargins(0, 0, 0, 0);
    opacityLine->setSpacing(8);
    opacityLine->addWidget(opacityLabel);
    opacityLine->addWidget(opacity_, 1);
    opacityLine->addWidget(percentage_);

    QVBoxLayout* const column = makeColumn(10);
    column->addWidget(new PaletteLabel(QStringLiteral("Switcher plate"), TextStyle::headline));
    column->addLayout(row(new PaletteLabel(QStringLiteral("Show the plate")), visibility_));
    column->addLayout(row(new PaletteLabel(QStringLiteral("Background")), background_));
    column->addWidget(opacityRow_);
    column->addWidget(preview_);
}

void PlateSection::observe() {
    connect(visibility_, &QComboBox::activated, this, [this](int index) {
        edit([&](PlateSettings& plate) {
            plate.visibility = PlateVisibility::allCases.at(static_cast<std::size_t>(index));
        });
    });
    connect(background_, &SegmentedPicker::chosen, this, [this](int index) {
        edit([&](PlateSettings& plate) {
            plate.background = PlateBackground::allCases.at(static_cast<std::size_t>(index));
        });
    });
    connect(opacity_, &PaletteSlider::moved, this,
            [this](double value) { edit([&](PlateSettings& plate) { plate.setOpacity(value); }); });
    connect(preview_, &QAbstractButton::clicked, this, [this] {
        if (model_.onPreview) model_.onPreview();
    });
    connect(&model_, &ConfigModel::configChanged, this, [this] { refresh(); });
}

void PlateSection::refresh() {
    const PlateSettings& plate = model_.config().plate;
    const PlateBackground background = plate.resolvedBackground(glassAvailable_);
    visibility_->setCurrentIndex(indexOf(PlateVisibility::allCases, plate.visibility));
    background_->setCurrentIndex(indexOf(PlateBackground::allCases, background));
    opacityRow_->setVisible(background == PlateBackground::solid);
    const double opacity = plate.resolvedOpacity(glassAvailable_);
    opacity_->setValue(opacity);
    percentage_->setText(QStringLiteral("%1 %").arg(std::lround(opacity * 100)));
}

void PlateSection::edit(const std::function<void(PlateSettings&)>& change) {
    Config config = model_.config();
    change(config.plate);
    model_.setConfig(std::move(config));
}

}  // namespace quillmere
