#pragma once

#include "Quillmere/Platform/EventTap.h"
#include "Quillmere/Platform/InputSourceService.h"
#include "Quillmere/Platform/Linux/Tap/Hyprland/HyprlandKeyBinds.h"
#include "Quillmere/Platform/Linux/Tap/TakenShortcuts.h"

#include <QObject>
#include <QTimer>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillmere {

/// Hyprland itself as the keyboard filter: its binds swallow the shortcuts and
/// tell of them. No permission is needed, and ordinary typing does not come here
/// at all. What it cannot do: a key that is typed within some milliseconds after
/// the shortcut is in the old layout, since nobody holds it back; a lone tap of
/// Fn is no bind to it; it tells of no key to record; and while the screen is
/// locked or a submap is in use it does nothing.
///
/// Several binds of the same keys are all in effect, so a combination that the
/// user has bound stays theirs.
class HyprlandEventTap final : public QObject, public EventTap {
    Q_OBJECT
public:
    /// `folder` is that of Hyprland's sockets, or empty. `sources` are the
    /// desktop's own and must outlive this.
    HyprlandEventTap(const std::string& folder, InputSourceService& sources);
    ~HyprlandEventTap() override;

    /// The same as `deliversAll`, where the desktop is Hyprland, which may come
    /// later.
    bool install(Callback callback) override;
    /// It is never disabled.
    void enable() override {}
    void setInterest(const KeyInterest& interest) override;
    /// False while a lone tap of Fn is wanted, which nobody hears here, or
    /// Hyprland would not have a bind: the permission for what does it is missing.
    /// The other shortcuts work meanwhile.
    bool deliversAll() const override;

    /// The shortcuts of interest that are left to the user's own binds.
    const TakenShortcuts& taken() const { return taken_; }

private:
    bool open();
    void tell();
    void notePressed(const HyprlandBind& bind);
    std::optional<std::vector<HyprlandBind>> wanted();

    std::string folder_;
    InputSourceService& sources_;
    std::unique_ptr<HyprlandKeyBinds> binds_;  ///< null without Hyprland
    std::optional<ReservedKeys> reserved_;     ///< absent until Hyprland has told
    QTimer again_;                             ///< until it has
    Callback callback_;
    bool isInstalled_ = false;
    KeyInterest interest_;
    TakenShortcuts taken_;
};

}  // namespace quillmere
