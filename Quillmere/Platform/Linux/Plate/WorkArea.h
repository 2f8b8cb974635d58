#pragma once

#include <QRect>
#include <QSize>

#include <cstdint>
#include <span>

namespace quillmere {

/// What panels leave of one monitor, where the window manager tells it of all
/// monitors as one only. Lengths in pixels of the X screen. A value.
class WorkArea {
public:
    /// `root`: the whole X screen, which the panels' claims are measured from.
    WorkArea(const QRect& monitor, const QSize& root) : monitor_(monitor), root_(root), free_(monitor) {}

    /// Takes away what one panel claims: a _NET_WM_STRUT_PARTIAL (left, right,
    /// top, bottom, then begin and end along each) or the shorter
    /// _NET_WM_STRUT. Anything else claims nothing.
    void remove(std::span<const std::uint32_t> strut);

    const QRect& free() const { return free_; }

private:
    QRect monitor_;
    QSize root_;
    QRect free_;
};

}  // namespace quillmere
