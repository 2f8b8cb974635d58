#pragma once

#include <AppKit/AppKit.h>

#include <array>
#include <optional>
#include <string>
#include <vector>

class QWidget;

/// An AppKit that shows nothing and remembers all that it is told.
namespace appkit {

struct Screen {
    NSRect frame{{0, 0}, {1440, 900}};
    NSRect visibleFrame{{0, 70}, {1440, 805}};  ///< above a dock, below the menu bar
    CGFloat scale = 2;
};

extern std::vector<Screen> screens;            ///< the one with the menu bar first
extern std::optional<std::size_t> mainScreen;  ///< the one with the focus
/// Makes the application dark or light, and tells those who observe that.
void setDark(bool isDark);

/// One that is like neither the light nor the dark one.
NSAppearance* unknownAppearance();

/// The windows that live, in the order of their making.
const std::vector<NSWindow*>& windows();
/// What was done to windows, in order.
std::vector<std::string>& calls();
/// Red, green, blue and alpha, 0 to 1, as the colour is drawn.
std::array<double, 4> resolved(NSColor* color, bool isDark);

/// The native window that is played for one of Qt's.
NSWindow* windowOf(const QWidget& window);

/// Animations that have a duration and have not been finished.
std::size_t runningAnimations();
/// Of the one that began last.
double lastDuration();
/// Ends the oldest of them.
void finishAnimation();

int activations();  ///< of the program, before others
std::optional<NSApplicationActivationPolicy> policy();

/// One light screen; nothing has happened. Windows stay.
void reset();

}  // namespace appkit
