#pragma once

#include "Quillmere/Platform/LoginItem.h"

namespace quillmere {

/// The application itself among the system's login items, which macOS has from
/// version 13 on.
class ServiceLoginItem final : public LoginItem {
public:
    bool isAvailable() const override;
    QString requirement() const override;
    bool isEnabled() const override;
    bool setEnabled(bool enabled) override;
};

}  // namespace quillmere
