#pragma once

#include "Quillmere/Controls/Window.h"
#include "Quillmere/Permission/PermissionModel.h"
#include "Quillmere/Platform/MainQueue.h"
#include "Quillmere/Platform/PermissionRequest.h"
#include "Quillmere/Platform/Workspace.h"

#include <QObject>
#include <QPointer>

#include <memory>

namespace quillmere {

/// Asks the user for the permission that the keyboard tap needs, and says when
/// it has come. Main thread only.
class PermissionWindow : public QObject {
    Q_OBJECT
public:
    /// The seams must outlive this.
    PermissionWindow(std::shared_ptr<PermissionModel> model, MainQueue& queue, Workspace& workspace,
                     PermissionRequest& request);
    ~PermissionWindow() override;

    /// Shows a new window, which says what is missing, in place of any earlier
    /// one.
    void show();
    /// Says in the window that all is well, shows it again if the user has
    /// closed it, and closes it after three seconds. Nothing without a window.
    void granted();
    /// Closes the window for good; nothing without one.
    void close();

    /// The window; null before `show` and after `close`. The close button only
    /// hides it.
    QWidget* window() const { return window_; }

private:
    std::shared_ptr<PermissionModel> model_;
    MainQueue& queue_;
    Workspace& workspace_;
    PermissionRequest& request_;
    QPointer<Window> window_;
    MainQueue::JobHandle closeWork_;
};

}  // namespace quillmere
