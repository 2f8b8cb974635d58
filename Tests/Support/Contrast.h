#pragma once

#include <QColor>

#include <algorithm>
#include <cmath>

namespace quillmere::support {

/// How much lighter the one colour is than the other, 1 to 21, as the Web
/// Content Accessibility Guidelines 2 count it, which ask for 3 and more
/// between an icon and what is behind it.
inline double contrast(QColor a, QColor b) {
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    const auto luminance = [&](QColor color) {
        return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
    };
    const auto [darker, lighter] = std::minmax({luminance(a), luminance(b)});
    return (lighter + 0.05) / (darker + 0.05);
}

inline constexpr double iconContrast = 3;

}  // namespace quillmere::support
