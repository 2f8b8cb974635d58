#pragma once

#include "Quillmere/Controls/Window.h"
#include "Quillmere/Platform/Workspace.h"
#include "QuillmereCore/UpdateOutcome.h"
#include "QuillmereCore/UpdateStore.h"

#include <QPointer>

namespace quillmere {

/// Offers a newer version to the user. Main thread only.
class UpdateWindow {
public:
    /// Both must outlive this.
    UpdateWindow(UpdateStore& store, Workspace& workspace);
    ~UpdateWindow();
    UpdateWindow(const UpdateWindow&) = delete;
    UpdateWindow& operator=(const UpdateWindow&) = delete;

    /// Shows an offer in front of everything, in place of one that is already
    /// shown. Download opens the user's browser, with a beep where there is
    /// none, Skip stores the version so that it is not offered again by itself;
    /// all ways out close the window.
    void show(const UpdateOffer& offer);

    /// The window that is shown; null when there is none.
    QWidget* window() const { return window_; }

private:
    void close();
    /// Forgets the window, whoever closes it.
    void windowWillClose();

    UpdateStore& store_;
    Workspace& workspace_;
    QPointer<Window> window_;
};

}  // namespace quillmere
