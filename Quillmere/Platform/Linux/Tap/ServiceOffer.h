#pragma once

#include "Quillmere/Platform/Linux/Tap/FallbackEventTap.h"
#include "Quillmere/Platform/Offer.h"
#include "Quillmere/Platform/PermissionRequest.h"

namespace quillmere {

/// Offers the key-tap service as long as the desktop itself is the tap.
class ServiceOffer final : public Offer {
public:
    /// Both must outlive this.
    ServiceOffer(const FallbackEventTap& tap, PermissionRequest& request);

    bool isOpen() const override { return !tap_.usesService(); }
    QString text() const override;
    QString action() const override;
    void accept() override { request_.open(); }

private:
    const FallbackEventTap& tap_;
    PermissionRequest& request_;
};

}  // namespace quillmere
