#include "Fixtures/Desktops.h"
#include "Fixtures/WindowTest.h"

#include <QScrollBar>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <map>

namespace reelkeep {
namespace {

using enum WindowState;

/// The window as it is painted in a theme.
class ContentViewColour : public WindowTest {
protected:
    void show(const QPalette& palette, WindowState state, int width = 1148)
    {
        change.emplace(palette);
        enterState(state);
        resizeToContent(width);
        content->setFocus(); // So that no focus ring is drawn.
        settle();
        window->scrollArea()->verticalScrollBar()->setValue(0);
        image = picture(*window);
    }
    QRect placeOf(const QWidget& widget) const { return {widget.mapTo(window.get(), QPoint()), widget.size()}; }
    QColor at(int x, int y) const { return image.pixelColor(x, y); }
    /// The background of a rectangle: its most common colour. Shades of one gradient count as one.
    QColor groundOf(const QRect& place) const
    {
        struct Shade {
            int count = 0;
            QRgb color = 0;
        };
        std::map<QRgb, Shade> shades;
        const QRect inside = place & image.rect();
        for (int y = inside.top(); y <= inside.bottom(); ++y) {
            for (int x = inside.left(); x <= inside.right(); ++x) {
                Shade& shade = shades[image.pixel(x, y) & 0xf8f8f8];
                ++shade.count;
                shade.color = image.pixel(x, y);
            }
        }
        return QColor(std::max_element(shades.begin(), shades.end(), [](const auto& a, const auto& b) {
                          return a.second.count < b.second.count;
                      })->second.color);
    }
    double ratioOf(const TextWidget& words) const
    {
        const QColor ground = groundOf(placeOf(words).adjusted(-4, -2, 4, 2));
        const QColor ink = Appearance::over(words.color().resolved(Appearance::of(&words)), ground);
        return Appearance::contrast(ink, ground);
    }
    std::optional<PaletteChange> change;
    QImage image;
};

/// Texts that keep the exact accent whatever its contrast. Their meaning never depends on the colour alone.
bool isNamedException(const TextWidget& words)
{
    static const QStringList names = {QStringLiteral("Paso 1"), QStringLiteral("Paso 2"), QStringLiteral("Paso 3"),
                                      QStringLiteral("Listo"), QStringLiteral("Copia")};
    return names.contains(words.text()) && words.color().level == TextColor::Level::accent;
}

struct Theme {
    const char* name;
    WindowState state;
};
void PrintTo(const Theme& theme, std::ostream* stream)
{
    *stream << theme.name << ", " << theme.state;
}
class ContentViewColourContrast : public ContentViewColour, public testing::WithParamInterface<Theme> {
protected:
    static QPalette paletteNamed(const std::string& name)
    {
        auto palettes = commonPalettes();
        const auto highContrast = highContrastPalettes();
        palettes.insert(palettes.end(), highContrast.begin(), highContrast.end());
        return std::find_if(palettes.begin(), palettes.end(), [&](const auto& named) { return named.name == name; })
            ->palette;
    }
};

TEST_P(ContentViewColourContrast, isSufficientForEveryTextExceptTheNamedOnes)
{
    show(paletteNamed(GetParam().name), GetParam().state);
    std::map<std::string, double> exceptions;
    for (const TextWidget* words : shownTexts(*content)) {
        const double ratio = ratioOf(*words);
        if (isNamedException(*words)) {
            double& least = exceptions.try_emplace(words->text().toStdString(), ratio).first->second;
            least = std::min(least, ratio);
            EXPECT_EQ(words->color().resolved(Appearance::of(words)).rgb(), words->color().accent.rgb());
        } else {
            EXPECT_GE(ratio, 4.5) << words->text().toStdString();
        }
    }
    for (const auto& [words, ratio] : exceptions)
        std::cout << GetParam().name << ": \"" << words << "\" keeps its accent at " << ratio << ":1\n";
}

TEST_P(ContentViewColourContrast, isSufficientOnEveryEnabledControl)
{
    show(paletteNamed(GetParam().name), GetParam().state);
    int examined = 0;
    for (const Button* button : content->findChildren<Button*>()) {
        if (!button->isVisible() || !button->isEnabled())
            continue;
        ++examined;
        // The face, and the pixel with the most contrast to it, which is inside a letter.
        const QRect place = placeOf(*button);
        const QColor face = groundOf(place.adjusted(3, 3, -3, -3));
        double best = 1;
        for (int y = place.top() + 6; y < place.bottom() - 6; ++y) {
            for (int x = place.left() + 8; x < place.right() - 8; ++x)
                best = std::max(best, Appearance::contrast(at(x, y), face));
        }
        EXPECT_GE(best, 4.5) << button->text().toStdString() << " on " << written(face);
    }
    EXPECT_GE(examined, 3);
}

INSTANTIATE_TEST_SUITE_P(Themes, ContentViewColourContrast,
                         testing::Values(Theme{"light", fresh}, Theme{"light", analysed}, Theme{"light", copying},
                                         Theme{"light", allSaved}, Theme{"dark", fresh}, Theme{"dark", analysed},
                                         Theme{"dark", copying}, Theme{"dark", allSaved}, Theme{"Breeze", analysed},
                                         Theme{"Breeze Dark", analysed}, Theme{"Adwaita", analysed},
                                         Theme{"Adwaita Dark", analysed}, Theme{"Yaru Dark", analysed},
                                         Theme{"black on white", analysed}, Theme{"white on black", analysed}));

struct ThemeColours {
    const char* name;
    QPalette (*palette)();
    QColor window, plateStart, plateEnd, pill, reviewRow, listBase;
    QColor blueBox, blueStroke, greenBox, greenStroke, orangeBox, orangeStroke;
    QColor copyPanelStart, copyPanelStroke, greyBadge, greyDot;
    std::map<std::string, std::pair<double, double>> exceptions; ///< Lowest and highest ratio.
};
void PrintTo(const ThemeColours& theme, std::ostream* stream)
{
    *stream << theme.name;
}
class ContentViewColourTable : public ContentViewColour, public testing::WithParamInterface<ThemeColours> {
protected:
    QWidget& boxOf(const QString& words) const { return *text(words).parentWidget(); }
    /// The middle of the leading edge: stroke over fill.
    QColor strokeOf(const QWidget& widget) const
    {
        const QRect place = placeOf(widget);
        return at(place.left(), place.center().y());
    }
    /// Near the trailing edge, where there is no text.
    QColor fillOf(const QWidget& widget) const
    {
        const QRect place = placeOf(widget);
        return at(place.right() - 5, place.center().y());
    }
};

TEST_P(ContentViewColourTable, isPainted)
{
    const ThemeColours& expected = GetParam();
    show(expected.palette(), analysed);
    expectClose(at(4, 4), expected.window, "window");
    const QRect plate = placeOf(part(QStringLiteral("Paso 1, Camara o tarjeta")));
    expectClose(at(plate.left() + 9, plate.top() + 9), expected.plateStart, "plate start");
    expectClose(at(plate.right() - 9, plate.bottom() - 9), expected.plateEnd, "plate end");
    expectClose(fillOf(part(QStringLiteral("1, Camara, origen"))), expected.pill, "pill");
    expectClose(fillOf(part(QStringLiteral("Disco B, /media/ana/Disco B"))), expected.reviewRow, "review row");
    expectClose(fillOf(part(QStringLiteral("En camara: 27, videos detectados"))), expected.window, "card");
    expectClose(fillOf(*list()), expected.listBase, "list");

    const QWidget& blueBox = boxOf(QStringLiteral("EOS_DIGITAL"));
    expectClose(fillOf(blueBox), expected.blueBox, "path box of step 1");
    expectClose(strokeOf(blueBox), expected.blueStroke, "its stroke");
    const QWidget& greenBox =
        *textIn(QStringLiteral("Paso 2, Destino de copia"), QStringLiteral("Archivo 2026")).parentWidget();
    expectClose(fillOf(greenBox), expected.greenBox, "path box of step 2");
    expectClose(strokeOf(greenBox), expected.greenStroke, "its stroke");
    const QWidget& orangeBox = boxOf(QStringLiteral("3 ubicaciones seleccionadas"));
    expectClose(fillOf(orangeBox), expected.orangeBox, "count box");
    expectClose(strokeOf(orangeBox), expected.orangeStroke, "its stroke");

    const QRect copyPanel = placeOf(part(QStringLiteral("Copiar lo que falta")));
    expectClose(at(copyPanel.left() + 9, copyPanel.top() + 9), expected.copyPanelStart, "copy panel start");
    expectClose(at(copyPanel.left() + 20, copyPanel.top()), expected.copyPanelStroke, "its stroke");
}

TEST_P(ContentViewColourTable, isPaintedWhileNothingIsChosen)
{
    const ThemeColours& expected = GetParam();
    show(expected.palette(), fresh);
    const TextWidget& pending = textIn(QStringLiteral("Paso 1, Camara o tarjeta"), QStringLiteral("Pendiente"));
    const QRect badge = placeOf(*pending.parentWidget());
    expectClose(at(badge.right() - 6, badge.center().y()), expected.greyBadge, "grey badge");
    expectClose(at(badge.left() + 10 + 4, badge.center().y()), expected.greyDot, "grey dot");
    const QWidget& empty = boxOf(QStringLiteral("Todo lo de la camara ya esta en las ubicaciones revisadas"));
    expectClose(fillOf(empty), expected.pill, "empty state");
}

TEST_P(ContentViewColourTable, givesTheContrastOfTheNamedExceptions)
{
    show(GetParam().palette(), analysed);
    int met = 0;
    for (const TextWidget* words : shownTexts(*content)) {
        const auto range = GetParam().exceptions.find(words->text().toStdString());
        if (range == GetParam().exceptions.end())
            continue;
        ++met;
        EXPECT_GE(ratioOf(*words), range->second.first - 0.2) << range->first;
        EXPECT_LE(ratioOf(*words), range->second.second + 0.2) << range->first;
    }
    EXPECT_EQ(met, 7) << "three steps, three badges, one tag";
}

const ThemeColours lightColours = {
    .name = "light",
    .palette = lightPalette,
    .window = grey(236),
    .plateStart = grey(237),
    .plateEnd = grey(236),
    .pill = grey(237),
    .reviewRow = grey(237),
    .listBase = grey(255),
    .blueBox = QColor(220, 228, 237),
    .blueStroke = QColor(185, 211, 237),
    .greenBox = QColor(221, 232, 227),
    .greenStroke = QColor(188, 222, 207),
    .orangeBox = QColor(237, 229, 221),
    .orangeStroke = QColor(237, 214, 192),
    .copyPanelStart = QColor(216, 230, 224),
    .copyPanelStroke = QColor(177, 218, 200),
    .greyBadge = grey(222),
    .greyDot = grey(182),
    .exceptions = {{"Paso 1", {3.2, 3.2}},
                   {"Paso 2", {2.4, 2.4}},
                   {"Paso 3", {2.2, 2.2}},
                   {"Listo", {2.0, 2.8}},
                   {"Copia", {2.1, 2.1}}},
};

const ThemeColours darkColours = {
    .name = "dark",
    .palette = darkPalette,
    .window = grey(36),
    .plateStart = grey(47),
    .plateEnd = grey(41),
    .pill = grey(45),
    .reviewRow = grey(53),
    .listBase = grey(28),
    .blueBox = QColor(43, 51, 60),
    .blueStroke = QColor(40, 66, 92),
    .greenBox = QColor(44, 55, 50),
    .greenStroke = QColor(43, 77, 62),
    .orangeBox = QColor(60, 51, 44),
    .orangeStroke = QColor(88, 65, 43),
    .copyPanelStart = QColor(36, 50, 44),
    .copyPanelStroke = QColor(37, 78, 59),
    .greyBadge = grey(57),
    .greyDot = grey(92),
    .exceptions = {{"Paso 1", {3.6, 21}},
                   {"Paso 2", {3.6, 21}},
                   {"Paso 3", {3.6, 21}},
                   {"Listo", {3.3, 4.4}},
                   {"Copia", {3.6, 3.6}}},
};

INSTANTIATE_TEST_SUITE_P(Themes, ContentViewColourTable, testing::Values(lightColours, darkColours));

TEST_F(ContentViewColour, putsASoftShadowOnlyUnderWhiteButtons)
{
    show(lightPalette(), analysed);
    const auto below = [this](const QWidget& control) {
        const QRect place = placeOf(control);
        return at(place.center().x(), place.bottom() + 1).lightness() -
               at(place.center().x(), place.bottom() + 3).lightness();
    };
    Button& onlyDestination = button(QStringLiteral("Usar solo HD de copia"));
    EXPECT_NEAR(below(onlyDestination), 224 - 237, 2);
    EXPECT_NEAR(below(*chooser()), 224 - 237, 3);
    EXPECT_EQ(below(button(QStringLiteral("Anadir ubicaciones"))), 0);
    session().setCopyDestinationFolder(std::nullopt);
    settle();
    image = picture(*window);
    ASSERT_FALSE(onlyDestination.isEnabled());
    EXPECT_EQ(below(onlyDestination), 0);
    change.reset();
    show(darkPalette(), analysed);
    EXPECT_EQ(below(onlyDestination), 0);
}

TEST_F(ContentViewColour, followsAChangeOfTheThemeWhileOpen)
{
    show(lightPalette(), analysed);
    const QImage light = image;
    change.reset();
    change.emplace(darkPalette());
    settle();
    const QImage dark = picture(*window);
    const QRect step = placeOf(part(QStringLiteral("Paso 1, Camara o tarjeta")));
    const QRect listPlace = placeOf(*list());
    for (const QPoint& place :
         {QPoint(4, 4), step.topLeft() + QPoint(20, 9), listPlace.center(), QPoint(24 + 20, 102 + 8)}) {
        EXPECT_GT(light.pixelColor(place).lightness(), 200);
        EXPECT_LT(dark.pixelColor(place).lightness(), 80);
    }
    const auto darkest = [](const QImage& of, const QRect& place) {
        int level = 255;
        for (int y = place.top(); y <= place.bottom(); ++y) {
            for (int x = place.left(); x <= place.right(); ++x)
                level = std::min(level, of.pixelColor(x, y).lightness());
        }
        return level;
    };
    const QRect title = placeOf(text(QStringLiteral("Videos pendientes")));
    EXPECT_LT(darkest(light, title), 60) << "dark letters";
    EXPECT_GE(darkest(dark, title), 35) << "no dark letters";
    change.reset();
    change.emplace(lightPalette());
    settle();
    EXPECT_EQ(picture(*window), light) << "as before";
}

TEST_F(ContentViewColour, keepsTheAccentsInBothThemes)
{
    show(lightPalette(), analysed);
    const QRect tile = placeOf(part(QStringLiteral("Paso 3, Ubicaciones a revisar"))).translated(18, 18);
    const QColor lightTile = at(tile.left() + 12, tile.top() + 12);
    change.reset();
    change.emplace(darkPalette());
    settle();
    image = picture(*window);
    expectClose(at(tile.left() + 12, tile.top() + 12), lightTile, "tile of step 3");
}

} // namespace
} // namespace reelkeep
