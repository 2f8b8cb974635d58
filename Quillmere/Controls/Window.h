#pragma once

#include <QWidget>

#include <functional>

namespace quillmere {

/// What every window of the program is: titled and closable, with the
/// program's icon, on the palette's colour, in the middle of the screen. No
/// control has the focus when it opens. Main thread only.
class Window : public QWidget {
public:
    enum class Kind {
        resizable,  ///< also to be resized, not below its content's smallest size
        fixed,      ///< always of its content's size
        alert,      ///< the same, as a dialog
    };

    /// Takes `content`, whose smallest size must be set.
    Window(Kind kind, const QString& title, QWidget* content);

    /// Told each time the window closes, in whatever way; may be empty.
    std::function<void()> windowWillClose;

protected:
    void closeEvent(QCloseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    /// Moves the focus in reading order, which is that of the layouts. Qt's own
    /// order is that of creation, and keeping that in step costs a walk through
    /// it for each new control.
    bool focusNextPrevChild(bool next) override;
};

}  // namespace quillmere
