#include "Quillmere/Updates/UpdateWindow.h"

#include "Quillmere/Controls/AccentButtonStyle.h"
#include "Quillmere/Controls/ChipButtonStyle.h"
#include "Quillmere/Controls/PaletteScrollArea.h"
#include "Quillmere/Palette.h"
#include "Tests/App/WindowContent.h"
#include "Tests/Support/FakeWorkspace.h"
#include "Tests/Support/MemoryDefaults.h"
#include "Tests/Support/Settle.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QPointer>
#include <QScreen>
#include <QScrollBar>
#include <QTest>

namespace quillmere {

namespace {

UpdateOffer offer(const std::string& version = "1.4.0", std::vector<std::string> notes = {},
                  std::optional<std::int64_t> size = std::nullopt) {
    return {.version = AppVersion::parse(version).value(),
            .size = size,
            .notes = std::move(notes),
            .downloadURL = URL::parse("https://example.org/downloads/quillmere.deb?a=%20b").value()};
}

class UpdateWindowTest : public testing::Test {
protected:
    ~UpdateWindowTest() override { Palette::setDark(false); }

    QStringList texts() const { return quillmere::texts(*shown.window()); }
    QAbstractButton& button(const QString& title) const { return quillmere::button(*shown.window(), title); }
    QLabel& label(const QString& text) const { return quillmere::label(*shown.window(), text); }

    void press(const QString& title) {
        QTest::mouseClick(&button(title), Qt::LeftButton);
        settle();
    }

    QRect frameOf(const QWidget& widget) const { return {widget.mapTo(shown.window(), QPoint()), widget.size()}; }

    MemoryDefaults defaults;
    UpdateStore store{defaults};
    FakeWorkspace workspace;
    UpdateWindow shown{store, workspace};
};

}  // namespace

TEST_F(UpdateWindowTest, ThereIsNoWindowBeforeTheFirstOffer) {
    EXPECT_EQ(shown.window(), nullptr);
}

TEST_F(UpdateWindowTest, SaysWhatIsAvailableInItsTitleAndItsFirstLine) {
    shown.show(offer("1.4.0"));
    EXPECT_EQ(shown.window()->windowTitle(), "Quillmere 1.4.0 is available");
    EXPECT_EQ(texts().front(), "Quillmere 1.4.0 is available");
}

TEST_F(UpdateWindowTest, TheVersionIsShownAsTheFeedWroteIt) {
    shown.show(offer(" 2.010-beta.3 "));
    EXPECT_EQ(shown.window()->windowTitle(), "Quillmere 2.010-beta.3 is available");
}

TEST_F(UpdateWindowTest, ComesToTheFront) {
    shown.show(offer());
    EXPECT_TRUE(shown.window()->isVisible());
    EXPECT_EQ(workspace.broughtToFront, std::vector<QWidget*>{shown.window()});
    EXPECT_EQ(workspace.blended, std::vector<QWidget*>{shown.window()});
}

TEST_F(UpdateWindowTest, HasAnIconATitleAndACloseButtonAndKeepsItsSize) {
    shown.show(offer());
    const Qt::WindowFlags flags = shown.window()->windowFlags();
    EXPECT_FALSE(shown.window()->windowIcon().isNull());
    EXPECT_TRUE(flags & Qt::WindowTitleHint);
    EXPECT_TRUE(flags & Qt::WindowCloseButtonHint);
    EXPECT_FALSE(flags & Qt::WindowMinimizeButtonHint);
    EXPECT_FALSE(flags & Qt::WindowMaximizeButtonHint);
    EXPECT_EQ(shown.window()->minimumSize(), shown.window()->maximumSize());
}

TEST_F(UpdateWindowTest, StandsInTheMiddleOfTheScreen) {
    shown.show(offer("1.4.0", {"One", "Two"}));
    const QPoint middle = QGuiApplication::primaryScreen()->availableGeometry().center();
    EXPECT_LE((shown.window()->geometry().center() - middle).manhattanLength(), 8);
}

TEST_F(UpdateWindowTest, AnOfferOfAVersionAloneShowsTheTitleAndTheThreeButtons) {
    shown.show(offer());
    EXPECT_EQ(texts(), QStringList{"Quillmere 1.4.0 is available"});
    EXPECT_NE(dynamic_cast<AccentButton*>(&button("Download")), nullptr);
    EXPECT_NE(dynamic_cast<ChipButton*>(&button("Later")), nullptr);
    EXPECT_NE(dynamic_cast<ChipButton*>(&button("Skip this version")), nullptr);
    EXPECT_EQ(shown.window()->findChildren<QAbstractButton*>().size(), 3);
}

TEST_F(UpdateWindowTest, NotesAreListedInTheirOrderWithBullets) {
    shown.show(offer("1.4.0", {"First", "Second"}));
    EXPECT_EQ(texts(), (QStringList{"Quillmere 1.4.0 is available", "•", "First", "•", "Second"}));
}

TEST_F(UpdateWindowTest, ASizeIsShownUnderTheNotes) {
    shown.show(offer("1.4.0", {"First"}, 2'300'000));
    EXPECT_EQ(texts().last(), "Download size: 2.3 MB");
    shown.show(offer("1.4.0", {}, 1));
    EXPECT_EQ(texts().last(), "Download size: 1 byte");
}

TEST_F(UpdateWindowTest, NotesAreShownVerbatim) {
    const std::string note = "<b>Bold</b> &amp; <img src=\"http://127.0.0.1/\"> https://example.org &File";
    shown.show(offer("1.4.0", {note}));
    EXPECT_EQ(label(QString::fromStdString(note)).textFormat(), Qt::PlainText);
}

TEST_F(UpdateWindowTest, TheVersionIsPlainTextToo) {
    shown.show(offer("1.4.0-<b>x</b>"));
    EXPECT_EQ(label("Quillmere 1.4.0-<b>x</b> is available").textFormat(), Qt::PlainText);
}

TEST_F(UpdateWindowTest, IsLaidOutToItsNumbers) {
    shown.show(offer("1.4.0", {"First", "Second"}, 2'300'000));
    EXPECT_EQ(shown.window()->width(), 420);

    const QRect title = frameOf(label("Quillmere 1.4.0 is available"));
    const QRect first = frameOf(label("First"));
    const QRect second = frameOf(label("Second"));
    const QRect bullet = frameOf(label("•"));
    const QRect size = frameOf(label("Download size: 2.3 MB"));
    const QRect download = frameOf(button("Download"));
    const QRect later = frameOf(button("Later"));
    const QRect skip = frameOf(button("Skip this version"));
    EXPECT_EQ(title.topLeft(), QPoint(24, 24));
    EXPECT_EQ(first.top() - title.bottom() - 1, 14);
    EXPECT_EQ(bullet.left(), 24);
    EXPECT_EQ(bullet.top(), first.top());
    EXPECT_EQ(first.left() - bullet.right() - 1, 8);
    EXPECT_EQ(second.top() - first.bottom() - 1, 4);
    EXPECT_EQ(size.top() - second.bottom() - 1, 14);
    EXPECT_EQ(size.left(), 24);
    EXPECT_EQ(download.top() - size.bottom() - 1, 14);
    EXPECT_EQ(download.left(), 24);
    EXPECT_EQ(later.left() - download.right() - 1, 10);
    EXPECT_EQ(skip.left() - later.right() - 1, 10);
    EXPECT_EQ(shown.window()->height() - download.bottom() - 1, 24);
}

TEST_F(UpdateWindowTest, ANoteThatIsLongerThanALineWraps) {
    shown.show(offer("1.4.0", {"Short",
                               "A note that has a good many more words in it than fit on a single line of the "
                               "window, and so needs two"}));
    const auto rows = quillmere::shown<QLabel>(*shown.window());
    EXPECT_GE(rows.back()->height(), 2 * rows.back()->fontMetrics().height());
    EXPECT_EQ(shown.window()->width(), 420);
}

TEST_F(UpdateWindowTest, AWordThatIsLongerThanALineDoesNotWidenTheWindow) {
    const std::string word(300, 'w');
    shown.show(offer("1.4.0-" + std::string(90, 'w'), {word}));
    EXPECT_EQ(shown.window()->width(), 420);
    const QLabel& note = label(QString::fromStdString(word));
    EXPECT_LE(frameOf(note).right(), 420 - 24);
    EXPECT_GE(note.height(), 5 * note.fontMetrics().height());
}

TEST_F(UpdateWindowTest, LongNotesScrollWithinTheScreen) {
    shown.show(offer("1.4.0", std::vector<std::string>(200, "One of very many notes"), 2'300'000));
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    EXPECT_EQ(shown.window()->height(), screen.height() - 60) << "what a title bar and borders take";
    EXPECT_GE(shown.window()->y(), screen.y());
    EXPECT_LE(frameOf(button("Download")).bottom(), shown.window()->height());

    QScrollBar& bar = *quillmere::shown<PaletteScrollArea>(*shown.window()).front()->verticalScrollBar();
    EXPECT_GT(bar.maximum(), 0);
    QTest::keyClick(&button("Download"), Qt::Key_End);
    EXPECT_EQ(bar.value(), bar.maximum());
    QTest::keyClick(&button("Download"), Qt::Key_PageUp);
    EXPECT_LT(bar.value(), bar.maximum());
    QTest::keyClick(&button("Download"), Qt::Key_Home);
    EXPECT_EQ(bar.value(), 0);
    QTest::keyClick(&button("Download"), Qt::Key_PageDown);
    EXPECT_GT(bar.value(), 0);
}

TEST_F(UpdateWindowTest, AFewNotesDoNotScroll) {
    shown.show(offer("1.4.0", {"One", std::string(200, 'w'), "Three"}));
    EXPECT_EQ(quillmere::shown<PaletteScrollArea>(*shown.window()).front()->verticalScrollBar()->maximum(), 0);
}

TEST_F(UpdateWindowTest, FiveHundredNotesAreShownWholeAndOfMoreTheFirstAndAnEllipsis) {
    shown.show(offer("1.4.0", std::vector<std::string>(500, "x")));
    EXPECT_EQ(texts().size(), 1 + 2 * 500);
    EXPECT_EQ(texts().last(), "x");
    shown.show(offer("1.4.0", std::vector<std::string>(501, "x")));
    EXPECT_EQ(texts().size(), 1 + 2 * 501);
    EXPECT_EQ(texts().last(), "…");
}

TEST_F(UpdateWindowTest, AVersionOfAHundredCharactersIsShownWhole) {
    const std::string version = "1.4.0-" + std::string(94, 'z');
    shown.show(offer(version));
    EXPECT_EQ(texts().first().toStdString(), "Quillmere " + version + " is available");
    shown.show(offer(version + "z"));
    EXPECT_EQ(texts().first().toStdString(), "Quillmere " + version + "… is available");
}

TEST_F(UpdateWindowTest, AFeedWithoutMeasureIsCutShort) {
    std::vector<std::string> notes(100'000, "x");
    notes.front() = std::string(500'000, 'y');
    shown.show(offer("1.4.0-" + std::string(500'000, 'z'), notes));
    EXPECT_LT(shown.window()->windowTitle().size(), 200);
    EXPECT_TRUE(shown.window()->windowTitle().endsWith("… is available"));
    EXPECT_EQ(label("•").text(), "•");
    EXPECT_EQ(texts()[2].size(), 4001);
    EXPECT_EQ(texts().last(), "…");
    EXPECT_LE(texts().size(), 1 + 2 * 501);
}

TEST_F(UpdateWindowTest, DownloadOpensTheAddressAsWrittenAndCloses) {
    shown.show(offer());
    press("Download");
    ASSERT_EQ(workspace.opened.size(), 1U);
    EXPECT_EQ(workspace.beeps, 0);
    EXPECT_EQ(workspace.opened[0].toEncoded(), "https://example.org/downloads/quillmere.deb?a=%20b");
    EXPECT_EQ(shown.window(), nullptr);
    EXPECT_FALSE(store.skipped());
}

TEST_F(UpdateWindowTest, ADownloadThatNothingOpensBeepsAsTheWindowCloses) {
    workspace.hasHandler = false;
    shown.show(offer());
    press("Download");
    EXPECT_EQ(workspace.opened.size(), 1U);
    EXPECT_EQ(workspace.beeps, 1);
    EXPECT_EQ(shown.window(), nullptr);
}

TEST_F(UpdateWindowTest, TheNotesAndTheSizeAreMutedAndTheTitleIsNot) {
    shown.show(offer("1.4.0", {"Note"}, 2'300'000));
    EXPECT_EQ(label("Quillmere 1.4.0 is available").font().pixelSize(), 15);
    EXPECT_EQ(label("Quillmere 1.4.0 is available").font().weight(), QFont::DemiBold);
    EXPECT_EQ(label("Download size: 2.3 MB").font().pixelSize(), 11);
    for (const bool isDark : {false, true}) {
        Palette::setDark(isDark);
        EXPECT_TRUE(isSame(ink(label("Quillmere 1.4.0 is available")), labelColor().resolved(isDark)));
        for (const char* const text : {"•", "Note", "Download size: 2.3 MB"})
            EXPECT_TRUE(isSame(ink(label(text)), Palette::muted().resolved(isDark))) << text;
    }
}

TEST_F(UpdateWindowTest, TabWalksThroughTheButtonsInReadingOrder) {
    shown.show(offer("1.4.0", {"Note"}));
    QWidget& window = *shown.window();
    EXPECT_EQ(window.focusWidget(), window.focusProxy()) << "no button has the focus yet";
    for (const char* const title : {"Download", "Later", "Skip this version", "Download"}) {
        QTest::keyClick(window.focusWidget(), Qt::Key_Tab);
        EXPECT_EQ(window.focusWidget(), &button(title));
    }
}

TEST_F(UpdateWindowTest, SkipStoresTheVersionsTextAndCloses) {
    shown.show(offer(" 1.4.0-beta "));
    press("Skip this version");
    EXPECT_EQ(defaults.string("updateSkipped"), "1.4.0-beta");
    EXPECT_EQ(shown.window(), nullptr);
    EXPECT_TRUE(workspace.opened.empty());
}

TEST_F(UpdateWindowTest, LaterClosesAndStoresNothing) {
    shown.show(offer());
    press("Later");
    EXPECT_EQ(shown.window(), nullptr);
    EXPECT_FALSE(store.skipped());
    EXPECT_FALSE(store.lastCheck());
    EXPECT_TRUE(workspace.opened.empty());
}

TEST_F(UpdateWindowTest, TheCloseButtonIsLikeLater) {
    shown.show(offer());
    const QPointer<QWidget> window = shown.window();
    window->close();
    settle();
    EXPECT_TRUE(window.isNull());
    EXPECT_EQ(shown.window(), nullptr);
    EXPECT_FALSE(store.skipped());
}

TEST_F(UpdateWindowTest, ASecondOfferTakesThePlaceOfTheFirst) {
    shown.show(offer("1.4.0"));
    const QPointer<QWidget> first = shown.window();
    shown.show(offer("1.5.0"));
    settle();
    EXPECT_TRUE(first.isNull());
    ASSERT_NE(shown.window(), nullptr);
    EXPECT_EQ(shown.window()->windowTitle(), "Quillmere 1.5.0 is available");
    EXPECT_TRUE(shown.window()->isVisible());
    EXPECT_FALSE(store.skipped());
}

TEST_F(UpdateWindowTest, CanBeShownAgainAfterItWasClosed) {
    shown.show(offer("1.4.0"));
    press("Later");
    shown.show(offer("1.4.0"));
    EXPECT_TRUE(shown.window()->isVisible());
}

TEST_F(UpdateWindowTest, TheWindowGoesWithItsOwner) {
    auto owner = std::make_unique<UpdateWindow>(store, workspace);
    owner->show(offer());
    const QPointer<QWidget> window = owner->window();
    owner.reset();
    EXPECT_TRUE(window.isNull());
}

TEST_F(UpdateWindowTest, TheButtonsWorkFromTheKeyboard) {
    shown.show(offer());
    button("Later").setFocus(Qt::TabFocusReason);
    QTest::keyClick(&button("Later"), Qt::Key_Return);
    settle();
    EXPECT_EQ(shown.window(), nullptr);
}

TEST_F(UpdateWindowTest, IsDrawnInThePalettesColoursOfTheMoment) {
    shown.show(offer("1.4.0", {"Note"}));
    const auto background = [&] { return shown.window()->grab().toImage().pixelColor(4, 4); };
    EXPECT_EQ(background(), Palette::window().light);
    Palette::setDark(true);
    EXPECT_EQ(background(), Palette::window().dark);
}

}  // namespace quillmere
