#pragma once

#include "Quillmere/Settings/GroupBinding.h"

#include <QWidget>

namespace quillmere {

class ShortcutChip;
class MessageLabel;

/// Sets a group's shortcut by having the user press it. The window gets no
/// keys for that: it never sees Fn alone or what the desktop keeps for itself,
/// so the presses come from the keyboard tap. Main thread only.
class ShortcutRecorder : public QWidget {
public:
    explicit ShortcutRecorder(const GroupBinding& binding, QWidget* parent = nullptr);
    ~ShortcutRecorder() override;

    /// Shows the group as it is now. `number`, from 1, is the one by which
    /// assistive programs name it.
    void setNumber(int number);

protected:
    void hideEvent(QHideEvent* event) override;

private:
    void refresh();
    /// Whether the next key press goes to this recorder.
    bool isRecording() const;
    /// One key press while recording: Delete removes the shortcut, Escape
    /// leaves it, anything else becomes it if it is valid and free.
    void handle(std::int64_t keyCode, Modifiers modifiers);
    void toggle();
    void start();
    void stop();
    bool isUsedByAnotherGroup(const Shortcut& shortcut) const;
    QString title() const;
    /// The shortcut in words; empty while none is shown.
    QString spelled() const;

    GroupBinding binding_;
    int number_ = 0;
    ShortcutChip* button_;
    MessageLabel* message_;  ///< why the last press was rejected
};

}  // namespace quillmere
