#include "Quillmere/Platform/Mac/NativePlatePanel.h"

#include "Quillmere/Platform/Mac/Owned.h"
#include "Quillmere/Platform/Mac/PlateBacking.h"

#include <AppKit/AppKit.h>

#include <QWidget>

namespace quillmere {

namespace {

NSPanel* makePanel() {
    NSPanel* const panel = [[NSPanel alloc] initWithContentRect:NSMakeRect(0, 0, 200, 60)
                                                      styleMask:NSWindowStyleMaskNonactivatingPanel
                                                        backing:NSBackingStoreBuffered
                                                          defer:YES];
    panel.level = NSPopUpMenuWindowLevel;
    panel.opaque = NO;
    panel.backgroundColor = NSColor.clearColor;
    panel.hasShadow = YES;
    panel.ignoresMouseEvents = YES;
    panel.collectionBehavior = NSWindowCollectionBehaviorCanJoinAllSpaces | NSWindowCollectionBehaviorStationary
                               | NSWindowCollectionBehaviorFullScreenAuxiliary;
    // A panel hides with its application unless told otherwise, and this one is
    // hardly ever the active one.
    panel.hidesOnDeactivate = NO;
    // Its owner releases it.
    panel.releasedWhenClosed = NO;
    return panel;
}

/// The one with the focus; while no window has it, the one with the menu bar.
NSScreen* plateScreen() {
    NSScreen* const main = NSScreen.mainScreen;
    return main ? main : NSScreen.screens.firstObject;
}

/// From y downwards to y upwards, and back: both count from the screen with the
/// menu bar, which is the first, whichever screen the rectangle is on.
double flipped(double y, double height) {
    return NSScreen.screens.firstObject.frame.size.height - y - height;
}

void animateAlpha(NSPanel* panel, double alpha, double seconds, const std::function<void()>& completion) {
    const auto whenDone = completion;
    [NSAnimationContext
        runAnimationGroup:^(NSAnimationContext* context) {
          context.duration = seconds;
          panel.animator.alphaValue = alpha;
        }
        completionHandler:^{
          if (whenDone) whenDone();
        }];
}

}  // namespace

struct NativePlatePanel::Native {
    Owned<NSPanel> panel{makePanel()};
};

NativePlatePanel::NativePlatePanel() : native_(std::make_unique<Native>()) {}

NativePlatePanel::~NativePlatePanel() {
    orderOut();
}

void NativePlatePanel::setContent(QWidget* content, const PlateMaterial& material) {
    content_.reset(content);
    NSScreen* const screen = plateScreen();
    const auto view = makePlateBacking(*content, material, screen ? screen.backingScaleFactor : 1);
    native_->panel.get().contentView = view.get();
}

void NativePlatePanel::setFrame(const QRectF& frame) {
    const NSRect rect = NSMakeRect(frame.x(), flipped(frame.y(), frame.height()), frame.width(), frame.height());
    [native_->panel.get() setFrame:rect display:YES];
}

QRectF NativePlatePanel::visibleFrame() const {
    NSScreen* const screen = plateScreen();
    if (!screen) return {};
    const NSRect frame = screen.visibleFrame;
    return {frame.origin.x, flipped(frame.origin.y, frame.size.height), frame.size.width, frame.size.height};
}

void NativePlatePanel::setAlpha(double alpha) {
    // As an animation without a duration it takes over from one that runs.
    animateAlpha(native_->panel.get(), alpha, 0, nullptr);
}

double NativePlatePanel::alpha() const {
    return native_->panel.get().alphaValue;
}

void NativePlatePanel::fade(double alpha, double seconds, std::function<void()> completion) {
    animateAlpha(native_->panel.get(), alpha, seconds, completion);
}

void NativePlatePanel::orderFront() {
    [native_->panel.get() orderFrontRegardless];
    // The content has another shape than the one before.
    [native_->panel.get() invalidateShadow];
}

void NativePlatePanel::orderOut() {
    [native_->panel.get() orderOut:nil];
}

}  // namespace quillmere
