#include "Quillmere/Platform/Linux/Sources/Gnome/Helper/ShellTurn.h"

#include "Quillmere/Platform/Linux/Sources/Gnome/Helper/GLibOwned.h"

#include <gio/gio.h>

namespace quillmere::gnomehelper {

void waitForShell(std::chrono::milliseconds longest) {
    const OwnedConnection bus(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr));
    if (bus == nullptr) return;
    // A question that its own code answers, not the library's on another thread.
    const OwnedVariant answer(g_dbus_connection_call_sync(
        bus.get(), "org.gnome.Shell", "/org/gnome/Shell", "org.freedesktop.DBus.Properties", "Get",
        g_variant_new("(ss)", "org.gnome.Shell", "ShellVersion"), nullptr, G_DBUS_CALL_FLAGS_NO_AUTO_START,
        static_cast<int>(longest.count()), nullptr, nullptr));
}

}  // namespace quillmere::gnomehelper
