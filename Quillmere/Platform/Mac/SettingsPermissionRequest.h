#pragma once

#include "Quillmere/Platform/PermissionRequest.h"

namespace quillmere {

class Workspace;

/// Opens System Settings at Privacy & Security › Accessibility.
class SettingsPermissionRequest final : public PermissionRequest {
public:
    /// `workspace` must outlive this.
    explicit SettingsPermissionRequest(Workspace& workspace) : workspace_(workspace) {}

    QString directions() const override;
    void open() override;

private:
    Workspace& workspace_;
};

}  // namespace quillmere
