#pragma once

#include "Quillmere/Platform/Linux/X11/QtX11.h"

#include <QRect>
#include <QRectF>

#include <array>
#include <optional>

class QScreen;

namespace quillmere {

/// The monitor with the window that has the keyboard, and what panels leave of
/// it: X11 has no word for the first, and Qt none for the second where there
/// are several monitors. Main thread only.
class X11MainScreen {
public:
    explicit X11MainScreen(const QtX11& x11);

    /// In points. That of the primary monitor where no window has the
    /// keyboard; empty without a monitor. Some round trips where there are
    /// several monitors, none otherwise.
    QRectF visibleFrame() const;

private:
    const QScreen* screenWithKeyboard() const;
    std::optional<QRect> keyboardWindowFrame() const;
    QRect workArea(const QRect& monitor) const;
    QRect workAreaOfManager(const QRect& monitor) const;
    QRect workAreaOfPanels(const QRect& monitor) const;

    QtX11 x11_;
    std::array<xcb_atom_t, 5> atoms_;
};

}  // namespace quillmere
