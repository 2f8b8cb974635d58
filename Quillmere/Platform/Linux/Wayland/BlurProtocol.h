#pragma once

#include <wayland-client.h>

namespace quillmere {

/// KDE's protocol for a blurred desktop behind a surface (org_kde_kwin_blur), as
/// tables for libwayland-client: its file is in no package that a build needs.
namespace blur {

/// org_kde_kwin_blur_manager: there only while the compositor blurs at all.
extern const wl_interface managerInterface;

/// Blurs what is behind this part of the surface from its next commit on, until
/// the result is given to `release`.
wl_proxy* request(wl_proxy* manager, wl_surface* surface, wl_region* part);

/// Ends it with the surface's next commit. Before the surface does.
void release(wl_proxy* manager, wl_surface* surface, wl_proxy* request);

}  // namespace blur

}  // namespace quillmere
