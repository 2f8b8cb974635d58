#pragma once

#include "Quillmere/Platform/Workspace.h"

#include <QDialog>
#include <QPointer>

#include <string>

namespace quillmere {

/// The answer to a check that the user asked for, when there is nothing to
/// offer. Main thread only.
class UpdateAlert {
public:
    /// `workspace` must outlive this.
    explicit UpdateAlert(Workspace& workspace) : workspace_(workspace) {}
    ~UpdateAlert();
    UpdateAlert(const UpdateAlert&) = delete;
    UpdateAlert& operator=(const UpdateAlert&) = delete;

    /// Shows an alert in front of everything, which keeps the program's other
    /// windows from being used until it is answered. Returns at once.
    void show(const std::string& message, const std::string& informativeText);

    /// The alert that is shown; null when there is none.
    QDialog* dialog() const { return dialog_; }

private:
    Workspace& workspace_;
    QPointer<QDialog> dialog_;
};

}  // namespace quillmere
