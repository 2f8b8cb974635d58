#include "Quillmere/Platform/Linux/Tap/FlagWord.h"

#include "Quillmere/Platform/KeyEvent.h"

namespace quillmere {

std::uint64_t flagWord(Modifiers modifiers) {
    std::uint64_t word = 0;
    if (modifiers.contains(Modifiers::command)) word |= KeyEventFlags::command;
    if (modifiers.contains(Modifiers::shift)) word |= KeyEventFlags::shift;
    if (modifiers.contains(Modifiers::option)) word |= KeyEventFlags::option;
    if (modifiers.contains(Modifiers::control)) word |= KeyEventFlags::control;
    return word;
}

}  // namespace quillmere
