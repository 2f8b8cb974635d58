#pragma once

#include "Quillmere/Platform/Finding.h"
#include "Quillmere/Platform/InputSourceService.h"
#include "QuillmereCore/Shortcut.h"

#include <QDBusConnection>

#include <string>
#include <vector>

namespace quillmere {

/// Whether another program has these shortcuts on the X server, which does not
/// tell who. Quillmere's own grabs, of another kind, are not in the way.
Finding x11Holders(const std::vector<Shortcut>& shortcuts);

/// Who has them among KDE's global shortcuts. `sources` are the desktop's.
Finding kdeHolders(const std::vector<Shortcut>& shortcuts, const QDBusConnection& bus, InputSourceService& sources);

/// Whether sway's own configuration has them. `sources` are the desktop's.
Finding swayHolders(const std::vector<Shortcut>& shortcuts, const std::string& socket, InputSourceService& sources);

/// Whether the user's own binds in Hyprland have them. `folder` is that of its
/// sockets, `sources` are the desktop's.
Finding hyprlandHolders(const std::vector<Shortcut>& shortcuts, const std::string& folder, InputSourceService& sources);

/// Where no desktop tells.
Finding untoldHolders(const std::vector<Shortcut>& shortcuts);

}  // namespace quillmere
