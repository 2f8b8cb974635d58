#include "Quillmere/Platform/Mac/NativeWindow.h"

#include <AppKit/AppKit.h>

#include <QWidget>

namespace quillmere {

NSWindow* nativeWindow(const QWidget& window) {
    // Qt's identifier of a window is its view.
    return reinterpret_cast<NSView*>(window.winId()).window;
}

}  // namespace quillmere
