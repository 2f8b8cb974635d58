#include "Quillmere/Updates/UpdateView.h"

#include "Quillmere/Controls/AccentButtonStyle.h"
#include "Quillmere/Controls/ChipButtonStyle.h"
#include "Quillmere/Controls/PaletteScrollArea.h"
#include "Quillmere/Controls/WrappedLabel.h"
#include "Quillmere/Updates/ByteCount.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QScrollBar>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace quillmere {

namespace {

// All in points.
constexpr int viewWidth = 420;
constexpr int padding = 24;
constexpr int spacing = 14;
constexpr int noteSpacing = 4;
constexpr int bulletSpacing = 8;
constexpr int buttonSpacing = 10;
constexpr int leastNotesHeight = 60;

constexpr qsizetype longestVersion = 100;
constexpr qsizetype longestNote = 4000;
constexpr std::size_t mostNotes = 500;

QString ellipsis() {
    return QStringLiteral("…");
}

QString shortened(const std::string& text, qsizetype longest) {
    const QString whole = QString::fromStdString(text);
    return whole.size() <= longest ? whole : whole.first(longest) + ellipsis();
}

QLayout* makeNote(const QString& text) {
    auto* const row = new QHBoxLayout;
    row->setSpacing(bulletSpacing);
    // Both have the same font and start at the top, and so share the baseline.
    row->addWidget(new PaletteLabel(QStringLiteral("•"), TextStyle::body, Palette::muted()), 0, Qt::AlignTop);
    row->addWidget(new WrappedLabel(text, TextStyle::body, Palette::muted()), 1);
    return row;
}

}  // namespace

QString updateTitle(const AppVersion& version) {
    return QStringLiteral("Quillmere ") + shortened(version.description(), longestVersion)
           + QStringLiteral(" is available");
}

UpdateView::UpdateView(const UpdateOffer& offer, Actions actions, QWidget* parent)
    : QWidget(parent), column_(new QVBoxLayout(this)) {
    column_->setContentsMargins(padding, padding, padding, padding);
    column_->setSpacing(spacing);
    column_->addWidget(new WrappedLabel(updateTitle(offer.version), TextStyle::title));
    if (!offer.notes.empty()) addNotes(offer.notes);
    if (offer.size) {
        const QString size = QStringLiteral("Download size: ") + QString::fromStdString(byteCountText(*offer.size));
        column_->addWidget(new PaletteLabel(size, TextStyle::caption, Palette::muted()));
    }
    addButtons(std::move(actions));
}

void UpdateView::addNotes(const std::vector<std::string>& notes) {
    notes_ = new PaletteScrollArea(noteSpacing);
    // An aligned column is never higher than its size hint, which for words
    // that must be broken is too low.
    notes_->column().setAlignment(Qt::Alignment());
    for (std::size_t i = 0; i < std::min(notes.size(), mostNotes); ++i) {
        notes_->column().addLayout(makeNote(shortened(notes[i], longestNote)));
    }
    if (notes.size() > mostNotes) notes_->column().addLayout(makeNote(ellipsis()));
    notes_->setFixedHeight(notes_->column().heightForWidth(viewWidth - 2 * padding));
    column_->addWidget(notes_);
}

void UpdateView::addButtons(Actions actions) {
    auto* const row = new QHBoxLayout;
    row->setSpacing(buttonSpacing);
    const auto add = [&](QAbstractButton* button, std::function<void()> action) {
        row->addWidget(button);
        connect(button, &QAbstractButton::clicked, this, std::move(action));
    };
    add(new AccentButton(QStringLiteral("Download")), std::move(actions.onDownload));
    add(new ChipButton(QStringLiteral("Later")), std::move(actions.onLater));
    add(new ChipButton(QStringLiteral("Skip this version")), std::move(actions.onSkip));
    row->addStretch();
    column_->addLayout(row);
}

void UpdateView::fit(int maximumHeight) {
    const int excess = column_->heightForWidth(viewWidth) - maximumHeight;
    if (notes_ && excess > 0) notes_->setFixedHeight(std::max(notes_->minimumHeight() - excess, leastNotesHeight));
    setFixedSize(viewWidth, column_->heightForWidth(viewWidth));
}

// The notes scroll from the keyboard without having the focus. Straight to the
// bar: an event that it is sent would come back here from its parents.
void UpdateView::keyPressEvent(QKeyEvent* event) {
    if (notes_)
        notes_->verticalScrollBar()->event(event);
    else
        QWidget::keyPressEvent(event);
}

}  // namespace quillmere
