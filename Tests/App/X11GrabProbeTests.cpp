#include "Quillmere/Platform/Linux/Tap/X11/X11GrabProbe.h"

#include <gtest/gtest.h>

#include <QByteArray>

namespace quillmere {

namespace {

TEST(X11GrabProbe, WithoutAnswerFromAServerNothingIsTakenForFree) {
    const QByteArray former = qgetenv("DISPLAY");
    qputenv("DISPLAY", ":999");
    EXPECT_TRUE(freeCombinations({{.keyCode = 65, .modifiers = 4}}).empty());
    former.isNull() ? qunsetenv("DISPLAY") : qputenv("DISPLAY", former);
}

}  // namespace

}  // namespace quillmere
