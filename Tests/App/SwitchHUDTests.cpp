#include "Quillmere/Plate/SwitchHUD.h"

#include "Quillmere/Palette.h"
#include "Quillmere/Plate/PlateLabel.h"
#include "Tests/Support/FakePlatePanel.h"
#include "Tests/Support/ManualQueue.h"

#include <gtest/gtest.h>

#include <QImage>

#include <string>
#include <vector>

namespace quillmere {
namespace {

template <typename View>
std::vector<View*> childrenOf(const QWidget& parent) {
    std::vector<View*> views;
    for (QObject* child : parent.children()) {
        if (auto* view = dynamic_cast<View*>(child)) views.push_back(view);
    }
    return views;
}

class SwitchHUDTest : public testing::Test {
protected:
    void TearDown() override { Palette::setDark(false); }

    void show(const std::vector<std::string>& names, int selected = 0) { hud.show(names, selected, settings); }

    /// What carries the rows: the last child, above the background.
    QWidget& content() const { return *childrenOf<QWidget>(*panel.content()).back(); }
    std::vector<PlateView*> rows() const { return childrenOf<PlateView>(content()); }
    static PlateLabel& labelOf(const PlateView& row) { return *childrenOf<PlateLabel>(row).at(0); }
    const PlateView& background() const { return *childrenOf<PlateView>(*panel.content()).back(); }

    std::vector<int> highlighted() const {
        std::vector<int> result;
        for (int i = 0; const auto* row : rows()) {
            if (row->fill() != Palette::clear()) result.push_back(i);
            ++i;
        }
        return result;
    }

    QImage render() const {
        QImage image(panel.content()->size(), QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        panel.content()->render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
        return image.convertToFormat(QImage::Format_ARGB32);
    }

    FakePlatePanel panel;
    ManualQueue queue;
    SwitchHUD hud{panel, queue, false};
    PlateSettings settings;
};

TEST_F(SwitchHUDTest, AShortNameGivesTheNarrowestPlate) {
    show({"A"});
    EXPECT_EQ(panel.frame().size(), QSizeF(244, 76));
    ASSERT_EQ(rows().size(), 1U);
    EXPECT_EQ(rows()[0]->geometry(), QRect(12, 12, 220, 52));
}

TEST_F(SwitchHUDTest, NoNamesGiveAnEmptyPlate) {
    show({});
    EXPECT_EQ(panel.frame().size(), QSizeF(244, 24));
    EXPECT_TRUE(rows().empty());
    EXPECT_TRUE(panel.isVisible());
}

TEST_F(SwitchHUDTest, TheRowsAreStackedFromTheTopInTheGroupsOrder) {
    show({"One", "Two", "Three"});
    EXPECT_EQ(panel.frame().height(), 192);
    ASSERT_EQ(rows().size(), 3U);
    const std::vector<int> tops{12, 70, 128};
    const std::vector<QString> names{"One", "Two", "Three"};
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(rows()[i]->y(), tops[i]);
        EXPECT_EQ(rows()[i]->height(), 52);
        EXPECT_EQ(labelOf(*rows()[i]).text(), names[i]);
    }
}

TEST_F(SwitchHUDTest, TheWidestNameSetsTheWidthOfAllRows) {
    show({"English", "Українська (розкладка з дуже довгою назвою)", "Deutsch"}, 1);
    const int widest = labelOf(*rows()[1]).width();
    ASSERT_GT(widest, 156);
    for (const auto* row : rows())
        EXPECT_EQ(row->width(), widest + 64);
    EXPECT_EQ(panel.frame().width(), widest + 64 + 24);
}

TEST_F(SwitchHUDTest, NamesAreWrittenInTheRegularSystemFontAt21Points) {
    show({"English"});
    const auto& label = labelOf(*rows()[0]);
    EXPECT_EQ(label.font().pixelSize(), 21);
    EXPECT_EQ(label.font().weight(), QFont::Normal);
    EXPECT_EQ(label.font().family(), QFont().family());
}

TEST_F(SwitchHUDTest, ANameIsCentredInItsRowAtItsOwnSize) {
    show({"English"});
    const auto& label = labelOf(*rows()[0]);
    EXPECT_EQ(label.size(), label.sizeHint());
    EXPECT_EQ(label.x(), (220 - label.width()) / 2);
    EXPECT_EQ(label.y(), (52 - label.height()) / 2);
}

TEST_F(SwitchHUDTest, TheSelectedRowIsHighlighted) {
    show({"One", "Two", "Three"}, 1);
    EXPECT_EQ(highlighted(), std::vector<int>{1});
    EXPECT_EQ(rows()[1]->fill(), Palette::selection());
    EXPECT_EQ(rows()[1]->stroke(), Palette::clear());
    EXPECT_EQ(rows()[1]->radius(), 12);
}

TEST_F(SwitchHUDTest, ASelectionOutOfRangeHighlightsNothingAndShowsThePlate) {
    for (const int selected : {-1, 2, 1000}) {
        show({"One", "Two"}, selected);
        EXPECT_TRUE(highlighted().empty()) << selected;
        EXPECT_TRUE(panel.isVisible());
    }
}

TEST_F(SwitchHUDTest, ThePlateIsCentredInTheVisibleFrame) {
    panel.visibleFrameValue = QRectF(100, 30, 1000, 700);
    show({"A"});
    EXPECT_EQ(panel.frame(), QRectF(600 - 122, 380 - 38, 244, 76));
}

TEST_F(SwitchHUDTest, ThePanelIsFilledAndPlacedBeforeItIsShown) {
    show({"A"});
    EXPECT_EQ(panel.calls, (std::vector<std::string>{"setContent", "setFrame", "setAlpha", "orderFront"}));
    EXPECT_EQ(panel.alpha(), 1);
    EXPECT_EQ(panel.content()->size(), panel.frame().size().toSize());
}

TEST_F(SwitchHUDTest, ThePlateStaysForOneSecondAndFadesInAQuarter) {
    show({"A"});
    queue.advance(0.99);
    EXPECT_TRUE(panel.fades().empty());
    queue.advance(0.01);
    ASSERT_EQ(panel.fades().size(), 1U);
    EXPECT_EQ(panel.fades()[0].alpha, 0);
    EXPECT_EQ(panel.fades()[0].seconds, 0.25);
    EXPECT_TRUE(panel.isVisible());
    panel.finishFade();
    EXPECT_FALSE(panel.isVisible());
    EXPECT_EQ(queue.pendingCount(), 0U);
}

TEST_F(SwitchHUDTest, AnotherShowRestartsTheSecond) {
    show({"A", "B"}, 0);
    queue.advance(0.6);
    show({"A", "B"}, 1);
    EXPECT_EQ(queue.pendingCount(), 1U);
    queue.advance(0.99);
    EXPECT_TRUE(panel.fades().empty());
    EXPECT_EQ(highlighted(), std::vector<int>{1});
    queue.advance(0.01);
    EXPECT_EQ(panel.fades().size(), 1U);
}

TEST_F(SwitchHUDTest, AShowDuringTheFadeBringsThePlateBackForAFullSecond) {
    show({"A"});
    queue.advance(1.1);
    ASSERT_EQ(panel.fades().size(), 1U);
    show({"B"});
    EXPECT_EQ(panel.alpha(), 1);
    panel.finishFade();
    EXPECT_TRUE(panel.isVisible());
    queue.advance(0.99);
    EXPECT_TRUE(panel.fades().empty());
    queue.advance(0.01);
    ASSERT_EQ(panel.fades().size(), 1U);
    EXPECT_EQ(panel.fades()[0].alpha, 0);
    EXPECT_EQ(panel.fades()[0].seconds, 0.25);
    panel.finishFade();
    EXPECT_FALSE(panel.isVisible());
}

TEST_F(SwitchHUDTest, APlateThatFadedAwayComesBack) {
    show({"A"});
    queue.advance(1);
    ASSERT_EQ(panel.fades().size(), 1U);
    panel.finishFade();
    ASSERT_FALSE(panel.isVisible());
    ASSERT_EQ(panel.alpha(), 0);
    show({"A"});
    EXPECT_TRUE(panel.isVisible());
    EXPECT_EQ(panel.alpha(), 1);
}

struct Background {
    const char* name;
    PlateSettings settings;
    double opacity;
};

TEST_F(SwitchHUDTest, TheBackgroundIsTheCardAtTheResolvedOpacity) {
    const std::vector<Background> cases{
        {"default", PlateSettings(PlateVisibility::always), 0.8},
        {"solid", PlateSettings(PlateVisibility::always, PlateBackground::solid, 0.5), 0.5},
        {"opacity alone", PlateSettings(PlateVisibility::always, std::nullopt, 0.3), 0.3},
        {"glass", PlateSettings(PlateVisibility::always, PlateBackground::glass, 0.5), 0.7},
        {"invisible", PlateSettings(PlateVisibility::always, PlateBackground::solid, 0.0), 0.0},
    };
    for (const auto& [name, plateSettings, opacity] : cases) {
        settings = plateSettings;
        show({"A"});
        EXPECT_EQ(background().fill(), Palette::card().withAlpha(opacity)) << name;
        EXPECT_EQ(background().stroke(), Palette::border()) << name;
        EXPECT_EQ(background().radius(), 26) << name;
        EXPECT_EQ(background().geometry(), panel.content()->rect()) << name;
    }
}

TEST_F(SwitchHUDTest, WhereThereIsGlassItStandsForTheCardAndHasItsTint) {
    SwitchHUD glassHud(panel, queue, true);
    for (const bool isDark : {false, true}) {
        Palette::setDark(isDark);
        glassHud.show({"A"}, 0, settings);
        const QColor tint = Palette::card().withAlpha(0.7).resolved(isDark);
        EXPECT_EQ(panel.material(), (PlateMaterial{PlateMaterial::Kind::glass, 26, tint}));
        EXPECT_EQ(render().pixelColor(122, 2).alpha(), 0) << "no card is painted under glass";
        EXPECT_GT(render().pixelColor(20, 38).alpha(), 0) << "the selected row is";
    }
}

TEST_F(SwitchHUDTest, GlassThatTheSystemLacksIsABlurUnderTheCard) {
    settings = PlateSettings(PlateVisibility::always, PlateBackground::glass);
    show({"A"});
    EXPECT_EQ(panel.material(), (PlateMaterial{.kind = PlateMaterial::Kind::blur, .cornerRadius = 26}));
    EXPECT_EQ(background().fill(), Palette::card().withAlpha(0.7));
    panel.translucent = false;
    show({"A"});
    EXPECT_EQ(panel.material(), PlateMaterial()) << "nothing shows through an opaque plate";
}

TEST_F(SwitchHUDTest, ASolidPlateHasNothingBehindIt) {
    settings = PlateSettings(PlateVisibility::always, PlateBackground::solid);
    for (const bool glassAvailable : {false, true}) {
        SwitchHUD solidHud(panel, queue, glassAvailable);
        solidHud.show({"A"}, 0, settings);
        EXPECT_EQ(panel.material(), PlateMaterial());
        EXPECT_EQ(background().fill(), Palette::card().withAlpha(0.8));
    }
}

TEST_F(SwitchHUDTest, ThePictureHasThePalettesColors) {
    show({"A", "B"}, 0);
    const auto light = render();
    EXPECT_EQ(light.pixelColor(0, 0).alpha(), 0);
    EXPECT_EQ(light.pixelColor(122, 0), QColor(228, 226, 220));
    const QColor lightPlate = light.pixelColor(20, 40 + 58);
    EXPECT_EQ(lightPlate.alpha(), 204);
    EXPECT_NEAR(lightPlate.red(), 248, 1);
    EXPECT_NEAR(lightPlate.blue(), 244, 1);
    // 0.12 over 0.8 covers 0.824; the tint takes 0.12 of it.
    const QColor lightRow = light.pixelColor(20, 40);
    EXPECT_NEAR(lightRow.alpha(), 210, 1);
    EXPECT_NEAR(lightRow.red(), (27 * 0.12 + 248 * 0.8 * 0.88) / 0.824, 2);

    Palette::setDark(true);
    const auto dark = render();
    EXPECT_EQ(dark.pixelColor(122, 0), QColor(58, 61, 68));
    EXPECT_NEAR(dark.pixelColor(20, 40 + 58).red(), 38, 1);
    EXPECT_NEAR(dark.pixelColor(20, 40).red(), (236 * 0.16 + 38 * 0.8 * 0.84) / 0.832, 2);
}

TEST_F(SwitchHUDTest, NamesHaveTheColorOfPrimaryText) {
    for (const bool isDark : {false, true}) {
        Palette::setDark(isDark);
        show({"MMMM"});
        auto& label = labelOf(*rows()[0]);
        QImage image(label.size(), QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        label.render(&image, QPoint(), QRegion(), QWidget::DrawChildren);
        QColor strongest(0, 0, 0, 0);
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const QColor color = image.pixelColor(x, y);
                if (color.alpha() > strongest.alpha()) strongest = color;
            }
        }
        const int ink = isDark ? 255 : 0;
        EXPECT_NEAR(strongest.red(), ink, 1);
        EXPECT_NEAR(strongest.green(), ink, 1);
        EXPECT_NEAR(strongest.blue(), ink, 1);
        EXPECT_NEAR(strongest.alphaF(), 0.85, 0.02);
    }
}

TEST_F(SwitchHUDTest, TheMainScreenIsAskedForOncePerShow) {
    show({"A", std::string(200, 'w')});
    EXPECT_EQ(panel.visibleFrameCalls, 1);
}

TEST_F(SwitchHUDTest, WithoutACompositorThePlateIsOpaqueAndCutToItsRoundedShape) {
    panel.translucent = false;
    show({"A"});
    EXPECT_EQ(background().fill(), Palette::card());
    const auto mask = panel.content()->mask();
    EXPECT_EQ(mask.boundingRect(), panel.content()->rect());
    for (const QPoint corner : {QPoint(0, 0), QPoint(243, 0), QPoint(0, 75), QPoint(243, 75)}) {
        EXPECT_FALSE(mask.contains(corner));
    }
    const auto image = render();
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (!mask.contains(QPoint(x, y))) continue;
            ASSERT_EQ(image.pixelColor(x, y).alpha(), 255) << x << ", " << y;
        }
    }
}

TEST_F(SwitchHUDTest, ACompositorThatComesUpMakesTheNextPlateTranslucent) {
    panel.translucent = false;
    show({"A"});
    panel.translucent = true;
    show({"A"});
    EXPECT_TRUE(panel.content()->mask().isEmpty());
    EXPECT_EQ(background().fill(), Palette::card().withAlpha(0.8));
}

TEST_F(SwitchHUDTest, NamesAreShownAsTheyAreWritten) {
    for (const char* name : {"<b>bold</b>", "Q&A", "&File", "%1"}) {
        show({name});
        EXPECT_EQ(labelOf(*rows()[0]).text(), QString::fromUtf8(name));
        EXPECT_EQ(labelOf(*rows()[0]).textFormat(), Qt::PlainText);
    }
}

TEST_F(SwitchHUDTest, ANameWithLineBreaksStaysOnOneLine) {
    show({"English"});
    const int oneLine = labelOf(*rows()[0]).height();
    for (const char* name : {"a\nb", "a\r\nb\tc",
                             "a\xE2\x80\xA8"
                             "b"}) {
        show({name});
        EXPECT_EQ(labelOf(*rows()[0]).height(), oneLine);
        EXPECT_FALSE(labelOf(*rows()[0]).text().contains(QChar(QChar::LineFeed)));
    }
}

TEST_F(SwitchHUDTest, AnEndlessNameIsElidedToTheScreen) {
    panel.visibleFrameValue = QRectF(0, 0, 800, 600);
    show({"A", std::string(1'000'000, 'w')}, 1);
    EXPECT_EQ(panel.frame(), QRectF(0, 300 - 67, 800, 134));
    EXPECT_EQ(labelOf(*rows()[1]).width(), 800 - 24 - 64);
}

TEST_F(SwitchHUDTest, BrokenTextIsShownWithReplacements) {
    show({"\xff\xfe", "ok"}, 1);
    EXPECT_EQ(rows().size(), 2U);
    EXPECT_EQ(labelOf(*rows()[1]).text(), "ok");
}

TEST_F(SwitchHUDTest, AssistiveToolsReadTheSelectedName) {
    show({"English", "Q&A"}, 1);
    EXPECT_EQ(panel.content()->accessibleName(), "Q&A");
}

}  // namespace
}  // namespace quillmere
