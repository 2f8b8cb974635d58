#include "Quillmere/Platform/Linux/Tap/Recording/FocusedKeys.h"

#include "Quillmere/Platform/Linux/Tap/Recording/TypedKey.h"

#include <QCoreApplication>
#include <QKeyEvent>

#include <optional>

namespace quillmere {

namespace {

std::uint64_t flagWord(Qt::KeyboardModifiers modifiers) {
    std::uint64_t word = 0;
    if (modifiers.testFlag(Qt::MetaModifier)) word |= KeyEventFlags::command;
    if (modifiers.testFlag(Qt::ShiftModifier)) word |= KeyEventFlags::shift;
    if (modifiers.testFlag(Qt::AltModifier)) word |= KeyEventFlags::option;
    if (modifiers.testFlag(Qt::ControlModifier)) word |= KeyEventFlags::control;
    return word;
}

std::optional<KeyEventFields> fieldsOf(const QKeyEvent& event) {
    const unsigned int native = event.nativeScanCode();
    if (native < KeyCodes::x11Offset) return std::nullopt;
    auto fields =
        typedKey(native - KeyCodes::x11Offset, event.type() != QEvent::KeyRelease, flagWord(event.modifiers()));
    if (fields) fields->autorepeat = event.isAutoRepeat() ? 1 : 0;
    return fields;
}

}  // namespace

FocusedKeys::FocusedKeys(const EventTap::Callback& callback) : callback_(callback) {
    QCoreApplication::instance()->installEventFilter(this);
}

bool FocusedKeys::eventFilter(QObject* /*receiver*/, QEvent* event) {
    const bool isKey = event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease;
    if (!isKey && event->type() != QEvent::ShortcutOverride) return false;
    const auto fields = fieldsOf(static_cast<const QKeyEvent&>(*event));
    if (!fields) return false;
    if (isKey) return callback_(*fields) == InterceptDecision::swallow;
    // Comes before the press, which otherwise might choose from a menu.
    event->accept();
    return true;
}

}  // namespace quillmere
