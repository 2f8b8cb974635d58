#include "Quillmere/Platform/Linux/Sources/Sway/SwayInputSources.h"
#include "Tests/App/FakeSway.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <QCoreApplication>

#include <optional>
#include <string>

// What the real compositor does not do at a test's wish; the rest is tried on
// that one.
namespace quillmere {

namespace {

constexpr const char* board = "1:1:Board";
constexpr const char* external = "2:2:External";

/// A keyboard with the layouts us and ua, with the second or the first in use.
QByteArray keyboard(const char* identifier, int active) {
    return QByteArray(R"({"type": "keyboard", "identifier": ")") + identifier
           + R"json(", "xkb_layout_names": ["English (US)", "Ukrainian"], "xkb_active_layout_index": )json"
           + QByteArray::number(active) + R"(, "xkb_active_layout_name": ")"
           + (active == 0 ? "English (US)" : "Ukrainian") + R"("})";
}

QByteArray event(const char* change, const QByteArray& keyboard) {
    return QByteArray(R"({"change": ")") + change + R"(", "input": )" + keyboard + "}";
}

class FakeSwayTest : public testing::Test {
protected:
    FakeSwayTest() { qputenv("SWAYSOCK", (folder.path() / "sway").c_str()); }
    ~FakeSwayTest() override { qunsetenv("SWAYSOCK"); }

    void start() {
        QCoreApplication::processEvents();
        sources = SwayInputSources::create();
        ASSERT_NE(sources, nullptr);
    }
    void tell(const std::vector<QByteArray>& keyboards) {
        sway.setInputs("[" + QByteArrayList(keyboards.begin(), keyboards.end()).join(", ") + "]");
    }
    // Each in a turn of the event loop of its own, since one turn has the time
    // of one switch only.
    std::optional<std::string> currentID() const {
        QCoreApplication::processEvents();
        return sources->currentID();
    }
    int select(const char* id) const {
        QCoreApplication::processEvents();
        return sources->select({.id = id});
    }

    support::TemporaryFolder folder;
    FakeSway sway{folder.path() / "sway"};
    std::unique_ptr<SwayInputSources> sources;
};

TEST_F(FakeSwayTest, OfKeyboardsThatDifferTheOneSwitchedLastSaysWhatIsCurrent) {
    tell({keyboard(external, 0), keyboard(board, 1)});
    start();
    EXPECT_EQ(currentID(), "xkb:ua");
    sway.addEvent(event("xkb_layout", keyboard(external, 0)));
    EXPECT_EQ(currentID(), "xkb:us");
    sway.addEvent(event("xkb_layout", keyboard(board, 1)));
    EXPECT_EQ(currentID(), "xkb:ua");
    sway.addEvent(event("xkb_layout", keyboard("0:0:virtual_keyboard", 0)));
    EXPECT_EQ(currentID(), "xkb:ua") << "a program's keyboard is not typed on";
}

TEST_F(FakeSwayTest, AKeyboardThatReplacesAnotherUnseenTakesUpTheLayoutInUse) {
    tell({keyboard(board, 1)});
    start();
    sway.addEvent(event("removed", keyboard(board, 1)));
    sway.addEvent(event("added", keyboard(board, 0)));
    tell({keyboard(board, 0), keyboard(external, 1)});
    EXPECT_EQ(currentID(), "xkb:ua");
    ASSERT_EQ(sway.commands().size(), 1U);
    EXPECT_TRUE(sway.commands()[0].starts_with("input \"1:1:Board\" xkb_switch_layout 1;")) << sway.commands()[0];
}

TEST_F(FakeSwayTest, AKeyboardThatGetsItsLayoutsOnceItIsThereTakesUpTheOneInUse) {
    tell({keyboard(board, 1)});
    start();
    tell({keyboard(board, 1), keyboard(board, 0)});
    sway.addEvent(event("xkb_keymap", keyboard(board, 0)));
    EXPECT_EQ(currentID(), "xkb:ua");
    ASSERT_EQ(sway.commands().size(), 1U);
    EXPECT_TRUE(sway.commands()[0].starts_with("input \"1:1:Board\" xkb_switch_layout 1;")) << sway.commands()[0];
}

TEST_F(FakeSwayTest, ASuccessThatDidNothingIsNoSwitch) {
    tell({keyboard(board, 0)});
    start();
    EXPECT_NE(select("xkb:ua"), 0);
    EXPECT_EQ(sway.commands().front(), "input type:keyboard xkb_switch_layout 1;");
    tell({keyboard(board, 1)});
    EXPECT_EQ(select("xkb:ua"), 0);
}

TEST_F(FakeSwayTest, AnAnswerInPiecesIsPutTogether) {
    tell({keyboard(board, 1), keyboard(external, 1)});
    sway.setPieces(200);
    start();
    for (int i = 0; i < 20; ++i) {
        sway.addEvent(event("xkb_layout", keyboard(board, 1)));
        EXPECT_EQ(currentID(), "xkb:ua");
    }
}

TEST_F(FakeSwayTest, WhatIsNoAnswerIsNoneAndTheNextCallBeginsAnew) {
    tell({keyboard(board, 1)});
    start();
    const std::string tooLong = FakeSway::message(100, "").replace(6, 4, "\xff\xff\xff\xff");
    for (const std::string& bytes : {std::string(100, 'x'), tooLong, std::string("i3-ipc")}) {
        sway.setWireAnswer(bytes);
        EXPECT_EQ(currentID(), std::nullopt);
        sway.setWireAnswer({});
        sway.hangUp();
        EXPECT_EQ(currentID(), "xkb:ua");
    }
    for (const char* payload : {"", "{}", "[", "\xff", "[[[[[[", "null"}) {
        sway.setWireAnswer(FakeSway::message(100, payload));
        EXPECT_EQ(currentID(), std::nullopt) << payload;
    }
    sway.setWireAnswer({});
    EXPECT_EQ(currentID(), "xkb:ua");
}

TEST_F(FakeSwayTest, AConnectionThatTheCompositorClosedIsMadeAgain) {
    tell({keyboard(board, 1)});
    start();
    sway.hangUp();
    EXPECT_EQ(currentID(), "xkb:ua");
    EXPECT_EQ(sway.connectionCount(), 2U);
    // Its events are listened to as those of the first.
    tell({keyboard(external, 0), keyboard(board, 1)});
    sway.addEvent(event("xkb_layout", keyboard(external, 0)));
    EXPECT_EQ(currentID(), "xkb:us");
}

TEST_F(FakeSwayTest, EventsOfAnyKindDoNoHarm) {
    tell({keyboard(board, 1)});
    start();
    for (const char* text :
         {"", "null", "[]", "{}", R"({"change": 1})", R"({"change": "xkb_layout", "input": []})",
          R"({"change": "added"})", R"({"change": "xkb_layout", "input": {"identifier": "1:1:Board"}})"})
        sway.addEvent(text);
    EXPECT_EQ(currentID(), "xkb:ua");
}

}  // namespace

}  // namespace quillmere
