#pragma once

#include "Quillmere/Controls/Window.h"
#include "Quillmere/Platform/Workspace.h"

#include <QPointer>

#include <string>

namespace quillmere {

/// The answer to a check that the user asked for, when there is nothing to
/// offer. Main thread only.
class UpdateAlert {
public:
    /// `workspace` must outlive this.
    explicit UpdateAlert(Workspace& workspace);
    ~UpdateAlert();
    UpdateAlert(const UpdateAlert&) = delete;
    UpdateAlert& operator=(const UpdateAlert&) = delete;

    /// Shows an alert in front of everything, which keeps the program's other
    /// windows from being used until it is answered. Returns at once.
    void show(const std::string& message, const std::string& informativeText);

    /// The alert that is shown; null when there is none.
    QWidget* window() const { return window_; }

private:
    Workspace& workspace_;
    QPointer<Window> window_;
};

}  // namespace quillmere
