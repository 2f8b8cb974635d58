#include "Quillmere/Settings/SourceRow.h"

#include "Quillmere/Controls/IconButton.h"
#include "Quillmere/Controls/PaletteLabel.h"

#include <QHBoxLayout>

#include <algorithm>

namespace quillmere {

namespace {
constexpr int positionWidth = 18;
}  // namespace

SourceRow::SourceRow(int index, QWidget* parent)
    : QWidget(parent),
      index_(index),
      position_(new PaletteLabel(QString::number(index + 1), TextStyle::body, Palette::muted(), this)),
      name_(new PaletteLabel({}, TextStyle::body, labelColor(), this)),
      up_(new IconButton(Icon::chevronUp, {}, this)),
      down_(new IconButton(Icon::chevronDown, {}, this)),
      remove_(new IconButton(Icon::minusCircle, {}, this)) {
    position_->setFixedWidth(std::max(positionWidth, position_->sizeHint().width()));
    name_->setElided(true);

    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(4);
    layout->addWidget(position_);
    layout->addWidget(name_, 1);
    layout->addWidget(up_);
    layout->addWidget(down_);
    layout->addWidget(remove_);

    connect(up_, &QAbstractButton::clicked, this, &SourceRow::moveUpRequested);
    connect(down_, &QAbstractButton::clicked, this, &SourceRow::moveDownRequested);
    connect(remove_, &QAbstractButton::clicked, this, &SourceRow::removeRequested);
}

void SourceRow::setSource(const QString& name, int count) {
    up_->setEnabled(index_ > 0);
    down_->setEnabled(index_ + 1 < count);
    name_->setText(name);
    up_->setAccessibleName(QStringLiteral("Move %1 up").arg(name));
    down_->setAccessibleName(QStringLiteral("Move %1 down").arg(name));
    remove_->setAccessibleName(QStringLiteral("Remove %1").arg(name));
}

}  // namespace quillmere
