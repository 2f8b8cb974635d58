#pragma once

#include "Quillmere/Platform/PlateMaterial.h"

#include <QRectF>
#include <QtGlobal>

#include <functional>

class QWidget;

namespace quillmere {

/// The floating panel that carries the plate: above everything (full-screen
/// windows too), on every desktop, never focused, never clicked. Main thread
/// only. Lengths in points (device-independent pixels), y downwards.
class PlatePanel {
public:
    /// Corner radius of the plate that it carries, in points. The panel's
    /// shadow, which lies outside the frame, has the same.
    static constexpr double cornerRadius = 26;

    PlatePanel() = default;
    PlatePanel(const PlatePanel&) = delete;
    PlatePanel& operator=(const PlatePanel&) = delete;
    virtual ~PlatePanel() = default;

    /// Replaces the content, and what lies behind it; the panel takes ownership.
    /// The content fills the panel.
    virtual void setContent(QWidget* content, const PlateMaterial& material) = 0;

    /// Position and size on the screen.
    virtual void setFrame(const QRectF& frame) = 0;

    /// The main screen's area without panels and docks.
    virtual QRectF visibleFrame() const = 0;

    /// Opacity of the whole panel, 0 to 1. At once; it overrides a fade.
    virtual void setAlpha(double alpha) = 0;
    virtual double alpha() const = 0;

    /// Fades the opacity to `alpha` in `seconds`, then calls `completion`. A
    /// later `setAlpha` or `fade` takes the opacity over; `completion` is then
    /// still called, at the overtaken fade's end.
    virtual void fade(double alpha, double seconds, std::function<void()> completion) = 0;

    virtual void orderFront() = 0;  ///< shows it above all, without activating anything
    virtual void orderOut() = 0;    ///< hides it

    /// Whether the desktop blends translucent windows. Without it the plate's
    /// background must be opaque.
    virtual bool isTranslucent() const = 0;
};

}  // namespace quillmere
