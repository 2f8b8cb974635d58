#include "Quillmere/Permission/PermissionView.h"

#include "Quillmere/Controls/AccentButtonStyle.h"
#include "Quillmere/Controls/ChipButtonStyle.h"
#include "Quillmere/Controls/WrappedLabel.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include <utility>

namespace quillmere {

namespace {

// All in points.
constexpr int viewWidth = 420;
constexpr int padding = 24;
constexpr int spacing = 16;
constexpr int buttonSpacing = 10;

QVBoxLayout* makeColumn(QWidget* content) {
    auto* const column = new QVBoxLayout(content);
    column->setContentsMargins(padding, padding, padding, padding);
    column->setSpacing(spacing);
    return column;
}

}  // namespace

PermissionView::PermissionView(std::shared_ptr<const PermissionModel> model, QString directions, Actions actions,
                               QWidget* parent)
    : QWidget(parent),
      model_(std::move(model)),
      directions_(std::move(directions)),
      actions_(std::move(actions)),
      frame_(new QVBoxLayout(this)) {
    frame_->setContentsMargins(0, 0, 0, 0);
    connect(model_.get(), &PermissionModel::stateChanged, this, [this] { refresh(); });
    refresh();
}

void PermissionView::refresh() {
    if (content_) {
        // later: the button that was pressed may sit in it
        frame_->removeWidget(content_);
        content_->hide();
        content_->deleteLater();
    }
    content_ = model_->state() == PermissionGate::State::granted ? makeGranted() : makeNeeded();
    frame_->addWidget(content_);
    content_->show();
    setFixedSize(viewWidth, content_->layout()->heightForWidth(viewWidth));
}

QWidget* PermissionView::makeNeeded() {
    auto* const content = new QWidget;
    auto* const column = makeColumn(content);
    column->addWidget(new WrappedLabel(
        QStringLiteral("Quillmere needs Accessibility access to see your shortcut keys."), TextStyle::title));
    column->addWidget(new WrappedLabel(directions_, TextStyle::body, Palette::muted()));
    auto* const row = new QHBoxLayout;
    row->setSpacing(buttonSpacing);
    auto* const settings = new AccentButton(QStringLiteral("Open System Settings"));
    auto* const quit = new ChipButton(QStringLiteral("Quit"));
    connect(settings, &QAbstractButton::clicked, this, actions_.onOpenSettings);
    connect(quit, &QAbstractButton::clicked, this, actions_.onQuit);
    row->addWidget(settings);
    row->addWidget(quit);
    row->addStretch();
    column->addLayout(row);
    column->addWidget(
        new PaletteLabel(QStringLiteral("Waiting for permission…"), TextStyle::caption, Palette::muted()));
    return content;
}

QWidget* PermissionView::makeGranted() {
    auto* const content = new QWidget;
    auto* const column = makeColumn(content);
    column->addWidget(new WrappedLabel(QStringLiteral("Permission granted. Quillmere is ready."), TextStyle::title));
    auto* const done = new AccentButton(QStringLiteral("Done"));
    connect(done, &QAbstractButton::clicked, this, actions_.onDone);
    column->addWidget(done, 0, Qt::AlignLeft);
    return content;
}

}  // namespace quillmere
