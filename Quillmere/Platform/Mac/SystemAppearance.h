#pragma once

#include "Quillmere/Platform/Appearance.h"

#include <memory>

namespace quillmere {

/// The appearance of the application, which follows the system's.
class SystemAppearance final : public Appearance {
public:
    SystemAppearance();
    ~SystemAppearance() override;

    bool isDark() const override;
    bool hasGlass() const override;

private:
    struct Observation;

    std::unique_ptr<Observation> observation_;
};

}  // namespace quillmere
