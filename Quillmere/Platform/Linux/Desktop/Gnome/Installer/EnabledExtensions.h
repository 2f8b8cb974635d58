#pragma once

#include <string>

/// Which extensions GNOME Shell loads at the next login, in the user's settings
/// (org.gnome.shell). Its own command for that refuses one that it has not seen
/// at the last login. False where GNOME's settings are not installed.
namespace quillmere::gnomeextension {

bool isEnabled(const std::string& uuid);

/// Returns when the settings have it. The others stay as they are.
bool enable(const std::string& uuid);
bool disable(const std::string& uuid);

}  // namespace quillmere::gnomeextension
