#include "Quillmere/Platform/Linux/Tap/Recording/TypedKey.h"

namespace quillmere {

std::optional<KeyEventFields> typedKey(KeyCodes::EvdevCode code, bool isPress, std::uint64_t flags) {
    const auto key = KeyCodes::virtualKey(code);
    if (!key || KeyCodes::isModifier(code) || KeyCodes::isFn(code)) return std::nullopt;
    return KeyEventFields{
        .type = isPress ? KeyEventType::keyDown : KeyEventType::keyUp, .keyCode = *key, .flags = flags};
}

}  // namespace quillmere
