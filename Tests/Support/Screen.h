#pragma once

#include "Tests/Support/XConnection.h"

#include <QColor>
#include <QImage>

#include <filesystem>
#include <string>

namespace quillmere::support {

/// What a person sees: pictures of the whole screen, as composited.
class Screen {
public:
    explicit Screen(const std::string& display);

    /// The screen at this moment.
    QImage shot() const;
    /// One pixel of it.
    QColor color(QPoint at) const;

    /// Whether no channel of the two differs by more than `tolerance` of 255,
    /// which a compositor's rounding needs.
    static bool isNear(QColor a, QColor b, int tolerance = 2);

    /// `top` painted over `bottom`, as a compositor blends it.
    static QColor blend(QColor bottom, QColor top);

private:
    QImage part(const QRect& frame) const;

    XConnection connection_;
};

/// Writes a picture as PNG, replacing an earlier one; makes the folder. Throws
/// when it cannot.
void savePicture(const QImage& picture, const std::filesystem::path& file);

}  // namespace quillmere::support
