#pragma once

#include <QFocusFrame>
#include <QPointer>

namespace quillmere {

/// The ring around the control that the keyboard has moved the focus to. A
/// window has one, since one of its controls has the focus. It lies outside the
/// control, so that no control's own size has to provide for it. Main thread
/// only.
class FocusRing : public QFocusFrame {
    Q_OBJECT
public:
    /// `control` got the focus for `reason`; `radius` is its corner radius in
    /// points. A focus that the user did not move with the keyboard shows no
    /// ring, except where the control had one before its window lost the focus.
    static void focusIn(QWidget& control, Qt::FocusReason reason, double radius);

    /// `control` lost the focus for `reason`.
    static void focusOut(QWidget& control, Qt::FocusReason reason);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    explicit FocusRing(QWidget* window);
    /// The ring of the control's window; null while it has none.
    static FocusRing* find(const QWidget& control);

    QPointer<QWidget> control_;  ///< also while its window has lost the focus
    double radius_ = 0;
};

}  // namespace quillmere
