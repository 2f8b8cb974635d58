#pragma once

#include "Quillmere/Platform/Linux/Sources/BusService.h"
#include "Quillmere/Platform/Linux/Sources/DesktopInputSources.h"
#include "Quillmere/Platform/Linux/Sources/Gnome/GnomeSourceAccess.h"
#include "Quillmere/Platform/Linux/Sources/XkbLayoutRegistry.h"

#include <QDBusConnection>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillmere {

/// The input sources of GNOME, under Wayland as under X11: layouts and input
/// methods in one list, which the shell has. It takes back what anybody else
/// does to the keyboard, an X server's groups included.
///
/// Every call asks the first way that is there: what has been sent of a change
/// may still wait in the event loop's queue.
class GnomeInputSources final : public DesktopInputSources {
public:
    /// The ways in the order of who is asked first.
    GnomeInputSources(const QDBusConnection& bus, std::vector<std::unique_ptr<GnomeSourceAccess>> ways);

    /// The session's: the extension's way, else that of the settings. Null
    /// without a message bus.
    static std::unique_ptr<GnomeInputSources> create();

    bool isAvailable() override { return shell_.isOwned(); }
    std::vector<InputSourceRecord> sources() override;
    std::optional<std::string> currentID() override;
    /// 0 once the desktop says that it uses the source; 1 for one that is not
    /// in the list, or when it did not switch in time.
    int select(const InputSourceRecord& source) override;

private:
    GnomeSourceAccess* way() const;
    std::optional<GnomeSources> ask() const;
    InputSourceRecord recordOf(const GnomeListedSource& listed);

    BusService shell_;
    std::vector<std::unique_ptr<GnomeSourceAccess>> ways_;
    XkbLayoutRegistry registry_;
};

}  // namespace quillmere
