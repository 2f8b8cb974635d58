#pragma once

#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeSource.h"
#include "Quillmere/Platform/Linux/Sources/Gnome/Helper/GLibOwned.h"

#include <memory>

namespace quillmere::gnomehelper {

/// The user's input sources in GNOME's settings (org.gnome.desktop.input-sources).
/// What is read is what the store has at this moment, whoever has written it.
class InputSourceSettings {
public:
    /// Null where GNOME's settings are not installed.
    static std::unique_ptr<InputSourceSettings> open();

    /// The user's list.
    GnomeSourceList sources() const { return read(sourcesKey); }
    /// What was chosen, the last first: the shell's own memory, which it reads
    /// when it starts. May have what is not in the list.
    GnomeSourceList recent() const { return read(recentKey); }

    /// Whether the user may change the list at all.
    bool isWritable() const;
    /// Replaces the list, and with a second one the memory with it; returns when
    /// the store has them.
    void write(const GnomeSourceList& sources, const GnomeSourceList* recent = nullptr);

private:
    static constexpr const char* sourcesKey = "sources";
    static constexpr const char* recentKey = "mru-sources";

    InputSourceSettings();
    GnomeSourceList read(const char* key) const;

    OwnedSettings reader_;
    OwnedSettings writer_;  ///< collects both keys, so that no other program sees one without the other
};

}  // namespace quillmere::gnomehelper
