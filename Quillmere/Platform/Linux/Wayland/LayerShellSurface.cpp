#include "Quillmere/Platform/Linux/Wayland/LayerShellSurface.h"

#include "Quillmere/Platform/Linux/Wayland/BlurProtocol.h"

#include <utility>

namespace quillmere {

const layershell::SurfaceListener LayerShellSurface::layerListener{
    .configure = [](void* self, wl_proxy*, std::uint32_t serial, std::uint32_t,
                    std::uint32_t) { static_cast<LayerShellSurface*>(self)->takeConfiguration(serial); },
    .closed = [](void* self, wl_proxy*) { static_cast<LayerShellSurface*>(self)->isClosed_ = true; },
};

const wl_surface_listener LayerShellSurface::surfaceListener{
    .enter = [](void* self, wl_surface*,
                wl_output* output) { static_cast<LayerShellSurface*>(self)->takeOutput(output); },
    .leave = [](void*, wl_surface*, wl_output*) {},
};

LayerShellSurface::LayerShellSurface(WaylandConnection& connection, const char* purpose, QSize size)
    : connection_(connection),
      surface_(wl_compositor_create_surface(connection.compositor())),
      layer_(layershell::makeOverlay(connection.shell(), surface_, purpose)) {
    wl_surface_add_listener(surface_, &surfaceListener, this);
    layershell::listen(layer_, layerListener, this);
    // No edge is named and no room claimed, nor is a panel's room ignored: such
    // a surface belongs in the middle of what panels leave.
    resize(size);
    refuseInput();
    wl_surface_commit(surface_);
}

LayerShellSurface::~LayerShellSurface() {
    endBlur();
    layershell::destroy(layer_);
    wl_surface_destroy(surface_);
}

/// Keys a layer surface has to ask for; clicks it has to let through.
void LayerShellSurface::refuseInput() {
    wl_region* nowhere = wl_compositor_create_region(connection_.compositor());
    wl_surface_set_input_region(surface_, nowhere);
    wl_region_destroy(nowhere);
}

void LayerShellSurface::takeKeyboard() {
    layershell::takeKeyboard(layer_);
    wl_surface_commit(surface_);
}

void LayerShellSurface::resize(QSize size) {
    if (size == size_) return;
    size_ = size;
    layershell::setSize(layer_, static_cast<std::uint32_t>(size.width()), static_cast<std::uint32_t>(size.height()));
}

void LayerShellSurface::blur(const QRegion& part) {
    if (connection_.blur() == nullptr || part == blurred_) return;
    endBlur();
    blurred_ = part;
    if (part.isEmpty()) return;
    wl_region* region = wl_compositor_create_region(connection_.compositor());
    for (const QRect& rect : part)
        wl_region_add(region, rect.x(), rect.y(), rect.width(), rect.height());
    blur_ = blur::request(connection_.blur(), surface_, region);
    wl_region_destroy(region);
}

void LayerShellSurface::endBlur() {
    if (blur_ != nullptr) blur::release(connection_.blur(), surface_, std::exchange(blur_, nullptr));
}

void LayerShellSurface::show(WaylandPicture& picture, int scale) {
    wl_surface_set_buffer_scale(surface_, scale);
    picture.attach(surface_);
    wl_surface_damage(surface_, 0, 0, size_.width(), size_.height());
    wl_surface_commit(surface_);
}

void LayerShellSurface::takeConfiguration(std::uint32_t serial) {
    layershell::acknowledge(layer_, serial);
    if (isPlaced_) {
        // Nothing is drawn for it, but some compositors move it only now.
        wl_surface_commit(surface_);
        return;
    }
    isPlaced_ = true;
    if (onPlaced) onPlaced();
}

void LayerShellSurface::takeOutput(const wl_output* output) {
    output_ = output;
    if (onPlaced) onPlaced();
}

}  // namespace quillmere
