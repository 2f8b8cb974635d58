#include "Quillmere/Controls/MessageLabel.h"
#include "Quillmere/Settings/SpelledShortcut.h"
#include "Tests/App/SettingsFixture.h"

#include <QAccessible>

namespace quillmere {
namespace {

constexpr std::int64_t keyA = 0;
constexpr std::int64_t keyDelete = 51;
constexpr std::int64_t keyEscape = 53;
constexpr Modifiers controlOption = Modifiers::control | Modifiers::option;

class ShortcutRecorderTest : public SettingsTest {
protected:
    QString title(std::size_t index) const { return recorder(index).text(); }
    QString message(std::size_t index) const {
        const auto messages = shown<MessageLabel>(card(index));
        return messages.empty() ? QString() : messages.front()->text();
    }
    static QString spelled(const Shortcut& shortcut) { return QString::fromStdString(spelledShortcut(shortcut)); }
    void startRecording(std::size_t index) const { click(recorder(index)); }
};

TEST_F(ShortcutRecorderTest, TheTitleIsTheShortcutOrAsksForOne) {
    open({group({}), group({}, controlOptionK), group({}, Shortcut::fn)});
    EXPECT_EQ(title(0), "Set shortcut");
    EXPECT_EQ(title(1), "⌃⌥K");
    EXPECT_EQ(title(2), "🌐 Fn");
}

TEST_F(ShortcutRecorderTest, APressOfTheButtonStartsRecordingAndWritesNothing) {
    open({group({}, controlOptionK)});
    startRecording(0);
    EXPECT_EQ(title(0), "Press shortcut…");
    EXPECT_EQ(model->recordingGroup(), groups()[0].id);
    EXPECT_TRUE(model->recorder());
    EXPECT_EQ(writes(), 0);
}

TEST_F(ShortcutRecorderTest, AnotherPressOfTheButtonStopsAndKeepsTheShortcut) {
    open({group({}, controlOptionK)});
    startRecording(0);
    click(recorder(0));
    EXPECT_EQ(title(0), "⌃⌥K");
    EXPECT_FALSE(model->recorder());
    EXPECT_EQ(writes(), 0);
}

TEST_F(ShortcutRecorderTest, AKeyWithoutCommandOptionOrControlIsRejectedAndRecordingGoesOn) {
    for (const Modifiers modifiers : {Modifiers(), Modifiers::shift}) {
        open({group({})});
        startRecording(0);
        tapPress(keyA, modifiers);
        EXPECT_EQ(message(0), "Add ⌘, ⌥ or ⌃, or press Fn alone");
        EXPECT_EQ(title(0), "Press shortcut…");
        EXPECT_TRUE(model->recorder());
        EXPECT_EQ(writes(), 0);
    }
}

TEST_F(ShortcutRecorderTest, FnWithShiftIsRejected) {
    open({group({})});
    startRecording(0);
    tapPress(Shortcut::fnKeyCode, Modifiers::shift);
    EXPECT_EQ(message(0), "Add ⌘, ⌥ or ⌃, or press Fn alone");
}

TEST_F(ShortcutRecorderTest, ALoneFnTapIsAccepted) {
    open({group({})});
    startRecording(0);
    tapPress(Shortcut::fnKeyCode);
    EXPECT_EQ(title(0), "🌐 Fn");
    EXPECT_EQ(stored().groups[0].shortcut, Shortcut::fn);
    EXPECT_EQ(writes(), 1);
    EXPECT_FALSE(model->recorder());
}

TEST_F(ShortcutRecorderTest, AValidShortcutIsStoredWithOneWrite) {
    open({group({"a"})});
    startRecording(0);
    tapPress(controlOptionK.keyCode, controlOptionK.modifiers);
    EXPECT_EQ(title(0), "⌃⌥K");
    EXPECT_EQ(stored().groups[0].shortcut, controlOptionK);
    EXPECT_EQ(writes(), 1);
    EXPECT_EQ(model->recordingGroup(), std::nullopt);
}

TEST_F(ShortcutRecorderTest, AShortcutOfAnotherGroupIsRejectedAlsoWhenThatGroupHasNoSources) {
    open({group({}, Shortcut{Shortcut::space, controlOption}), group({"a"})});
    startRecording(1);
    tapPress(Shortcut::space, controlOption);
    EXPECT_EQ(message(1), "Already used by another group");
    EXPECT_EQ(title(1), "Press shortcut…");
    EXPECT_EQ(writes(), 0);
}

TEST_F(ShortcutRecorderTest, AGroupsOwnShortcutIsAcceptedAgain) {
    open({group({}, Shortcut{Shortcut::space, controlOption}), group({})});
    startRecording(0);
    tapPress(Shortcut::space, controlOption);
    EXPECT_EQ(message(0), "");
    EXPECT_EQ(title(0), "⌃⌥Space");
    EXPECT_FALSE(model->recorder());
}

TEST_F(ShortcutRecorderTest, AShortcutThatDiffersInOneModifierIsAnother) {
    open({group({}, Shortcut{Shortcut::space, controlOption}), group({})});
    startRecording(1);
    tapPress(Shortcut::space, controlOption | Modifiers::shift);
    EXPECT_EQ(title(1), "⌃⌥⇧Space");
}

TEST_F(ShortcutRecorderTest, DeleteRemovesTheShortcutWithOneWriteWhateverTheModifiers) {
    for (const Modifiers modifiers : {Modifiers(), Modifiers::command}) {
        open({group({}, controlOptionK)});
        startRecording(0);
        tapPress(keyDelete, modifiers);
        EXPECT_EQ(title(0), "Set shortcut");
        EXPECT_EQ(stored().groups[0].shortcut, std::nullopt);
        EXPECT_EQ(writes(), 1);
        EXPECT_FALSE(model->recorder());
    }
}

TEST_F(ShortcutRecorderTest, EscapeLeavesThePreviousShortcutWhateverTheModifiers) {
    for (const Modifiers modifiers : {Modifiers(), Modifiers::control}) {
        open({group({}, controlOptionK)});
        startRecording(0);
        tapPress(keyEscape, modifiers);
        EXPECT_EQ(title(0), "⌃⌥K");
        EXPECT_EQ(writes(), 0);
        EXPECT_FALSE(model->recorder());
    }
}

TEST_F(ShortcutRecorderTest, RecordingInAnotherGroupTakesOver) {
    open({group({}, controlOptionK), group({})});
    startRecording(0);
    startRecording(1);
    EXPECT_EQ(title(0), "⌃⌥K");
    EXPECT_EQ(title(1), "Press shortcut…");
    tapPress(Shortcut::space, Modifiers::command);
    EXPECT_EQ(groups()[0].shortcut, controlOptionK);
    EXPECT_EQ(groups()[1].shortcut, (Shortcut{Shortcut::space, Modifiers::command}));
}

TEST_F(ShortcutRecorderTest, AnAcceptedShortcutLeavesTheMessageUntilTheNextStart) {
    open({group({})});
    startRecording(0);
    tapPress(keyA);
    tapPress(keyA, Modifiers::command);
    EXPECT_EQ(title(0), "⌘A");
    EXPECT_EQ(message(0), "Add ⌘, ⌥ or ⌃, or press Fn alone");
    startRecording(0);
    EXPECT_EQ(message(0), "");
}

TEST_F(ShortcutRecorderTest, AnotherRejectionReplacesTheMessage) {
    open({group({}, controlOptionK), group({})});
    startRecording(1);
    tapPress(keyA);
    tapPress(controlOptionK.keyCode, controlOptionK.modifiers);
    EXPECT_EQ(message(1), "Already used by another group");
}

TEST_F(ShortcutRecorderTest, ChangingTheTabEndsTheRecording) {
    open({group({})});
    startRecording(0);
    click(button("General"));
    EXPECT_FALSE(model->recorder());
    EXPECT_EQ(model->recordingGroup(), std::nullopt);
}

TEST_F(ShortcutRecorderTest, ClosingTheWindowEndsTheRecording) {
    open({group({})});
    startRecording(0);
    window->window()->close();
    EXPECT_FALSE(model->recorder());
    window->open();
    EXPECT_EQ(title(0), "Set shortcut");
}

TEST_F(ShortcutRecorderTest, AMessageStaysOverClosingAndReopeningUntilTheNextStart) {
    open({group({})});
    startRecording(0);
    tapPress(keyA);
    window->window()->close();
    window->open();
    EXPECT_EQ(message(0), "Add ⌘, ⌥ or ⌃, or press Fn alone");
    startRecording(0);
    EXPECT_EQ(message(0), "");
}

TEST_F(ShortcutRecorderTest, AMessageIsSmallRedAndUnderTheButton) {
    open({group({})});
    startRecording(0);
    tapPress(keyA);
    settle();
    MessageLabel& label = *shown<MessageLabel>(card(0)).front();
    EXPECT_EQ(label.font().pixelSize(), 11);
    EXPECT_GT(label.y(), recorder(0).geometry().bottom());
    EXPECT_TRUE(isSame(ink(label), QColor(200, 30, 20)));
    Palette::setDark(true);
    EXPECT_TRUE(isSame(ink(label), QColor(255, 105, 97)));
}

TEST_F(ShortcutRecorderTest, DestroyingTheWindowEndsTheRecording) {
    open({group({})});
    startRecording(0);
    window.reset();
    EXPECT_FALSE(model->recorder());
}

TEST_F(ShortcutRecorderTest, AnotherRecordersDisappearingLeavesTheRecordingAlone) {
    open({group({}), group({})});
    startRecording(0);
    click(deleteButton(1));
    EXPECT_TRUE(model->recorder());
    EXPECT_EQ(title(0), "Press shortcut…");
}

TEST_F(ShortcutRecorderTest, SpaceAndReturnPressTheButtonOnTheirRelease) {
    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter}) {
        open({group({})});
        QAbstractButton& button = recorder(0);
        button.setFocus(Qt::TabFocusReason);
        QTest::keyPress(&button, key);
        EXPECT_FALSE(model->recorder());
        QTest::keyRelease(&button, key);
        EXPECT_TRUE(model->recorder());
    }
}

TEST_F(ShortcutRecorderTest, TheButtonSaysWhichGroupsShortcutItIs) {
    open({group({}), group({}, controlOptionK)});
    EXPECT_EQ(recorder(0).accessibleName(), "Shortcut of group 1: Set shortcut");
    EXPECT_EQ(recorder(1).accessibleName(), "Shortcut of group 2: " + spelled(controlOptionK));
    startRecording(1);
    EXPECT_EQ(recorder(1).accessibleName(), "Shortcut of group 2: Press shortcut…");
    click(deleteButton(0));
    EXPECT_EQ(recorder(0).accessibleName(), "Shortcut of group 1: Press shortcut…");
}

TEST_F(ShortcutRecorderTest, TheButtonsTipSpellsTheShortcutThatItShows) {
    open({group({}), group({}, controlOptionK), group({}, Shortcut::fn)});
    EXPECT_EQ(recorder(0).toolTip(), "");
    EXPECT_EQ(recorder(1).toolTip(), spelled(controlOptionK));
    EXPECT_EQ(recorder(2).toolTip(), "Fn");
    startRecording(1);
    EXPECT_EQ(recorder(1).toolTip(), "");
}

TEST_F(ShortcutRecorderTest, ARejectionIsAnAlertToAssistivePrograms) {
    open({group({})});
    startRecording(0);
    tapPress(keyA);
    const QAccessibleInterface* const message =
        QAccessible::queryAccessibleInterface(shown<MessageLabel>(card(0)).front());
    EXPECT_EQ(message->role(), QAccessible::AlertMessage);
    EXPECT_EQ(message->text(QAccessible::Name), "Add ⌘, ⌥ or ⌃, or press Fn alone");
    EXPECT_FALSE(message->state().invisible);
}

}  // namespace
}  // namespace quillmere
