// In place of the layer's own, which asks Qt for its window's view: here Qt has
// no such views.
#include "Quillmere/Platform/Mac/NativeWindow.h"
#include "Tests/Mac/Doubles/AppKit.h"

#include <QWidget>

namespace {

/// A window of the system's for as long as Qt's lives.
class PlayedWindow : public QObject {
public:
    explicit PlayedWindow(QWidget* owner)
        : QObject(owner),
          native([[NSWindow alloc] initWithContentRect:NSMakeRect(0, 0, 1, 1)
                                             styleMask:0
                                               backing:NSBackingStoreBuffered
                                                 defer:YES]) {}
    ~PlayedWindow() override { [native release]; }
    PlayedWindow(const PlayedWindow&) = delete;
    PlayedWindow& operator=(const PlayedWindow&) = delete;

    NSWindow* native;
};

}  // namespace

NSWindow* appkit::windowOf(const QWidget& window) {
    for (QObject* const child : window.children())
        if (const auto* const played = dynamic_cast<PlayedWindow*>(child)) return played->native;
    return nil;
}

NSWindow* quillmere::nativeWindow(const QWidget& window) {
    if (NSWindow* const known = appkit::windowOf(window)) return known;
    return (new PlayedWindow(const_cast<QWidget*>(&window)))->native;
}
