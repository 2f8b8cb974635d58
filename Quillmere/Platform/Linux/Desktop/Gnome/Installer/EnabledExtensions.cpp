#include "Quillmere/Platform/Linux/Desktop/Gnome/Installer/EnabledExtensions.h"

#include <gio/gio.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace quillmere::gnomeextension {

namespace {

constexpr const char* schemaName = "org.gnome.shell";
constexpr const char* enabledKey = "enabled-extensions";
constexpr const char* disabledKey = "disabled-extensions";

struct SettingsDeleter {
    void operator()(GSettings* settings) const { g_object_unref(settings); }
};
using Settings = std::unique_ptr<GSettings, SettingsDeleter>;

/// Null where they are not installed: the library ends a program that asks all
/// the same.
Settings open() {
    GSettingsSchemaSource* const source = g_settings_schema_source_get_default();
    if (source == nullptr) return nullptr;
    GSettingsSchema* const schema = g_settings_schema_source_lookup(source, schemaName, TRUE);
    if (schema == nullptr) return nullptr;
    g_settings_schema_unref(schema);
    return Settings(g_settings_new(schemaName));
}

std::vector<std::string> read(GSettings* settings, const char* key) {
    const std::unique_ptr<char*, void (*)(char**)> list(g_settings_get_strv(settings, key), g_strfreev);
    std::vector<std::string> result;
    for (char** entry = list.get(); *entry != nullptr; ++entry)
        result.emplace_back(*entry);
    return result;
}

bool write(GSettings* settings, const char* key, const std::vector<std::string>& list) {
    std::vector<const char*> entries;
    entries.reserve(list.size() + 1);
    for (const std::string& entry : list)
        entries.push_back(entry.c_str());
    entries.push_back(nullptr);
    return g_settings_set_strv(settings, key, entries.data()) != FALSE;
}

/// Takes it out of the list, and puts it at its end if it shall be there.
bool change(GSettings* settings, const char* key, const std::string& uuid, bool shallBeThere) {
    std::vector<std::string> list = read(settings, key);
    const bool isThere = std::ranges::find(list, uuid) != list.end();
    if (isThere == shallBeThere) return true;
    std::erase(list, uuid);
    if (shallBeThere) list.push_back(uuid);
    return write(settings, key, list);
}

}  // namespace

bool isEnabled(const std::string& uuid) {
    const Settings settings = open();
    if (settings == nullptr) return false;
    const std::vector<std::string> list = read(settings.get(), enabledKey);
    return std::ranges::find(list, uuid) != list.end();
}

bool enable(const std::string& uuid) {
    const Settings settings = open();
    if (settings == nullptr) return false;
    // The shell takes one that is in both lists for disabled.
    const bool isDone =
        change(settings.get(), disabledKey, uuid, false) && change(settings.get(), enabledKey, uuid, true);
    g_settings_sync();
    return isDone;
}

bool disable(const std::string& uuid) {
    const Settings settings = open();
    if (settings == nullptr) return false;
    const bool isDone = change(settings.get(), enabledKey, uuid, false);
    g_settings_sync();
    return isDone;
}

}  // namespace quillmere::gnomeextension
