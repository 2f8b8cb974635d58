#pragma once

#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeSettingsHelper.h"
#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeSourceAccess.h"

#include <string>

namespace quillmere {

/// Through GNOME's settings alone, for a shell without our extension: a switch
/// takes about a tenth of a second, and a source that the user has chosen for
/// one window only is not known to be current.
class GnomeSettingsSources final : public GnomeSourceAccess {
public:
    /// `program`: the helper's. Starts it when an earlier one could not end in
    /// order, which puts the user's list right; else when it is first asked.
    explicit GnomeSettingsSources(std::string program);

    bool isAvailable() override { return helper_.isUsable(); }
    std::optional<GnomeSources> sources() override;
    bool activate(const GnomeSource& source) override;

    const GnomeSettingsHelper& helper() const { return helper_; }

private:
    GnomeSettingsHelper helper_;
};

}  // namespace quillmere
