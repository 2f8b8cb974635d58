#pragma once

#include "Quillmere/Platform/Linux/Sources/BusService.h"
#include "Quillmere/Platform/Linux/Sources/DesktopInputSources.h"
#include "Quillmere/Platform/Linux/Sources/Kde/KdeLayouts.h"
#include "Quillmere/Platform/Linux/Sources/XkbLayoutRegistry.h"

#include <QDBusConnection>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillmere {

/// The layouts of KDE: KWin's on Wayland, those of the keyboard daemon on X11.
/// Whoever has them takes the name org.kde.keyboard as long as there are at
/// least two, so with one layout this desktop counts as absent.
///
/// Every call asks: what has been sent of a change may still wait in the event
/// loop's queue.
class KdeInputSources final : public DesktopInputSources {
public:
    explicit KdeInputSources(const QDBusConnection& bus);

    /// The session's; null without a message bus.
    static std::unique_ptr<KdeInputSources> create();

    bool isAvailable() override { return service_.isOwned(); }
    std::vector<InputSourceRecord> sources() override;
    std::optional<std::string> currentID() override;
    /// 0 once the desktop says that it uses the layout; 1 for one that is not
    /// there, or when it did not switch in time.
    int select(const InputSourceRecord& source) override;

private:
    bool askForLayouts(std::vector<BusService::Call> calls);
    bool takeIn(const QVariantList& layouts);
    std::optional<unsigned int> indexOf(const std::string& id) const;

    BusService service_;
    XkbLayoutRegistry registry_;
    std::vector<KdeLayout> layouts_;
    std::vector<InputSourceRecord> records_;  ///< of these layouts
    std::vector<QVariantList> answers_;       ///< to what was asked together with the layouts
};

}  // namespace quillmere
