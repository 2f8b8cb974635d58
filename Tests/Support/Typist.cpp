#include "Tests/Support/Typist.h"

#include "Tests/Support/SupportError.h"

#include <X11/Xlib.h>
#include <X11/extensions/XTest.h>

#include <ranges>

namespace quillmere::support {

Strokes& Strokes::press(Key key) {
    movements_.push_back({key, true});
    return *this;
}

Strokes& Strokes::release(Key key) {
    movements_.push_back({key, false});
    return *this;
}

Strokes& Strokes::tap(Key key) {
    return press(key).release(key);
}

Strokes& Strokes::chord(std::span<const Key> modifiers, Key key) {
    for (const Key modifier : modifiers)
        press(modifier);
    tap(key);
    for (const Key modifier : modifiers | std::views::reverse)
        release(modifier);
    return *this;
}

Typist::Typist(const std::string& display) : connection_(display) {
    int ignored = 0;
    if (XTestQueryExtension(connection_.display(), &ignored, &ignored, &ignored, &ignored) == 0)
        throw SupportError("the X server has no XTEST");
}

void Typist::play(const Strokes& strokes) {
    for (const Strokes::Movement& movement : strokes.movements())
        XTestFakeKeyEvent(connection_.display(), movement.key, movement.isPress ? True : False, CurrentTime);
    XFlush(connection_.display());
}

void Typist::playByHand(const Strokes& strokes) {
    constexpr unsigned long pause = 30;  // milliseconds, which the server waits
    for (const Strokes::Movement& movement : strokes.movements())
        XTestFakeKeyEvent(connection_.display(), movement.key, movement.isPress ? True : False, pause);
    connection_.synchronize();
}

void Typist::movePointer(QPoint to) {
    XTestFakeMotionEvent(connection_.display(), DefaultScreen(connection_.display()), to.x(), to.y(), CurrentTime);
    connection_.synchronize();
}

void Typist::click() {
    pressButton();
    releaseButton();
}

void Typist::pressButton() {
    XTestFakeButtonEvent(connection_.display(), Button1, True, CurrentTime);
    connection_.synchronize();
}

void Typist::releaseButton() {
    XTestFakeButtonEvent(connection_.display(), Button1, False, CurrentTime);
    connection_.synchronize();
}

}  // namespace quillmere::support
