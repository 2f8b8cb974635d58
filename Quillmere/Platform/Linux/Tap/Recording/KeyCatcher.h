#pragma once

#include "Quillmere/Platform/EventTap.h"
#include "Quillmere/Platform/Linux/Wayland/LayerShellSurface.h"
#include "Quillmere/Platform/Linux/Wayland/WaylandConnection.h"
#include "Quillmere/Platform/Linux/Wayland/WaylandKeyboard.h"
#include "Quillmere/Platform/Linux/Wayland/WaylandPicture.h"

#include <QTimer>

#include <chrono>
#include <memory>

namespace quillmere {

/// Takes the keyboard of a Wayland compositor while a shortcut is recorded, with
/// the keys that the compositor would keep for itself: by a surface of the layer
/// shell, one clear point large. The program's own window could not ask for
/// them, being one of Xwayland's. Nothing is taken where the compositor lacks
/// the means. Main thread only.
class KeyCatcher {
public:
    /// The longest that it has the keyboard: nobody else does meanwhile.
    static constexpr std::chrono::seconds longest{30};

    /// Takes it when the compositor has answered, and tells of each key from
    /// then on. `callback` must outlive this.
    explicit KeyCatcher(const EventTap::Callback& callback);
    ~KeyCatcher();
    KeyCatcher(const KeyCatcher&) = delete;
    KeyCatcher& operator=(const KeyCatcher&) = delete;

private:
    void take();
    void giveBack();
    void note(unsigned int code, bool isPress) const;

    const EventTap::Callback& callback_;
    std::unique_ptr<WaylandConnection> connection_;  ///< null without a compositor
    std::unique_ptr<WaylandKeyboard> keyboard_;
    std::unique_ptr<WaylandPicture> picture_;
    std::unique_ptr<LayerShellSurface> surface_;
    wl_proxy* inhibition_ = nullptr;
    QTimer limit_;
};

}  // namespace quillmere
