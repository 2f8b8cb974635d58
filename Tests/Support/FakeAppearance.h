#pragma once

#include "Quillmere/Platform/Appearance.h"

namespace quillmere {

/// A desktop that is as dark as the test says.
class FakeAppearance : public Appearance {
public:
    bool isDark() const override { return isDark_; }
    bool hasGlass() const override { return glass; }

    void setDark(bool isDark) {
        isDark_ = isDark;
        emit changed();
    }

    bool glass = false;

private:
    bool isDark_ = false;
};

}  // namespace quillmere
