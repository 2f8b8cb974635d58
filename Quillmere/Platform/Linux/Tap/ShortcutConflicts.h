#pragma once

#include "Quillmere/Platform/Linux/Tap/TakenShortcuts.h"
#include "Quillmere/Platform/Offer.h"

namespace quillmere {

/// Says which shortcuts do nothing because the desktop has their combinations
/// for something else, and where the user can change that.
class ShortcutConflicts final : public Offer {
public:
    /// `taken` must outlive this. The text has a place for the shortcuts: %1.
    ShortcutConflicts(const TakenShortcuts& taken, const QString& text);

    bool isOpen() const override { return !taken_.all().empty(); }
    QString text() const override;
    /// Only the user can do something about it.
    QString action() const override { return {}; }
    void accept() override {}

private:
    const TakenShortcuts& taken_;
    QString text_;
};

}  // namespace quillmere
