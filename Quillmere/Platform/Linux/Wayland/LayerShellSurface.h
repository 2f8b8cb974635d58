#pragma once

#include "Quillmere/Platform/Linux/Wayland/LayerShellProtocol.h"
#include "Quillmere/Platform/Linux/Wayland/WaylandConnection.h"
#include "Quillmere/Platform/Linux/Wayland/WaylandPicture.h"

#include <QRegion>
#include <QSize>

#include <cstdint>
#include <functional>

#include <wayland-client.h>

namespace quillmere {

/// A picture above all windows, full-screen ones too, in the middle of what
/// panels leave of the output that the compositor chooses: the focused one. It
/// gets no clicks, and keys only when it takes the keyboard. Seen from its first
/// picture until its end. Main thread only.
class LayerShellSurface {
public:
    /// `size` in points; `purpose` in one of the words that KWin goes by rather
    /// than by the layer, as "on-screen-display". `connection` is usable, and
    /// outlives this.
    LayerShellSurface(WaylandConnection& connection, const char* purpose, QSize size);
    ~LayerShellSurface();
    LayerShellSurface(const LayerShellSurface&) = delete;
    LayerShellSurface& operator=(const LayerShellSurface&) = delete;

    /// It may have a picture from now on, or has come to another output, whose
    /// scale may differ.
    std::function<void()> onPlaced;

    /// Whether it may have a picture: a compositor is asked first.
    bool isPlaced() const { return isPlaced_; }
    /// The compositor has taken it from the screen, as with its output.
    bool isClosed() const { return isClosed_; }
    /// Pixels a point, on the output that it is on.
    int scale() const { return connection_.outputs().scale(output_); }

    wl_surface* surface() const { return surface_; }

    /// Has the keyboard to itself from its first picture until its end.
    void takeKeyboard();
    /// In points; seen with the next picture.
    void resize(QSize size);
    /// Where the compositor can, it blurs what is behind this part, in points,
    /// from the next picture on; nothing where it is empty.
    void blur(const QRegion& part);
    /// Placed only. `picture` has `scale` pixels a point.
    void show(WaylandPicture& picture, int scale);

private:
    static const layershell::SurfaceListener layerListener;
    static const wl_surface_listener surfaceListener;

    void takeConfiguration(std::uint32_t serial);
    void takeOutput(const wl_output* output);
    void refuseInput();
    void endBlur();

    WaylandConnection& connection_;
    wl_surface* surface_;
    wl_proxy* layer_;
    wl_proxy* blur_ = nullptr;
    QRegion blurred_;
    const wl_output* output_ = nullptr;  ///< not owned, and maybe gone
    QSize size_;
    bool isPlaced_ = false;
    bool isClosed_ = false;
};

}  // namespace quillmere
