#include "Quillmere/Controls/WrappedLabel.h"

#include <gtest/gtest.h>

#include <QImage>

namespace quillmere {

namespace {

int lines(const WrappedLabel& label, int width) {
    const int line = WrappedLabel("x").heightForWidth(width);
    return label.heightForWidth(width) / line;
}

/// The label as drawn at that width.
QImage picture(const QString& text, int width) {
    WrappedLabel label(text);
    label.resize(width, label.heightForWidth(width));
    return label.grab().toImage();
}

int widthOf(const QString& text) {
    return WrappedLabel("").fontMetrics().horizontalAdvance(text);
}

}  // namespace

TEST(WrappedLabel, BreaksBetweenWords) {
    const QString text = "first second";
    EXPECT_EQ(lines(WrappedLabel(text), widthOf(text) + 1), 1);
    EXPECT_EQ(lines(WrappedLabel(text), widthOf(text) - 1), 2);
}

TEST(WrappedLabel, LeavesAWordThatFitsOnALineWhole) {
    const int width = widthOf("first sec");
    EXPECT_EQ(picture("first second", width), picture("first\nsecond", width));
}

TEST(WrappedLabel, BreaksAWordThatFitsOnNoLine) {
    const QString word(50, 'w');
    const int width = widthOf(QString(10, 'w')) + widthOf("w") / 2;
    EXPECT_EQ(lines(WrappedLabel(word), width), 5);
    EXPECT_EQ(WrappedLabel(word).minimumSizeHint().width(), 0);
}

TEST(WrappedLabel, KeepsTheTextsOwnLineBreaks) {
    EXPECT_EQ(lines(WrappedLabel("one\ntwo\n\nfour"), 1000), 4);
}

TEST(WrappedLabel, ShowsAmpersandsAndMarkupAsTheyAre) {
    constexpr int width = 300;
    EXPECT_NE(picture("<b>x</b> &File", width), picture("x File", width));
    EXPECT_EQ(WrappedLabel("<b>x</b>").textFormat(), Qt::PlainText);
}

}  // namespace quillmere
