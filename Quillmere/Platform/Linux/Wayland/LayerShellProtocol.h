#pragma once

#include <cstdint>

#include <wayland-client.h>

namespace quillmere {

/// As much of wlr-layer-shell-unstable-v1, version 1, as this program needs:
/// libwayland-client takes an interface as tables, and no distribution ships
/// this one's.
namespace layershell {

/// zwlr_layer_shell_v1: makes layer surfaces.
extern const wl_interface shellInterface;
/// zwlr_layer_surface_v1: a surface above, or below, all windows.
extern const wl_interface surfaceInterface;

/// What a layer surface is told. The functions get the data that the listener
/// was added with.
struct SurfaceListener {
    /// The size to take, in points; to be acknowledged by `serial` before a
    /// picture is attached.
    void (*configure)(void* data, wl_proxy* surface, std::uint32_t serial, std::uint32_t width, std::uint32_t height);
    /// It is seen no more, as when its output is gone; to be destroyed.
    void (*closed)(void* data, wl_proxy* surface);
};

/// A surface of the overlay layer, over full-screen windows too, on the output
/// that the compositor chooses. The caller destroys it before `surface`.
wl_proxy* makeOverlay(wl_proxy* shell, wl_surface* surface, const char* purpose);

/// `listener` and `data` must outlive the surface.
void listen(wl_proxy* surface, const SurfaceListener& listener, void* data);

/// Gives it the keyboard to itself, from the next commit on.
void takeKeyboard(wl_proxy* surface);

/// In points.
void setSize(wl_proxy* surface, std::uint32_t width, std::uint32_t height);

void acknowledge(wl_proxy* surface, std::uint32_t serial);

void destroy(wl_proxy* surface);

}  // namespace layershell

}  // namespace quillmere
