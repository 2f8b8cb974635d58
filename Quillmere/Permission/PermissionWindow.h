#pragma once

#include "Quillmere/Permission/PermissionModel.h"
#include "Quillmere/Platform/MainQueue.h"
#include "Quillmere/Platform/PermissionRequest.h"
#include "Quillmere/Platform/Workspace.h"

#include <QObject>
#include <QPointer>
#include <QWidget>

#include <memory>

namespace quillmere {

/// Asks the user for the permission that the keyboard tap needs, and says when
/// it has come. Main thread only.
///
/// | state            | show()         | granted()                    | close()  | close button |
/// |------------------|----------------|------------------------------|----------|--------------|
/// | no window        | shown, waiting | -                            | -        |              |
/// | shown            | shown anew     | shown, ready, closes in 3 s  | no window| hidden       |
/// | hidden           | shown anew     | shown, ready, closes in 3 s  | no window|              |
class PermissionWindow : public QObject {
    Q_OBJECT
public:
    /// How long the good news stays, in seconds.
    static constexpr double readyDuration = 3.0;

    /// The seams must outlive this.
    PermissionWindow(std::shared_ptr<PermissionModel> model, MainQueue& queue, Workspace& workspace,
                     PermissionRequest& request);
    ~PermissionWindow() override;

    void show();
    void granted();
    void close();

    /// The window, hidden or not; null when there is none.
    QWidget* window() const { return window_; }

private:
    std::shared_ptr<PermissionModel> model_;
    MainQueue& queue_;
    Workspace& workspace_;
    PermissionRequest& request_;
    QPointer<QWidget> window_;
    MainQueue::JobHandle closeWork_;
};

}  // namespace quillmere
