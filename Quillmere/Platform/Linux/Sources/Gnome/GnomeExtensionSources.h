#pragma once

#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeExtension.h"
#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeSourceAccess.h"

#include <QDBusConnection>

namespace quillmere {

/// Through our extension: the shell's own list, and its word when a switch is
/// in effect.
class GnomeExtensionSources final : public GnomeSourceAccess {
public:
    explicit GnomeExtensionSources(const QDBusConnection& bus) : extension_(bus) {}

    bool isAvailable() override { return extension_.isLive(); }
    std::optional<GnomeSources> sources() override;
    bool activate(const GnomeSource& source) override;

private:
    GnomeExtension extension_;
};

}  // namespace quillmere
