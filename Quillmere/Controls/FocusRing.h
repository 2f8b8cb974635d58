#pragma once

#include <Qt>

class QWidget;

/// The ring around the control that the keyboard has moved the focus to. There
/// is one, since one control has the focus. It lies outside the control, so
/// that no control's own size has to provide for it. Main thread only.
namespace quillmere::FocusRing {

/// `control` got the focus for `reason`; `radius` is its corner radius in
/// points. A focus that the user did not move with the keyboard shows no ring,
/// except where the control had one before its window lost the focus.
void focusIn(QWidget& control, Qt::FocusReason reason, double radius);

/// `control` lost the focus for `reason`.
void focusOut(QWidget& control, Qt::FocusReason reason);

}  // namespace quillmere::FocusRing
