#pragma once

#include "QuillmereCore/UpdateOutcome.h"

#include <QWidget>

#include <functional>

class QVBoxLayout;

namespace quillmere {

class PaletteScrollArea;

/// The window's title and the view's first line.
QString updateTitle(const AppVersion& version);

/// The content of the update window: what is offered, and what to do about it.
/// 420 points wide and as high as the offer needs.
///
/// A feed is shown as it is, but not without bounds: of a version beyond 100
/// characters, a note beyond 4,000 and a list beyond 500 notes only the
/// beginning is shown, ending in an ellipsis.
class UpdateView : public QWidget {
public:
    struct Actions {
        std::function<void()> onDownload;
        std::function<void()> onSkip;
        std::function<void()> onLater;
    };

    UpdateView(const UpdateOffer& offer, Actions actions, QWidget* parent = nullptr);

    /// Settles the size. Where the whole would be higher than `maximumHeight`
    /// points, the notes scroll.
    void fit(int maximumHeight);

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void addNotes(const std::vector<std::string>& notes);
    void addButtons(Actions actions);

    QVBoxLayout* column_;
    PaletteScrollArea* notes_ = nullptr;  ///< null without notes
};

}  // namespace quillmere
