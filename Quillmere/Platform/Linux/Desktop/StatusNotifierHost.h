#pragma once

#include "Quillmere/Platform/Linux/X11/QtX11.h"
#include "Quillmere/Platform/TrayHost.h"

#include <memory>
#include <optional>

class QDBusServiceWatcher;

namespace quillmere {

/// Notices a tray of either kind: a host registered with the StatusNotifier
/// watcher on the session bus, or the owner of X11's tray selection. Qt decides
/// between the two once, when the first icon is made, and for good, so this
/// asks both by itself. Never polls. Main thread only.
class StatusNotifierHost : public TrayHost {
    Q_OBJECT
public:
    StatusNotifierHost();
    ~StatusNotifierHost() override;

    bool isAvailable() const override { return isAvailable_; }
    /// True on the desktops whose panels are known to: no panel says so.
    bool tintsSymbolicIcons() const override;
    bool isMenuBar() const override { return false; }

private:
    class SelectionFilter;

    Q_SLOT void becomeAvailable();

    void watchBus();
    void askWatcher();
    void watchSelection();

    bool isAvailable_ = false;
    QDBusServiceWatcher* watcher_ = nullptr;  ///< owned by this
    std::optional<QtX11> x11_;
    std::unique_ptr<SelectionFilter> selectionFilter_;
};

}  // namespace quillmere
