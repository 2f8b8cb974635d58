#pragma once

#include "Quillmere/Platform/Linux/Tap/Sway/SwayEventTap.h"
#include "Quillmere/Platform/Offer.h"

namespace quillmere {

/// Says which shortcuts do nothing because sway's own configuration has them.
class SwayConflicts final : public Offer {
public:
    /// `tap` must outlive this.
    explicit SwayConflicts(const SwayEventTap& tap);

    bool isOpen() const override { return !tap_.taken().empty(); }
    QString text() const override;
    /// Only the user can do something about it.
    QString action() const override { return {}; }
    void accept() override {}

private:
    const SwayEventTap& tap_;
};

}  // namespace quillmere
