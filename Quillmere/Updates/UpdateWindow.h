#pragma once

#include "Quillmere/Platform/Workspace.h"
#include "QuillmereCore/UpdateOutcome.h"
#include "QuillmereCore/UpdateStore.h"

#include <QObject>
#include <QPointer>
#include <QWidget>

namespace quillmere {

/// Offers a newer version to the user. Main thread only.
class UpdateWindow : public QObject {
    Q_OBJECT
public:
    /// Both must outlive this.
    UpdateWindow(UpdateStore& store, Workspace& workspace);
    ~UpdateWindow() override;

    /// Shows an offer in front of everything, in place of one that is already
    /// shown. Download opens the user's browser, Skip stores the version so
    /// that it is not offered again by itself; all ways out close the window.
    void show(const UpdateOffer& offer);

    /// The window that is shown; null when there is none.
    QWidget* window() const { return window_; }

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void close();
    void forget();

    UpdateStore& store_;
    Workspace& workspace_;
    QPointer<QWidget> window_;
};

}  // namespace quillmere
