#include "Quillmere/Settings/ShortcutRecorder.h"

#include "Quillmere/Controls/MessageLabel.h"
#include "Quillmere/Settings/ShortcutChip.h"
#include "Quillmere/Settings/SpelledShortcut.h"

#include <QPointer>
#include <QVBoxLayout>

#include <algorithm>

namespace quillmere {

namespace {
constexpr std::int64_t deleteKey = 51;
constexpr std::int64_t escapeKey = 53;
}  // namespace

ShortcutRecorder::ShortcutRecorder(const GroupBinding& binding, QWidget* parent)
    : QWidget(parent), binding_(binding), button_(new ShortcutChip(this)), message_(new MessageLabel(this)) {
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(4);
    layout->addWidget(button_);
    layout->addWidget(message_);
    connect(button_, &QAbstractButton::clicked, this, [this] { toggle(); });
    connect(&binding_.model(), &ConfigModel::recordingChanged, this, [this] { refresh(); });
    refresh();
}

ShortcutRecorder::~ShortcutRecorder() {
    stop();
}

bool ShortcutRecorder::isRecording() const {
    return binding_.model().recordingGroup() == binding_.key().id;
}

void ShortcutRecorder::setNumber(int number) {
    number_ = number;
    refresh();
}

void ShortcutRecorder::refresh() {
    const QString words = spelled();
    button_->setTitle(title());
    button_->setToolTip(words);
    button_->setAccessibleName(
        QStringLiteral("Shortcut of group %1: %2").arg(number_).arg(words.isEmpty() ? title() : words));
}

QString ShortcutRecorder::spelled() const {
    const CycleGroup* const group = binding_.group();
    if (isRecording() || !group || !group->shortcut) return {};
    return QString::fromStdString(spelledShortcut(*group->shortcut));
}

QString ShortcutRecorder::title() const {
    if (isRecording()) return QStringLiteral("Press shortcut…");
    const CycleGroup* const group = binding_.group();
    if (!group || !group->shortcut) return QStringLiteral("Set shortcut");
    return QString::fromStdString(group->shortcut->displayString());
}

void ShortcutRecorder::toggle() {
    if (isRecording()) {
        stop();
        return;
    }
    message_->setMessage({});
    start();
}

void ShortcutRecorder::start() {
    binding_.model().startRecording(binding_.key().id,
                                    [recorder = QPointer(this)](std::int64_t keyCode, Modifiers modifiers) {
                                        if (recorder) recorder->handle(keyCode, modifiers);
                                    });
}

void ShortcutRecorder::stop() {
    if (isRecording()) binding_.model().endRecording();
}

void ShortcutRecorder::handle(std::int64_t keyCode, Modifiers modifiers) {
    if (keyCode == deleteKey) {
        binding_.edit([](CycleGroup& group) { group.shortcut.reset(); });
        stop();
        return;
    }
    if (keyCode == escapeKey) {
        stop();
        return;
    }
    const Shortcut shortcut{keyCode, modifiers};
    if (!shortcut.isValid()) {
        message_->setMessage(QStringLiteral("Add ⌘, ⌥ or ⌃, or press Fn alone"));
        return;
    }
    if (isUsedByAnotherGroup(shortcut)) {
        message_->setMessage(QStringLiteral("Already used by another group"));
        return;
    }
    binding_.edit([&](CycleGroup& group) { group.shortcut = shortcut; });
    stop();
}

bool ShortcutRecorder::isUsedByAnotherGroup(const Shortcut& shortcut) const {
    return std::ranges::any_of(binding_.model().config().groups, [&](const CycleGroup& group) {
        return group.id != binding_.key().id && group.shortcut == shortcut;
    });
}

void ShortcutRecorder::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    stop();
}

}  // namespace quillmere
