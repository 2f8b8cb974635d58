#pragma once

#include "Quillmere/Platform/Linux/Sources/Hyprland/HyprlandEvents.h"
#include "Quillmere/Platform/Linux/Sources/Hyprland/HyprlandRequests.h"
#include "Quillmere/Platform/Linux/Tap/Hyprland/HyprlandBind.h"
#include "Quillmere/Platform/Linux/Tap/ReservedKeys.h"

#include <QObject>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace quillmere {

/// This program's binds in Hyprland, and what it tells of their keys. All are
/// taken back at the end, and at the start those that were left by a program
/// that was killed: two binds of the same keys would both be in effect. Main
/// thread only.
class HyprlandKeyBinds final : public QObject {
    Q_OBJECT
public:
    /// Null when no Hyprland that can be given binds listens in this folder. Waits
    /// some seconds for the first answer, since a session that is starting has
    /// much to do.
    static std::unique_ptr<HyprlandKeyBinds> create(const std::string& folder);
    /// Takes back what is set; waits for that, but not long.
    ~HyprlandKeyBinds() override;

    /// Replaces what is set; false when Hyprland has not said in time that it has
    /// done so: to be tried again.
    bool set(const std::vector<HyprlandBind>& wanted);

    /// Whether Hyprland would not have a bind that is wanted.
    bool isRefused() const;

    /// The combinations that the user's own binds have; absent when Hyprland does
    /// not tell.
    std::optional<ReservedKeys> reserved();

    /// The same of the Hyprland in this folder, with nothing bound; absent also
    /// where there is none.
    static std::optional<ReservedKeys> reservedAt(const std::string& folder);

signals:
    /// A key of this bind went down, and Hyprland has swallowed it.
    void pressed(const HyprlandBind& bind);
    /// Hyprland has read its configuration anew, or it is another one: nothing is
    /// set any more.
    void forgotten();

private:
    using Clock = HyprlandRequests::Clock;
    /// How it is told of binds, which no version's number says.
    enum class Language { unknown, keywords, lua };

    explicit HyprlandKeyBinds(const std::string& folder) : folder_(folder), requests_(folder) {}
    bool open();
    bool clear(Clock::time_point deadline);
    bool clearKeywords(Clock::time_point deadline);
    bool apply(const std::vector<HyprlandBind>& wanted, Clock::time_point deadline);
    bool bind(const HyprlandBind& bind, Clock::time_point deadline);
    bool unbind(const HyprlandBind& bind, Clock::time_point deadline);
    void takeEvents();

    std::string folder_;
    HyprlandRequests requests_;
    std::unique_ptr<HyprlandEvents> events_;
    Language language_ = Language::unknown;
    bool isKnown_ = false;  ///< what is bound is `set_`, and nothing else of this program
    std::vector<HyprlandBind> set_;
    std::vector<HyprlandBind> refused_;
};

}  // namespace quillmere
