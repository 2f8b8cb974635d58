#pragma once

#include "Quillmere/Platform/TrayHost.h"

namespace quillmere {

/// A desktop without a tray until the test brings one up.
class FakeTrayHost : public TrayHost {
public:
    bool isAvailable() const override { return isAvailable_; }

    bool tintsSymbolicIcons() const override { return isTinting; }

    bool isTinting = false;

    void comeUp() {
        isAvailable_ = true;
        emit becameAvailable();
    }

private:
    bool isAvailable_ = false;
};

}  // namespace quillmere
