#include "Quillmere/Controls/SegmentedPicker.h"

#include "Quillmere/Controls/TextButton.h"

#include <QHBoxLayout>
#include <QPainter>

namespace quillmere {

namespace {

constexpr double cornerRadius = 8;
constexpr int inset = 2;

class Segment : public TextButton {
public:
    explicit Segment(const QString& title, QWidget* parent)
        : TextButton(title, {.verticalPadding = 3, .radius = cornerRadius - inset}, parent) {
        setCheckable(true);
        setAutoExclusive(true);
        setFocusPolicy(Qt::NoFocus);
        // Tab stops at the chosen one only; the arrows reach the others
        connect(this, &QAbstractButton::toggled, this,
                [this](bool isChosen) { setFocusPolicy(isChosen ? Qt::TabFocus : Qt::NoFocus); });
    }

protected:
    Colors colors() const override {
        if (isChecked()) return {Palette::selection(), Palette::accent(), labelColor()};
        return {Palette::clear(), Palette::clear(), labelColor()};
    }
};

}  // namespace

SegmentedPicker::SegmentedPicker(const QStringList& titles, QWidget* parent) : QWidget(parent) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins(inset, inset, inset, inset);
    layout->setSpacing(inset);
    for (const QString& title : titles) {
        auto* const segment = new Segment(title, this);
        const int index = static_cast<int>(segments_.size());
        connect(segment, &QAbstractButton::clicked, this, [this, index] { emit chosen(index); });
        layout->addWidget(segment);
        segments_.push_back(segment);
    }
}

void SegmentedPicker::setCurrentIndex(int index) {
    segments_.at(static_cast<std::size_t>(index))->setChecked(true);
}

void SegmentedPicker::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Palette::border().resolved(Palette::isDark()), 1));
    painter.setBrush(Palette::chip().resolved(Palette::isDark()));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), cornerRadius - 0.5, cornerRadius - 0.5);
}

}  // namespace quillmere
