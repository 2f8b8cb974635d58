#pragma once

#include "Quillmere/Platform/PermissionRequest.h"

namespace quillmere {

/// Counts how often the user was sent to grant the permission.
class FakePermissionRequest : public PermissionRequest {
public:
    QString directions() const override { return text; }
    void open() override { ++opens; }

    QString text = QStringLiteral("Press the button, and then do what the system asks of you.");

    int opens = 0;
};

}  // namespace quillmere
