#pragma once

#include "Quillmere/Platform/PermissionRequest.h"

namespace quillmere {

/// Counts how often the user was sent to grant the permission.
class FakePermissionRequest : public PermissionRequest {
public:
    void open() override { ++opens; }

    int opens = 0;
};

}  // namespace quillmere
