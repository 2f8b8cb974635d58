#include "Quillmere/Platform/Linux/Desktop/Gnome/Installer/RunningShell.h"

#include <gio/gio.h>

#include <memory>

namespace quillmere::gnomeextension {

std::optional<std::string> runningShellVersion() {
    constexpr int patience = 2000;  // milliseconds
    const std::unique_ptr<GDBusConnection, void (*)(void*)> bus(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr),
                                                                g_object_unref);
    if (bus == nullptr) return std::nullopt;
    const std::unique_ptr<GVariant, void (*)(GVariant*)> answer(
        g_dbus_connection_call_sync(bus.get(), "org.gnome.Shell", "/org/gnome/Shell", "org.freedesktop.DBus.Properties",
                                    "Get", g_variant_new("(ss)", "org.gnome.Shell", "ShellVersion"),
                                    G_VARIANT_TYPE("(v)"), G_DBUS_CALL_FLAGS_NO_AUTO_START, patience, nullptr, nullptr),
        g_variant_unref);
    if (answer == nullptr) return std::nullopt;
    GVariant* held = nullptr;
    g_variant_get(answer.get(), "(v)", &held);
    const std::unique_ptr<GVariant, void (*)(GVariant*)> value(held, g_variant_unref);
    if (!g_variant_is_of_type(value.get(), G_VARIANT_TYPE_STRING)) return std::nullopt;
    const std::string version = g_variant_get_string(value.get(), nullptr);
    return version.substr(0, version.find('.'));
}

}  // namespace quillmere::gnomeextension
