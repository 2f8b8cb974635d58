#include "Quillmere/Platform/Mac/MacWorkspace.h"

#include "Quillmere/Platform/Mac/NativeColor.h"
#include "Quillmere/Platform/Mac/NativeWindow.h"

#include <AppKit/AppKit.h>

namespace quillmere {

void MacWorkspace::blendTitleBar(QWidget& window, const QColor& light, const QColor& dark) {
    NSWindow* const native = nativeWindow(window);
    native.titlebarAppearsTransparent = YES;
    native.backgroundColor = NativeColor::makeDynamic(light, dark);
}

void MacWorkspace::bringToFront(QWidget& window) {
    // Qt activates the window only, and this program is nearly always one among
    // those in the background.
    [NSApplication.sharedApplication activateIgnoringOtherApps:YES];
    QtWorkspace::bringToFront(window);
}

}  // namespace quillmere
