#include "Quillmere/Platform/Linux/Tap/TakenShortcuts.h"

#include <utility>

namespace quillmere {

void TakenShortcuts::set(std::vector<Shortcut> shortcuts) {
    if (shortcuts == all_) return;
    all_ = std::move(shortcuts);
    emit changed();
}

}  // namespace quillmere
