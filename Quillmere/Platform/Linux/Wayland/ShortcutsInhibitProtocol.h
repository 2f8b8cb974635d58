#pragma once

#include <wayland-client.h>

namespace quillmere {

/// As much of keyboard-shortcuts-inhibit-unstable-v1 as recording a shortcut
/// needs: libwayland-client takes an interface as tables, and the protocol's
/// file is only for its own code generator.
namespace shortcutsinhibit {

/// zwp_keyboard_shortcuts_inhibit_manager_v1: lets a surface have the keys that
/// the compositor would keep for itself.
extern const wl_interface managerInterface;

/// From now on, while `surface` has the keyboard of `seat`. The user may have
/// forbidden it; nobody tells. Ends with `release`, before `surface` does.
wl_proxy* inhibit(wl_proxy* manager, wl_surface* surface, wl_seat* seat);

void release(wl_proxy* inhibition);

}  // namespace shortcutsinhibit

}  // namespace quillmere
