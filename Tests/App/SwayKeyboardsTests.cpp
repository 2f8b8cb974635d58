#include "Quillmere/Platform/Linux/Sources/Sway/SwayKeyboards.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

namespace quillmere {

namespace {

using Names = std::vector<std::string>;
using Identifiers = std::set<std::string>;

/// A keyboard as the compositor tells of it; an empty name stands for none.
struct Told {
    std::string identifier;
    Names layouts;
    int active = 0;
};

QJsonObject input(const Told& told) {
    QJsonArray names;
    for (const std::string& layout : told.layouts)
        names.append(layout.empty() ? QJsonValue() : QJsonValue(QString::fromStdString(layout)));
    return {{"type", "keyboard"},
            {"identifier", QString::fromStdString(told.identifier)},
            {"xkb_layout_names", names},
            {"xkb_active_layout_index", told.active}};
}

/// As the compositor lists them, the newest first.
SwayKeyboards keyboards(const std::vector<Told>& all) {
    QJsonArray inputs{QJsonObject{{"type", "pointer"}, {"identifier", "0:0:mouse"}}};
    for (const Told& told : all)
        inputs.append(input(told));
    return SwayKeyboards::parse(QJsonDocument(inputs).toJson()).value_or(SwayKeyboards());
}

const Names usUa{"English (US)", "Ukrainian"};
const std::string board = "1:1:AT_Translated_Set_2_keyboard";
const std::string external = "1133:49948:Logitech_USB_Keyboard";
const std::string button = "0:1:Power_Button";

TEST(SwayKeyboards, TheKeyboardWithTheMostLayoutsSpeaksForTheDesktop) {
    EXPECT_EQ(keyboards({{button, {"English (US)"}}, {board, usUa}}).layouts(), usUa);
    EXPECT_EQ(keyboards({{board, usUa}, {button, {"English (US)"}}}).layouts(), usUa);
    EXPECT_TRUE(keyboards({}).layouts().empty());
}

TEST(SwayKeyboards, OfSeveralWithAsManyTheOldestDoes) {
    EXPECT_EQ(keyboards({{external, {"German", "French"}}, {board, usUa}}).layouts(), usUa);
}

TEST(SwayKeyboards, AProgramsKeyboardCountsOnlyWhereThereIsNoOther) {
    const Names three{"German", "French", "Polish"};
    for (const char* name : {"0:0:virtual_keyboard", "0:0:virtual-keyboard", "0:0:wlr_virtual_keyboard_v1"}) {
        EXPECT_EQ(keyboards({{name, three}, {board, usUa}}).layouts(), usUa) << name;
        EXPECT_EQ(keyboards({{name, three}}).layouts(), three) << name;
    }
}

TEST(SwayKeyboards, WhatMakesNoSenseIsLeftOut) {
    EXPECT_TRUE(keyboards({{board, {"English (US)", ""}}}).layouts().empty()) << "a nameless layout";
    EXPECT_TRUE(keyboards({{board, usUa, 2}}).layouts().empty()) << "a layout beyond the last";
    EXPECT_TRUE(keyboards({{board, usUa, -1}}).layouts().empty());
    EXPECT_TRUE(keyboards({{board, {}}}).layouts().empty());
    for (const char* reply : {"", "{}", "null", "[1, \"x\", null]", "[{\"type\": \"keyboard\"}]", "[{\"type\""})
        EXPECT_TRUE(SwayKeyboards::parse(reply).value_or(SwayKeyboards()).layouts().empty()) << reply;
}

TEST(SwayKeyboards, WhereTheyDifferTheLayoutChosenLastIsTheCurrentOne) {
    const SwayKeyboards both = keyboards({{external, usUa, 0}, {board, usUa, 1}});
    EXPECT_EQ(both.current("English (US)"), "English (US)");
    EXPECT_EQ(both.current("Ukrainian"), "Ukrainian");
    EXPECT_EQ(both.current("German"), "Ukrainian") << "each keyboard starts with the first";
    EXPECT_EQ(both.current(std::nullopt), "Ukrainian");
    EXPECT_EQ(keyboards({}).current("Ukrainian"), std::nullopt);
}

TEST(SwayKeyboards, AButtonsLayoutIsNotTheCurrentOne) {
    EXPECT_EQ(keyboards({{button, {"English (US)"}}, {board, {"German", "Ukrainian"}, 1}}).current("English (US)"),
              "Ukrainian");
}

TEST(SwayKeyboards, KeyboardsThatAreAlikeAreSwitchedByTheirType) {
    const SwayKeyboards both = keyboards({{external, usUa}, {board, usUa}});
    EXPECT_EQ(both.command("Ukrainian"), "input type:keyboard xkb_switch_layout 1;");
    EXPECT_EQ(both.command("German"), "");
}

TEST(SwayKeyboards, OthersAreSwitchedOneByOneEachByItsOwnNumber) {
    const SwayKeyboards all =
        keyboards({{board, usUa}, {external, {"Ukrainian"}}, {button, {"English (US)"}}, {board, usUa}});
    EXPECT_EQ(all.command("Ukrainian"),
              "input \"" + board + "\" xkb_switch_layout 1;input \"" + external + "\" xkb_switch_layout 0;");
}

TEST(SwayKeyboards, ANameThatCouldBeACommandIsNotPassedOn) {
    for (const std::string name :
         {"1:1:x\" xkb_switch_layout 0; exec evil; input \"y", "1:1:a\\", "1:1:a,b", "1:1:[a]"})
        EXPECT_EQ(keyboards({{name, usUa}, {button, {"English (US)"}}}).command("Ukrainian"), "") << name;
}

TEST(SwayKeyboards, TheSwitchIsDoneOnceEveryPeerHasTheLayout) {
    EXPECT_TRUE(keyboards({{external, usUa, 1}, {board, usUa, 1}, {button, {"English (US)"}}}).isInUse("Ukrainian"));
    EXPECT_FALSE(keyboards({{external, usUa, 0}, {board, usUa, 1}}).isInUse("Ukrainian"));
    EXPECT_FALSE(keyboards({{board, usUa, 1}}).isInUse("German"));
    EXPECT_FALSE(keyboards({}).isInUse("Ukrainian"));
}

TEST(SwayKeyboards, AKeyboardsTwinIsANewcomerToo) {
    const SwayKeyboards before = keyboards({{board, usUa}, {button, usUa}});
    EXPECT_EQ(keyboards({{board, usUa}, {board, usUa}, {button, usUa}}).newcomers(before), Identifiers{board});
    EXPECT_EQ(keyboards({{external, usUa}, {button, usUa}}).newcomers(before), Identifiers{external});
    EXPECT_EQ(keyboards({{button, usUa}}).newcomers(before), Identifiers{});
}

}  // namespace

}  // namespace quillmere
