#pragma once

#include "Quillmere/Controls/ChipButtonStyle.h"

namespace quillmere {

/// The chip that shows a shortcut. It draws the globe of "🌐 Fn" itself: many
/// systems have no font with it, and would show a box.
class ShortcutChip : public ChipButton {
public:
    explicit ShortcutChip(QWidget* parent = nullptr);

protected:
    double textWidth() const override;
    void paintText(QPainter& painter, const QRectF& line) const override;

private:
    bool hasGlobe() const;
    QString textAfterGlobe() const;
};

}  // namespace quillmere
