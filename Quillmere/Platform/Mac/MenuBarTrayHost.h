#pragma once

#include "Quillmere/Platform/TrayHost.h"

namespace quillmere {

/// The menu bar, which is there whenever a program can be.
class MenuBarTrayHost final : public TrayHost {
public:
    bool isAvailable() const override { return true; }
    bool isMenuBar() const override { return true; }
};

}  // namespace quillmere
