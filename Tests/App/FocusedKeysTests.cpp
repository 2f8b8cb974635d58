#include "Quillmere/Platform/Linux/Tap/Recording/FocusedKeys.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QKeyEvent>
#include <QWidget>

#include <memory>
#include <vector>

namespace quillmere {

namespace {

/// A widget that counts the keys that get to it.
class Field : public QWidget {
public:
    int presses = 0;
    int releases = 0;

protected:
    void keyPressEvent(QKeyEvent*) override { ++presses; }
    void keyReleaseEvent(QKeyEvent*) override { ++releases; }
};

class FocusedKeysTest : public testing::Test {
protected:
    // X keycodes: the kernel's numbers and 8.
    static constexpr unsigned int spaceBar = 57 + 8;
    static constexpr unsigned int leftControl = 29 + 8;

    /// True when the event was taken.
    bool send(QEvent::Type type, unsigned int code, Qt::KeyboardModifiers modifiers = {}, bool isRepeat = false) {
        QKeyEvent event(type, Qt::Key_unknown, modifiers, code, 0, 0, {}, isRepeat);
        event.ignore();
        QCoreApplication::sendEvent(&field, &event);
        return event.isAccepted();
    }

    Field field;
    std::vector<KeyEventFields> told;
    InterceptDecision decision = InterceptDecision::swallow;
    EventTap::Callback callback = [this](const KeyEventFields& event) {
        told.push_back(event);
        return decision;
    };
    std::unique_ptr<FocusedKeys> keys = std::make_unique<FocusedKeys>(callback);
};

TEST_F(FocusedKeysTest, APressIsToldByItsPlaceAndKeptFromTheWindow) {
    send(QEvent::KeyPress, spaceBar, Qt::ControlModifier | Qt::MetaModifier);
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told[0].type, KeyEventType::keyDown);
    EXPECT_EQ(told[0].keyCode, Shortcut::space);
    EXPECT_EQ(told[0].flags, KeyEventFlags::control | KeyEventFlags::command);
    EXPECT_EQ(told[0].autorepeat, 0);
    send(QEvent::KeyPress, spaceBar, Qt::ShiftModifier | Qt::AltModifier, true);
    EXPECT_EQ(told[1].flags, KeyEventFlags::shift | KeyEventFlags::option);
    EXPECT_NE(told[1].autorepeat, 0);
    send(QEvent::KeyRelease, spaceBar);
    EXPECT_EQ(told[2].type, KeyEventType::keyUp);
    EXPECT_EQ(field.presses + field.releases, 0);
}

TEST_F(FocusedKeysTest, NoMenuTakesTheKeyFirst) {
    EXPECT_TRUE(send(QEvent::ShortcutOverride, spaceBar, Qt::ControlModifier));
    EXPECT_TRUE(told.empty()) << "the press itself follows";
}

TEST_F(FocusedKeysTest, WhatIsNotSwallowedGetsToTheWindow) {
    decision = InterceptDecision::pass;
    send(QEvent::KeyRelease, spaceBar);
    EXPECT_EQ(field.releases, 1);
}

TEST_F(FocusedKeysTest, AModifierAloneIsLeftAlone) {
    send(QEvent::KeyPress, leftControl, Qt::ControlModifier);
    // Keys that a program makes up have no number.
    send(QEvent::KeyPress, 0);
    EXPECT_TRUE(told.empty());
    EXPECT_EQ(field.presses, 2);
}

TEST_F(FocusedKeysTest, AtItsEndTheWindowHasItsKeysAgain) {
    keys.reset();
    send(QEvent::KeyPress, spaceBar);
    EXPECT_TRUE(told.empty());
    EXPECT_EQ(field.presses, 1);
}

}  // namespace

}  // namespace quillmere
