#include "Tests/Desktop/DesktopTest.h"
#include "Tests/Support/Dock.h"

#include <algorithm>
#include <chrono>

namespace quillmere::support {

namespace {

using Clock = std::chrono::steady_clock;
using Scheme = SettingsPortal::Scheme;
using namespace std::chrono_literals;

// The plate's design, in pixels of a screen at one pixel a point.
constexpr QSize plateOfThree(244, 192);
constexpr int inset = 12;
constexpr int rowHeight = 52;
constexpr int rowStep = 58;
constexpr auto visibleTime = 1000ms;
constexpr auto fadeTime = 250ms;
// A timer counts whole milliseconds.
constexpr auto timerGrain = 5ms;
// Until the switch is on the screen, and until the test looks.
constexpr auto reaction = 200ms;

const QColor wallpaper(40, 120, 90);

struct PlateColors {
    QColor card;
    QColor border;
    QColor selection;
};

PlateColors colorsOf(Scheme scheme) {
    if (scheme == Scheme::dark)
        return {QColor(38, 40, 45), QColor(58, 61, 68), QColor(236, 235, 231, qRound(0.16 * 255))};
    return {QColor(248, 247, 244), QColor(228, 226, 220), QColor(27, 29, 34, qRound(0.12 * 255))};
}

QColor withAlpha(QColor color, double alpha) {
    color.setAlphaF(static_cast<float>(alpha));
    return color;
}

QRect rowFrame(int row, int width = plateOfThree.width()) {
    return {inset, inset + row * rowStep, width - 2 * inset, rowHeight};
}

/// Where something else than `ground` is drawn within `area` of the picture.
QRect inkFrame(const QImage& picture, const QRect& area, QColor ground) {
    QRect ink;
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            if (!Screen::isNear(picture.pixelColor(x, y), ground, 12)) ink |= QRect(x, y, 1, 1);
    return ink;
}

class PlateTest : public DesktopTest {
protected:
    /// The program over a full screen of one colour, as a film or a game is.
    void startOverFullScreen(const Desktop::Options& options = {},
                             const std::string& plate = R"({"visibility":"always"})") {
        startDesktop(options);
        storeConfiguration(configurationText({{.sources = threeSources}}, true, plate));
        startWitness(Witness::Size::fullScreen, wallpaper);
        ASSERT_NO_FATAL_FAILURE(startProgram());
    }

    /// Waits until the plate is drawn with this row highlighted, and cuts it
    /// out of the screen.
    QImage pictureOfPlate(int highlightedRow, QColor highlight) {
        QImage picture;
        const QPoint insideRow = rowFrame(highlightedRow).topLeft() + QPoint(20, 4);
        const auto isDrawn = [&] {
            const auto plate = program().plate();
            if (!plate) return false;
            picture = desktop().screen().shot().copy(plate->frame);
            return Screen::isNear(picture.pixelColor(insideRow), highlight);
        };
        EXPECT_TRUE(waitUntil(isDrawn)) << "the row's colour is " << picture.pixelColor(insideRow).name().toStdString()
                                        << ", not " << highlight.name().toStdString();
        return picture;
    }
};

TEST_F(PlateTest, ShowsInTheMiddleOfTheScreenOverAFullScreenWindow) {
    ASSERT_NO_FATAL_FAILURE(startOverFullScreen());
    pressShortcut();
    ASSERT_TRUE(program().waitForPlate());
    const auto plate = program().plate();
    ASSERT_TRUE(plate);
    QRect expected(QPoint(), plateOfThree);
    expected.moveCenter(QRect(QPoint(), desktop().connection().screenSize()).center());
    EXPECT_EQ(plate->frame, expected);
    EXPECT_TRUE(plate->isOverrideRedirect);
    EXPECT_TRUE(desktop().connection().isAbove(plate->id, witness().window()));
}

TEST_F(PlateTest, LeavesFocusAndPointerAlone) {
    ASSERT_NO_FATAL_FAILURE(startOverFullScreen());
    typist().movePointer({300, 200});
    const unsigned long focused = desktop().connection().focusedWindow();
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(1));
    ASSERT_TRUE(program().waitForPlate());
    EXPECT_EQ(desktop().connection().focusedWindow(), focused);
    ASSERT_TRUE(program().waitForNoPlate());
    EXPECT_EQ(desktop().connection().focusedWindow(), focused);
    EXPECT_EQ(desktop().connection().pointer(), QPoint(300, 200));
    EXPECT_EQ(witness().focusLosses(), 0);
}

TEST_F(PlateTest, ClicksGoThroughToWhatIsBeneath) {
    ASSERT_NO_FATAL_FAILURE(startOverFullScreen());
    pressShortcut();
    ASSERT_TRUE(program().waitForPlate());
    const QPoint middle = program().plate()->frame.center();
    typist().movePointer(middle);
    typist().click();
    EXPECT_TRUE(waitUntil([&] { return !witness().clicks().empty(); }));
    EXPECT_EQ(witness().clicks(), std::vector{middle});
}

TEST_F(PlateTest, IsGoneASecondAndAQuarterAfterTheSwitch) {
    ASSERT_NO_FATAL_FAILURE(startOverFullScreen());
    // A busy machine adds to the time, now and then, and never takes from it.
    auto shortest = Clock::duration::max();
    for (int attempt = 0; attempt < 10 && shortest > visibleTime + fadeTime + reaction; ++attempt) {
        const auto pressed = Clock::now();
        pressShortcut();
        ASSERT_TRUE(program().waitForPlate());
        ASSERT_TRUE(program().waitForNoPlate());
        shortest = std::min<Clock::duration>(shortest, Clock::now() - pressed);
    }
    EXPECT_GE(shortest, visibleTime + fadeTime - timerGrain);
    EXPECT_LE(shortest, visibleTime + fadeTime + reaction);
}

TEST_F(PlateTest, TheLastOfSeveralSwitchesDecidesHowLongItStays) {
    ASSERT_NO_FATAL_FAILURE(startOverFullScreen());
    pressShortcut();
    ASSERT_TRUE(program().waitForPlate());
    const unsigned long window = program().plate()->id;
    Clock::time_point lastPress;
    for (int i = 0; i < 3; ++i) {
        // Each press comes while the plate of the one before still shows.
        ASSERT_TRUE(holdsFor([&] { return program().plate().has_value(); }, 500ms));
        lastPress = Clock::now();
        pressShortcut();
    }
    ASSERT_TRUE(program().waitForNoPlate());
    EXPECT_GE(Clock::now() - lastPress, visibleTime + fadeTime - timerGrain);
    pressShortcut();
    ASSERT_TRUE(program().waitForPlate());
    EXPECT_EQ(program().plate()->id, window) << "one window serves every switch";
}

TEST_F(PlateTest, ASwitchDuringTheFadeBringsItBackInFull) {
    ASSERT_NO_FATAL_FAILURE(startOverFullScreen({.hasCompositor = true}));
    pressShortcut();
    const auto opacity = [&] {
        const auto plate = program().plate();
        return plate ? plate->opacity : 0;
    };
    const auto isFading = [&] { return opacity() > 0 && opacity() < 1; };
    ASSERT_TRUE(waitUntil(isFading));
    const auto pressed = Clock::now();
    pressShortcut();
    ASSERT_TRUE(waitUntil([&] { return opacity() == 1; }));
    ASSERT_TRUE(program().waitForNoPlate());
    EXPECT_GE(Clock::now() - pressed, visibleTime + fadeTime - timerGrain);
}

struct Look {
    const char* name;
    Scheme scheme;
    bool hasCompositor;
};

class PlateLookTest : public PlateTest, public testing::WithParamInterface<Look> {
protected:
    void checkShape(const QImage& picture, QColor card, QColor border) {
        const int right = picture.width() - 1;
        const int bottom = picture.height() - 1;
        for (const QPoint corner : {QPoint(0, 0), QPoint(right, 0), QPoint(0, bottom), QPoint(right, bottom)})
            EXPECT_TRUE(isBare(picture.pixelColor(corner))) << "the corner is cut";
        // Around the corner's arc of radius 26: outside it, and inside the outline.
        EXPECT_TRUE(isBare(picture.pixelColor(5, 5)));
        EXPECT_PRED2(isLike, picture.pixelColor(11, 11), card);
        for (const QPoint edge : {QPoint(0, 96), QPoint(right, 96), QPoint(122, 0), QPoint(122, bottom)})
            EXPECT_PRED2(isLike, picture.pixelColor(edge), border);
        EXPECT_PRED2(isLike, picture.pixelColor(1, 96), card) << "the outline is one pixel wide";
        EXPECT_PRED2(isLike, picture.pixelColor(122, 6), card);
    }

    void checkRows(const QImage& picture, int highlighted, QColor card, QColor highlight) {
        for (int row = 0; row < 3; ++row) {
            const QRect frame = rowFrame(row);
            const QColor ground = row == highlighted ? highlight : card;
            EXPECT_PRED2(isLike, picture.pixelColor(frame.left() + 20, frame.top()), ground) << "row " << row;
            EXPECT_PRED2(isLike, picture.pixelColor(frame.right() - 20, frame.bottom()), ground) << "row " << row;
            EXPECT_PRED2(isLike, picture.pixelColor(frame.left(), frame.center().y()), ground) << "row " << row;
            const QRect ink = inkFrame(picture, frame.adjusted(16, 4, -16, -4), ground);
            EXPECT_NEAR(ink.center().x(), frame.center().x(), 2) << "the name is centred, row " << row;
            EXPECT_NEAR(ink.center().y(), frame.center().y(), 5) << "the name is centred, row " << row;
        }
        const QPoint corner = rowFrame(highlighted).topLeft();
        EXPECT_PRED2(isLike, picture.pixelColor(corner + QPoint(1, 1)), card) << "the highlight's corner is round";
        EXPECT_PRED2(isLike, picture.pixelColor(corner + QPoint(5, 5)), highlight);
        EXPECT_PRED2(isLike, picture.pixelColor(corner + QPoint(20, -1)), card) << "the highlight ends with its row";
    }

    static bool isLike(QColor a, QColor b) { return Screen::isNear(a, b); }

    /// The wallpaper, in the plate's shadow where there is a compositor.
    static bool isBare(QColor color) {
        if (!GetParam().hasCompositor) return color == wallpaper;
        const auto isShaded = [](int channel, int lit) { return channel <= lit && channel >= lit * 6 / 10; };
        return isShaded(color.red(), wallpaper.red()) && isShaded(color.green(), wallpaper.green())
               && isShaded(color.blue(), wallpaper.blue());
    }
};

TEST_P(PlateLookTest, EqualsTheDesignToThePixel) {
    const Look& look = GetParam();
    ASSERT_NO_FATAL_FAILURE(startOverFullScreen({.hasCompositor = look.hasCompositor, .scheme = look.scheme}));
    const PlateColors colors = colorsOf(look.scheme);
    // Nothing can shine through where nothing is blended.
    const QColor card = look.hasCompositor ? Screen::blend(wallpaper, withAlpha(colors.card, 0.8)) : colors.card;
    const QColor highlight = Screen::blend(card, colors.selection);
    for (const int row : {1, 2, 0}) {
        pressShortcut();
        const QImage picture = pictureOfPlate(row, highlight);
        ASSERT_EQ(picture.size(), plateOfThree);
        checkShape(picture, card, colors.border);
        checkRows(picture, row, card, highlight);
        savePicture(picture, artefacts() / "plate" / (std::string(look.name) + ".png"));
    }
}

INSTANTIATE_TEST_SUITE_P(Looks, PlateLookTest,
                         testing::Values(Look{"light", Scheme::light, true}, Look{"dark", Scheme::dark, true},
                                         Look{"lightWithoutCompositor", Scheme::light, false},
                                         Look{"darkWithoutCompositor", Scheme::dark, false}),
                         [](const auto& info) { return info.param.name; });

TEST_F(PlateTest, HasTheChosenOpacity) {
    ASSERT_NO_FATAL_FAILURE(
        startOverFullScreen({.hasCompositor = true}, R"({"visibility":"always","background":"solid","opacity":0.35})"));
    const PlateColors colors = colorsOf(Scheme::light);
    const QColor card = Screen::blend(wallpaper, withAlpha(colors.card, 0.35));
    pressShortcut();
    const QImage picture = pictureOfPlate(1, Screen::blend(card, colors.selection));
    EXPECT_TRUE(Screen::isNear(picture.pixelColor(122, 6), card));
}

TEST_F(PlateTest, ChangesToDarkWhileItShows) {
    ASSERT_NO_FATAL_FAILURE(startOverFullScreen({.hasCompositor = true}));
    const QColor light = Screen::blend(wallpaper, withAlpha(colorsOf(Scheme::light).card, 0.8));
    const QColor dark = Screen::blend(wallpaper, withAlpha(colorsOf(Scheme::dark).card, 0.8));
    const auto cardColor = [&]() -> std::optional<QColor> {
        const auto plate = program().plate();
        if (!plate || plate->opacity < 1) return std::nullopt;
        return desktop().screen().color(plate->frame.topLeft() + QPoint(122, 6));
    };
    const auto isNear = [&](QColor color) { return cardColor().has_value() && Screen::isNear(*cardColor(), color); };
    pressShortcut();
    ASSERT_TRUE(waitUntil([&] { return isNear(light); }));
    desktop().portal()->setScheme(Scheme::dark);
    // No further switch: the plate of this very press turns dark.
    EXPECT_TRUE(waitUntil([&] { return isNear(dark) || !program().plate(); }));
    EXPECT_TRUE(isNear(dark));
}

TEST_F(PlateTest, IsLightWhereTheDesktopStatesNoPreference) {
    ASSERT_NO_FATAL_FAILURE(startOverFullScreen({.scheme = std::nullopt}));
    pressShortcut();
    pictureOfPlate(1, Screen::blend(colorsOf(Scheme::light).card, colorsOf(Scheme::light).selection));
}

TEST_F(PlateTest, GrowsWithTheWidestName) {
    startDesktop({.layouts = "us,us", .variants = ",altgr-intl"});
    storeConfiguration(configurationText({{.sources = {"xkb:us", "xkb:us+altgr-intl"}}}));
    startWitness(Witness::Size::fullScreen, wallpaper);
    ASSERT_NO_FATAL_FAILURE(startProgram());
    pressShortcut();
    ASSERT_TRUE(program().waitForPlate());
    const QRect frame = program().plate()->frame;
    EXPECT_GT(frame.width(), plateOfThree.width());
    EXPECT_EQ(frame.height(), 2 * rowHeight + 6 + 2 * inset);
    const PlateColors colors = colorsOf(Scheme::light);
    const QColor highlight = Screen::blend(colors.card, colors.selection);
    const QRect row = rowFrame(1, frame.width());
    QRect ink;
    ASSERT_TRUE(waitUntil([&] {
        const QImage picture = desktop().screen().shot().copy(frame);
        ink = inkFrame(picture, row.adjusted(16, 4, -16, -4), highlight);
        return Screen::isNear(picture.pixelColor(row.topLeft() + QPoint(20, 4)), highlight) && !ink.isEmpty();
    }));
    // A name's own width includes up to a few pixels beside its ink.
    EXPECT_NEAR(frame.width(), ink.width() + 64 + 2 * inset, 5);
}

struct Count {
    const char* name;
    std::vector<std::string> sources;
    bool isShown;
};

class ManyOnlyTest : public PlateTest, public testing::WithParamInterface<Count> {};

TEST_P(ManyOnlyTest, OnlyAGroupOfThreeShowsIt) {
    startDesktop();
    storeConfiguration(configurationText({{.sources = GetParam().sources}}, true, R"({"visibility":"manyOnly"})"));
    startWitness();
    ASSERT_NO_FATAL_FAILURE(startProgram());
    ASSERT_NO_FATAL_FAILURE(pressShortcutAndWaitFor(1));
    if (GetParam().isShown)
        EXPECT_TRUE(program().waitForPlate());
    else
        EXPECT_TRUE(holdsFor([&] { return !program().plate(); }, 1s));
}

INSTANTIATE_TEST_SUITE_P(Counts, ManyOnlyTest,
                         testing::Values(Count{"two", {"xkb:us", "xkb:ua"}, false},
                                         Count{"three", {"xkb:us", "xkb:ua", "xkb:de"}, true}),
                         [](const auto& info) { return info.param.name; });

TEST_F(PlateTest, IsCentredInWhatPanelsLeaveOfTheScreen) {
    startDesktop();
    const Dock dock(desktop().display(), 60);
    storeConfiguration(configurationText({{.sources = threeSources}}));
    startWitness();
    ASSERT_NO_FATAL_FAILURE(startProgram());
    pressShortcut();
    ASSERT_TRUE(program().waitForPlate());
    const QSize screen = desktop().connection().screenSize();
    const QRect left(0, 60, screen.width(), screen.height() - 60);
    EXPECT_EQ(program().plate()->frame.center(), left.center());
}

}  // namespace

}  // namespace quillmere::support
