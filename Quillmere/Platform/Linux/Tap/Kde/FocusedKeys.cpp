#include "Quillmere/Platform/Linux/Tap/Kde/FocusedKeys.h"

#include "Quillmere/Platform/Linux/Tap/KeyCodes.h"

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

/// Absent for a modifier key, and for one that has no number.
std::optional<KeyEventFields> fieldsOf(const QKeyEvent& event) {
    const unsigned int native = event.nativeScanCode();
    if (native < KeyCodes::x11Offset) return std::nullopt;
    const KeyCodes::EvdevCode code = native - KeyCodes::x11Offset;
    const auto key = KeyCodes::virtualKey(code);
    if (!key || KeyCodes::isModifier(code) || KeyCodes::isFn(code)) return std::nullopt;
    return KeyEventFields{.type = event.type() == QEvent::KeyRelease ? KeyEventType::keyUp : KeyEventType::keyDown,
                          .keyCode = *key,
                          .autorepeat = event.isAutoRepeat() ? 1 : 0,
                          .flags = flagWord(event.modifiers())};
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
