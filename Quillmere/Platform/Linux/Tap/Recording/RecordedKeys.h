#pragma once

#include "Quillmere/Platform/Linux/Tap/Recording/FocusedKeys.h"
#include "Quillmere/Platform/Linux/Tap/Recording/KeyCatcher.h"

#include <QObject>

namespace quillmere {

/// The keys to record a shortcut from, where no tap sees every key: those that
/// are typed into the program's own windows, and on Wayland, where the
/// compositor gives them, those that it would keep for itself. Main thread only.
class RecordedKeys final : public QObject {
public:
    /// Tells from now on. `callback` must outlive this, which may be deleted
    /// (later) while it runs.
    explicit RecordedKeys(const EventTap::Callback& callback) : focused_(callback), caught_(callback) {}

private:
    FocusedKeys focused_;
    KeyCatcher caught_;
};

}  // namespace quillmere
