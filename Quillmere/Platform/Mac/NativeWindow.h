#pragma once

class QWidget;

@class NSWindow;

namespace quillmere {

/// The system's own window behind a window of Qt's, which is made for it if it
/// is not there yet. Owned by Qt.
NSWindow* nativeWindow(const QWidget& window);

}  // namespace quillmere
