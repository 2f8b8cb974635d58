#pragma once

#include "Quillmere/Controls/ChipButtonStyle.h"

#include <functional>

namespace quillmere {

/// The chip that leads to a tab of the settings, selected while that is shown.
class TabChip : public ChipButton {
public:
    /// `action` is what pressing the chip does.
    TabChip(const QString& title, std::function<void()> action, QWidget* parent = nullptr);
};

}  // namespace quillmere
