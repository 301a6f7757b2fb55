#include "Fixtures/Desktops.h"
#include "Fixtures/Widgets.h"
#include "UI/Design.h"

#include <QPainter>

#include <gtest/gtest.h>

namespace reelkeep {
namespace {

double ratioOnWindow(const QColor& color, const Appearance& appearance)
{
    return Appearance::contrast(Appearance::over(color, appearance.window()), appearance.window());
}

TEST(Appearance, recognisesDarkPalettes)
{
    EXPECT_FALSE(Appearance(lightPalette()).isDark());
    EXPECT_TRUE(Appearance(darkPalette()).isDark());
    for (const auto& [name, palette] : commonPalettes())
        EXPECT_EQ(Appearance(palette).isDark(), name == "dark" || name.find("Dark") != std::string::npos) << name;
}

TEST(Appearance, recognisesHighContrastPalettes)
{
    for (const auto& [name, palette] : highContrastPalettes())
        EXPECT_TRUE(Appearance(palette).isHighContrast()) << name;
    for (const auto& [name, palette] : commonPalettes())
        EXPECT_FALSE(Appearance(palette).isHighContrast()) << name;
}

TEST(Appearance, hasTheTextColoursOfTheDesign)
{
    const Appearance light(lightPalette());
    expectClose(Appearance::over(light.primary(), light.window()), grey(31), "primary, light");
    expectClose(Appearance::over(light.secondary(), light.window()), grey(99), "secondary, light");
    expectClose(Appearance::over(light.tertiary(), light.window()), grey(104), "tertiary, light");
    const Appearance dark(darkPalette());
    expectClose(Appearance::over(dark.primary(), dark.window()), grey(227), "primary, dark");
    expectClose(Appearance::over(dark.secondary(), dark.window()), grey(163), "secondary, dark");
    expectClose(Appearance::over(dark.tertiary(), dark.window()), grey(146), "tertiary, dark");
}

TEST(Appearance, derivesStrokesAndGreyFillsFromAWeakerSecondaryThanTexts)
{
    const Appearance light(lightPalette());
    expectClose(Appearance::over(light.secondaryFill(0.15), grey(237)), grey(218), "stroke, light");
    expectClose(Appearance::over(light.secondaryFill(0.12), grey(237)), grey(222), "badge, light");
    expectClose(Appearance::over(light.secondaryFill(0.35), grey(237)), grey(194), "dot, light");
    const Appearance dark(darkPalette());
    expectClose(Appearance::over(dark.secondaryFill(0.15), grey(45)), grey(61), "stroke, dark");
    expectClose(Appearance::over(dark.secondaryFill(0.12), grey(45)), grey(57), "badge, dark");
    expectClose(Appearance::over(dark.secondaryFill(0.35), grey(45)), grey(83), "dot, dark");
}

TEST(Appearance, hasTheAccentsInBothThemes)
{
    expectClose(accent::analysisBlue, {26, 133, 240}, "analysis blue");
    expectClose(accent::copyGreen, {38, 176, 115}, "copy green");
    expectClose(accent::reviewOrange, {237, 135, 38}, "review orange");
    expectClose(accent::darkReviewOrange, {186, 94, 26}, "dark review orange");
    for (const QPalette& palette : {lightPalette(), darkPalette()})
        EXPECT_EQ(Tint::of(accent::copyGreen).resolved(Appearance(palette)).rgb(), accent::copyGreen.rgb());
}

TEST(Appearance, shadesProminentFacesUntilWhiteIsReadable)
{
    expectClose(Appearance::prominentFace(accent::analysisBlue), {22, 117, 211}, "blue face");
    expectClose(Appearance::prominentFace(accent::copyGreen), {29, 132, 86}, "green face");
    expectClose(Appearance::prominentFace(accent::reviewOrange), {171, 97, 28}, "orange face");
    for (const QColor& tint : {accent::analysisBlue, accent::copyGreen, accent::reviewOrange, QColor(Qt::yellow)})
        EXPECT_GE(Appearance::contrast(Appearance::prominentFace(tint), Qt::white), 4.5);
}

TEST(Appearance, leavesAFaceThatIsDarkEnoughAlone)
{
    EXPECT_EQ(Appearance::prominentFace({0, 0, 120}).rgb(), QColor(0, 0, 120).rgb());
}

TEST(Appearance, computesContrastByThePublishedFormula)
{
    EXPECT_NEAR(Appearance::contrast(Qt::black, Qt::white), 21, 0.001);
    EXPECT_NEAR(Appearance::contrast(Qt::white, Qt::white), 1, 0.001);
    EXPECT_NEAR(Appearance::contrast(grey(118), Qt::white), 4.54, 0.01);
}

TEST(Appearance, mixesATranslucentColourWithItsBackground)
{
    EXPECT_EQ(Appearance::over(QColor(0, 0, 0, 51), Qt::white).rgb(), QColor(204, 204, 204).rgb());
    EXPECT_EQ(Appearance::over(Qt::red, Qt::white).rgb(), QColor(Qt::red).rgb());
}

TEST(Appearance, keepsEveryTextReadableOnTheBackgroundsOfCommonDesktops)
{
    for (const auto& [name, palette] : commonPalettes()) {
        const Appearance appearance(palette);
        for (const QColor& ground : {appearance.window(), appearance.listBase()}) {
            for (const QColor& color : {appearance.primary(), appearance.secondary(), appearance.tertiary()})
                EXPECT_GE(Appearance::contrast(Appearance::over(color, ground), ground), 4.5)
                    << name << " on " << written(ground);
        }
    }
}

TEST(Appearance, keepsSecondaryTextReadableOnTintedBoxesOfCommonDesktops)
{
    for (const auto& [name, palette] : commonPalettes()) {
        const Appearance appearance(palette);
        const QColor plate = Appearance::over(Tint::white(0.05).resolved(appearance), appearance.window());
        for (const QColor& tint : {accent::analysisBlue, accent::copyGreen, accent::reviewOrange}) {
            const QColor box = Appearance::over(Tint::of(tint, 0.10).resolved(appearance), plate);
            EXPECT_GE(Appearance::contrast(Appearance::over(appearance.secondary(), box), box), 4.5)
                << name << " on " << written(box);
        }
    }
}

TEST(Appearance, keepsTheOrderOfItsTextLevels)
{
    for (const auto& [name, palette] : commonPalettes()) {
        const Appearance appearance(palette);
        EXPECT_GT(ratioOnWindow(appearance.primary(), appearance), ratioOnWindow(appearance.secondary(), appearance));
        EXPECT_GE(ratioOnWindow(appearance.secondary(), appearance), ratioOnWindow(appearance.tertiary(), appearance));
    }
}

TEST(Appearance, leavesNothingFaintInHighContrast)
{
    for (const auto& [name, palette] : highContrastPalettes()) {
        const Appearance appearance(palette);
        EXPECT_GE(ratioOnWindow(appearance.primary(), appearance), 20) << name;
        EXPECT_GE(ratioOnWindow(appearance.secondary(), appearance), 7) << name;
        EXPECT_GE(ratioOnWindow(appearance.tertiary(), appearance), 7) << name;
        EXPECT_GE(ratioOnWindow(appearance.buttonEdge(), appearance), 3) << name;
        EXPECT_GE(ratioOnWindow(Tint::secondary(0.15).resolved(appearance), appearance), 3) << name;
        EXPECT_GE(ratioOnWindow(appearance.focusRing(), appearance), 3) << name;
    }
}

TEST(Appearance, hasAVisibleFocusRingOnEveryDesktop)
{
    for (const auto& [name, palette] : commonPalettes()) {
        const Appearance appearance(palette);
        EXPECT_GE(ratioOnWindow(appearance.focusRing(), appearance), 3) << name;
    }
}

TEST(AppearanceTypeStyle, hasTheLineHeightsOfTheDesign)
{
    if (!isDesignFontInstalled())
        GTEST_SKIP() << "Inter is not installed";
    struct Size {
        double size;
        double lineHeight;
        QFont::Weight weight;
    };
    for (const Size& given :
         {Size{13, 16, QFont::Normal}, Size{13, 16, QFont::DemiBold}, Size{15, 20, QFont::DemiBold},
          Size{10, 13, QFont::Normal}, Size{28, 34, QFont::Bold}, Size{12, 15, QFont::Bold},
          Size{11, 14, QFont::DemiBold}, Size{18, 22, QFont::DemiBold}, Size{20, 24, QFont::DemiBold},
          Size{26, 31, QFont::Bold}, Size{30, 36, QFont::DemiBold}}) {
        const TypeStyle style{.size = given.size, .lineHeight = given.lineHeight, .weight = given.weight};
        EXPECT_EQ(style.font().pixelSize(), given.size);
        EXPECT_EQ(style.font().weight(), given.weight);
        EXPECT_EQ(style.height(), given.lineHeight);
    }
}

TEST(AppearanceTypeStyle, usesAFixedWidthFontForPaths)
{
    EXPECT_EQ(QFontMetrics(type::monospacedCaption.font()).horizontalAdvance(u'i'),
              QFontMetrics(type::monospacedCaption.font()).horizontalAdvance(u'W'));
    EXPECT_EQ(type::monospacedCaption.height(), 13);
}

TEST(AppearanceTypeStyle, scalesWithTheUsersFont)
{
    for (const double scale : {1.5, 2.0}) {
        const FontChange change(designFont(scale));
        EXPECT_NEAR(type::title3.font().pixelSize(), 15 * scale, 1) << scale;
        EXPECT_NEAR(type::title3.height(), 20 * scale, 1) << scale;
    }
}

/// A box on white, painted for a scale of the screen.
QImage drawn(const Background& background, const QRectF& rect, double scale)
{
    QImage image(QSize(100, 60) * scale, QImage::Format_RGB32);
    image.setDevicePixelRatio(scale);
    image.fill(Qt::white);
    QPainter painter(&image);
    paint(painter, rect, background, Appearance(lightPalette()));
    return image;
}

TEST(AppearanceBoxGround, hasItsHairlineOnWholePixelsAtEveryScale)
{
    const Background box{.stroke = Tint::of(Qt::black), .radius = 12};
    for (const double scale : {1.0, 1.25, 1.5, 2.0}) {
        const QImage image = drawn(box, QRectF(10.4, 10.4, 80, 40), scale);
        const int middle = int(30 * scale);
        int black = 0;
        int blurred = 0;
        for (int x = 0; x < image.width() / 2; ++x) {
            const int level = image.pixelColor(x, middle).lightness();
            black += level < 5;
            blurred += level >= 5 && level < 250;
        }
        EXPECT_EQ(black, scale == 2.0 ? 2 : 1) << scale;
        EXPECT_EQ(blurred, 0) << scale;
    }
}

TEST(AppearanceBoxGround, staysInsideItsEdges)
{
    const QImage image = drawn({.fill = Tint::of(Qt::black), .stroke = Tint::of(Qt::black)}, QRectF(10, 10, 80, 40), 1);
    EXPECT_EQ(image.pixelColor(9, 30), QColor(Qt::white));
    EXPECT_EQ(image.pixelColor(10, 30), QColor(Qt::black));
    EXPECT_EQ(image.pixelColor(89, 30), QColor(Qt::black));
    EXPECT_EQ(image.pixelColor(90, 30), QColor(Qt::white));
}

TEST(AppearanceBoxGround, runsFromTheTopLeftToTheBottomRightCorner)
{
    const QImage image = drawn({.fill = Tint::of(Qt::black), .fillEnd = Tint::of(Qt::red)}, QRectF(0, 0, 100, 60), 1);
    EXPECT_LT(image.pixelColor(1, 1).red(), 10);
    EXPECT_GT(image.pixelColor(98, 58).red(), 245);
    EXPECT_NEAR(image.pixelColor(50, 30).red(), 127, 5);
}

TEST(AppearanceBoxGround, isHalfwayInTheOtherCornersWhateverItsShape)
{
    for (const QRectF& rect : {QRectF(0, 0, 100, 60), QRectF(0, 0, 100, 10), QRectF(0, 0, 20, 60)}) {
        const QImage image = drawn({.fill = Tint::of(Qt::black), .fillEnd = Tint::of(Qt::red)}, rect, 1);
        EXPECT_NEAR(image.pixelColor(int(rect.right()) - 1, 0).red(), 127, 14) << rect.width();
        EXPECT_NEAR(image.pixelColor(0, int(rect.bottom()) - 1).red(), 127, 14) << rect.width();
    }
}

/// How often a colour channel changes in the wrong direction along the diagonal of a plate on the window.
int turns(const Plate& plate, const QPalette& palette, int (QColor::*channel)() const)
{
    const Appearance appearance(palette);
    QImage image(1100, 222, QImage::Format_ARGB32_Premultiplied);
    image.fill(appearance.window());
    QPainter painter(&image);
    paint(painter, image.rect(), plate.background, appearance);
    const auto at = [&](int x) { return (image.pixelColor(x, 20 + x * 180 / 1100).*channel)(); };
    const bool rises = at(1080) > at(20);
    int count = 0;
    for (int x = 21; x <= 1080; ++x)
        count += rises ? at(x) < at(x - 1) : at(x) > at(x - 1);
    return count;
}

TEST(AppearanceBoxGround, onlyRisesOrFallsAlongAGradient)
{
    for (const QPalette& palette : {lightPalette(), darkPalette()}) {
        for (const Plate& plate :
             {plate::card, plate::copyPanel, plate::tile(accent::analysisBlue), plate::reviewTile}) {
            EXPECT_EQ(turns(plate, palette, &QColor::red), 0);
            EXPECT_EQ(turns(plate, palette, &QColor::green), 0);
            EXPECT_EQ(turns(plate, palette, &QColor::blue), 0);
        }
    }
}

TEST(AppearanceBoxGround, isACapsuleIfItsRadiusIsMoreThanHalfItsHeight)
{
    const QImage image = drawn({.fill = Tint::of(Qt::black), .radius = 99}, QRectF(0, 0, 100, 60), 1);
    EXPECT_EQ(image.pixelColor(3, 3), QColor(Qt::white));
    EXPECT_EQ(image.pixelColor(1, 30), QColor(Qt::black));
    EXPECT_EQ(image.pixelColor(50, 1), QColor(Qt::black));
}

} // namespace
} // namespace reelkeep
