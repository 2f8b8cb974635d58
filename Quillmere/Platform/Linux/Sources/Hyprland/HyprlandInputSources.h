#pragma once

#include "Quillmere/Platform/Linux/Sources/DesktopInputSources.h"
#include "Quillmere/Platform/Linux/Sources/Hyprland/HyprlandEvents.h"
#include "Quillmere/Platform/Linux/Sources/Hyprland/HyprlandKeyboards.h"
#include "Quillmere/Platform/Linux/Sources/Hyprland/HyprlandRequests.h"
#include "Quillmere/Platform/Linux/Sources/XkbLayoutRegistry.h"

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace quillmere {

/// The layouts of the keyboards of Hyprland.
///
/// A switch reaches every keyboard that has the layout, also one that appears
/// later: a keyboard starts with its first layout. Every call asks the
/// compositor, since what it tells of itself is only that something has changed.
class HyprlandInputSources final : public DesktopInputSources {
public:
    /// Null when this session is no Hyprland's, or it does not listen. Waits some
    /// seconds for the first answer, since a session that is starting has much
    /// to do.
    static std::unique_ptr<HyprlandInputSources> create();
    ~HyprlandInputSources() override;

    /// Whether somebody tells of events.
    bool isAvailable() override { return connect(); }
    /// As last known while the compositor does not answer.
    std::vector<InputSourceRecord> sources() override;
    std::optional<std::string> currentID() override;
    /// 0 once every keyboard with the desktop's layouts uses it; 1 for a layout
    /// that is not there, or when the compositor did not switch in time.
    int select(const InputSourceRecord& source) override;

private:
    using Clock = HyprlandRequests::Clock;

    explicit HyprlandInputSources(const std::string& folder) : folder_(folder), requests_(folder) {}

    bool connect();
    bool refresh(Clock::time_point deadline);
    bool read(Clock::time_point deadline);
    void put(const XkbLayout& layout, Clock::time_point deadline);
    bool ask(const std::vector<std::string>& requests, Clock::time_point deadline);
    void takeEvents();
    std::optional<XkbLayout> layoutOf(const std::string& id) const;

    std::string folder_;
    HyprlandRequests requests_;
    /// Read even when nobody asks: a new keyboard has to be given the current
    /// layout before it is typed on.
    std::unique_ptr<HyprlandEvents> events_;
    XkbLayoutRegistry registry_;
    HyprlandKeyboards keyboards_;
    std::optional<XkbLayout> current_;  ///< the layout in use
    std::set<std::string> switched_;    ///< names of keyboards that events told of
};

}  // namespace quillmere
