#include "Quillmere/Settings/TabChip.h"

#include <utility>

namespace quillmere {

TabChip::TabChip(const QString& title, std::function<void()> action, QWidget* parent) : ChipButton(title, {}, parent) {
    connect(this, &QAbstractButton::clicked, this, std::move(action));
}

}  // namespace quillmere
