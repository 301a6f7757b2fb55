#include "Fixtures/Desktops.h"
#include "Fixtures/WindowTest.h"

#include <QPainter>
#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace reelkeep {
namespace {

using enum WindowState;

/// A part of the content, painted enlarged so that fractions of a point can be measured.
class Enlarged {
public:
    Enlarged(QWidget& content, const QRect& part, int enlargement)
        : origin(part.topLeft()), scale(enlargement), image(part.size() * enlargement, QImage::Format_RGB32)
    {
        image.setDevicePixelRatio(scale);
        image.fill(content.palette().color(QPalette::Window));
        QPainter painter(&image);
        content.render(&painter, QPoint(), QRegion(part));
    }

    /// The distance from a point of the content to the next change of colour in a direction; -1 if there is none.
    double toChange(QPointF from, QPointF direction, int threshold = 6) const
    {
        const QColor ground = at(from);
        const double step = 1.0 / scale;
        for (double distance = step; distance < 2000; distance += step) {
            const QPointF place = from + direction * distance;
            if (!image.rect().contains(toPixel(place)))
                break;
            if (difference(at(place), ground) > threshold)
                return distance;
        }
        return -1;
    }
    double right(double x, double y) const { return x + toChange({x, y}, {1, 0}); }
    double left(double x, double y) const { return x - toChange({x, y}, {-1, 0}) + 1.0 / scale; }
    double down(double x, double y) const { return y + toChange({x, y}, {0, 1}); }
    double up(double x, double y) const { return y - toChange({x, y}, {0, -1}) + 1.0 / scale; }

    /// The bounds of what is drawn in a rectangle whose top left corner shows the background, in points.
    QRectF inkIn(const QRectF& place) const
    {
        const QColor ground = at(place.topLeft());
        const QRect pixels(toPixel(place.topLeft()), (place.size() * scale).toSize());
        QRect ink;
        for (int y = pixels.top(); y <= pixels.bottom(); ++y) {
            for (int x = pixels.left(); x <= pixels.right(); ++x) {
                if (difference(image.pixelColor(x, y), ground) > 60)
                    ink |= QRect(x, y, 1, 1);
            }
        }
        return {ink.x() / scale + origin.x(), ink.y() / scale + origin.y(), ink.width() / scale, ink.height() / scale};
    }

private:
    QPoint toPixel(QPointF place) const
    {
        return {int(std::floor((place.x() - origin.x()) * scale)), int(std::floor((place.y() - origin.y()) * scale))};
    }
    QColor at(QPointF place) const { return image.pixelColor(toPixel(place)); }
    static int difference(const QColor& one, const QColor& other)
    {
        return std::max({std::abs(one.red() - other.red()), std::abs(one.green() - other.green()),
                         std::abs(one.blue() - other.blue())});
    }

    QPoint origin;
    double scale;
    QImage image;
};

/// Distances, sizes, corners and letters as they are painted, compared with the numbers of the design.
class ContentViewMeasure : public WindowTest {
protected:
    void SetUp() override
    {
        if (!isDesignFontInstalled())
            GTEST_SKIP() << "the measures are those of Inter, which is not installed";
    }
    void show(WindowState state)
    {
        enterState(state);
        resizeToContent(1148);
        content->setFocus();
        settle();
    }
    Enlarged enlarged() const { return {*content, content->rect(), 4}; }
    QRect placeOf(const QWidget& widget) const { return {widget.mapTo(content, QPoint()), widget.size()}; }
    QRect partAt(const char* name) const { return placeOf(part(QString::fromLatin1(name))); }
};

const char* const pill1 = "1, Camara, origen";
const char* const step1 = "Paso 1, Camara o tarjeta";
const char* const step2 = "Paso 2, Destino de copia";
const char* const step3 = "Paso 3, Ubicaciones a revisar";
const char* const row1 = "Archivo 2026, /media/ana/Archivo 2026, Copia";
const char* const row2 = "Disco B, /media/ana/Disco B";
const char* const card1 = "En camara: 27, videos detectados";

/// Tolerance of a distance to a letter: its ink begins a little inside its box.
constexpr double bearing = 1.5;
constexpr double exact = 0.26;

TEST_F(ContentViewMeasure, hasTheDistancesOfTheDesignBetweenItsPlates)
{
    show(analysed);
    const Enlarged seen = enlarged();
    const QRect pill = partAt(pill1);
    const QRect plate = partAt(step1);
    const double middle = plate.center().y();
    EXPECT_NEAR(seen.right(0.5, middle), 24, exact) << "window padding";
    EXPECT_NEAR(seen.left(1147.5, middle), 1148 - 24, exact) << "trailing window padding";
    const double x = 24 + 60;
    const double pillTop = seen.down(x, pill.top() - 6);
    const double pillBottom = seen.up(x, pill.bottom() + 6);
    EXPECT_NEAR(pillTop, 102, exact) << "top of the pills";
    EXPECT_NEAR(pillBottom - pillTop, 56, exact) << "height of a pill";
    const double gap = pill.right() + 6;
    EXPECT_NEAR(seen.right(gap, pill.center().y()) - seen.left(gap, pill.center().y()), 12, exact)
        << "gap between pills";
    const auto apart = [&](int below, const char* what, double expected) {
        const double place = below + expected / 2;
        EXPECT_NEAR(seen.down(x, place) - seen.up(x, place), expected, exact) << what;
    };
    apart(pill.bottom() + 1, "pills and step 1", 14);
    apart(plate.bottom() + 1, "step 1 and step 2", 14);
    apart(partAt(step2).bottom() + 1, "step 2 and step 3", 14);
    apart(partAt(step3).bottom() + 1, "step 3 and the action area", 20);
    const QRect analysis = partAt("Analizar primero");
    const double between = analysis.right() + 7;
    EXPECT_NEAR(seen.right(between, analysis.center().y()) - seen.left(between, analysis.center().y()), 14, exact)
        << "gap between panels";
    const QRect card = partAt(card1);
    const double beside = card.right() + 6;
    EXPECT_NEAR(seen.right(beside, card.center().y()) - seen.left(beside, card.center().y()), 12, exact)
        << "gap between cards";
    EXPECT_NEAR(seen.left(beside, card.center().y()) - seen.right(0.5, card.center().y()), 266, exact)
        << "width of a card";
    const double rowGap = partAt(row1).bottom() + 5;
    EXPECT_NEAR(seen.down(150, rowGap) - seen.up(150, rowGap), 8, exact) << "gap between rows";
    EXPECT_NEAR(seen.up(150, partAt(row2).bottom() + 5) - seen.down(150, rowGap), 56, exact) << "height of a row";
}

TEST_F(ContentViewMeasure, hasThePaddingsAndSizesOfTheDesignInsideItsPlates)
{
    show(analysed);
    const Enlarged seen = enlarged();
    const QRect pill = partAt(pill1);
    const double discLeft = seen.right(pill.left() + 3, pill.center().y());
    EXPECT_NEAR(discLeft - pill.left(), 14, exact) << "pill padding";
    const double discX = discLeft + 14;
    const double discTop = seen.down(discX, pill.top() + 3);
    const double discBottom = seen.up(discX, pill.bottom() - 3);
    EXPECT_NEAR(discBottom - discTop, 28, exact) << "disc of a pill";
    EXPECT_NEAR(seen.right(discLeft + 28 + 1, pill.top() + 20) - discLeft - 28, 10, bearing) << "gap in a pill";

    const QRect plate = partAt(step1);
    const double tileY = plate.top() + 18 + 8;
    const double tileLeft = seen.right(plate.left() + 3, tileY + 20);
    EXPECT_NEAR(tileLeft - plate.left(), 18, exact) << "plate padding";
    const double tileRight = seen.left(tileLeft + 58 + 10, tileY + 20);
    EXPECT_NEAR(tileRight - tileLeft, 58, exact) << "width of a tile";
    const double tileTop = seen.down(tileLeft + 29, plate.top() + 3);
    EXPECT_NEAR(tileTop - plate.top(), 18, exact) << "top plate padding";
    EXPECT_NEAR(seen.up(tileLeft + 29, tileTop + 70) - tileTop, 58, exact) << "height of a tile";
    const QRect box = placeOf(*text(QStringLiteral("EOS_DIGITAL")).parentWidget());
    const double boxLeft = seen.right(tileRight + 3, box.center().y());
    EXPECT_NEAR(boxLeft - tileRight, 16, exact) << "gap between tile and content";
    EXPECT_NEAR(plate.right() + 1 - seen.left(plate.right() - 5, box.center().y()), 18, exact)
        << "trailing plate padding";
    const double nameY = box.top() + 14 + 11;
    EXPECT_NEAR(seen.right(boxLeft + 3, nameY) - boxLeft, 14, bearing + 0.5) << "box padding";

    const QRect badge = placeOf(*textIn(QString::fromLatin1(step1), QStringLiteral("Listo")).parentWidget());
    const double badgeY = badge.center().y() + 0.5;
    const double badgeLeft = seen.right(badge.left() - 10, badgeY);
    const double dotLeft = seen.right(badgeLeft + 3, badgeY);
    const double dotRight = seen.left(dotLeft + 8 + 4, badgeY);
    EXPECT_NEAR(dotLeft - badgeLeft, 10, exact) << "badge padding";
    EXPECT_NEAR(dotRight - dotLeft, 8, exact) << "dot of a badge";
    EXPECT_NEAR(seen.right(dotRight + 1, badgeY) - dotRight, 8, bearing) << "gap in a badge";

    const QRect row = partAt(row2);
    const double buttonRight = seen.left(row.right() - 3, row.center().y());
    EXPECT_NEAR(row.right() + 1 - buttonRight, 12, exact) << "row padding";
    const double buttonX = buttonRight - 8;
    const double buttonTop = seen.down(buttonX, row.top() + 3);
    // Below it is its shadow.
    EXPECT_NEAR(seen.up(buttonX, row.bottom() - 3) - 1 - buttonTop, 28, 0.5) << "height of a button";

    const QRect card = partAt(card1);
    EXPECT_NEAR(seen.right(card.left() + 3, card.top() + 16 + 8) - card.left(), 16, bearing) << "card padding";
}

TEST_F(ContentViewMeasure, hasTheControlsAndTheListOfTheDesign)
{
    show(analysed);
    const Enlarged seen = enlarged();
    const QRect toggled = placeOf(toggle());
    const double y = toggled.center().y() + 0.5;
    const double switchRight = seen.left(toggled.right() + 20, y);
    const double switchX = switchRight - 28;
    EXPECT_NEAR(seen.up(switchX, toggled.bottom() + 5) - seen.down(switchX, toggled.top() - 5), 22, exact)
        << "height of the switch";
    const double switchLeft = seen.right(switchRight - 38 - 4, y);
    EXPECT_NEAR(switchRight - switchLeft, 38, exact) << "width of the switch";

    const QRect popUp = placeOf(*chooser());
    const double popUpX = popUp.center().x() + 100;
    EXPECT_NEAR(seen.up(popUpX, popUp.bottom() + 6) - 1 - seen.down(popUpX, popUp.top() - 5), 28, 0.5)
        << "height of the chooser";
    const QRect large = placeOf(button(copyLabel));
    const double largeX = large.left() + 40;
    EXPECT_NEAR(seen.up(largeX, large.bottom() + 5) - seen.down(largeX, large.top() - 5), 49, exact)
        << "height of the large button";
    const QRect panel = partAt("Copiar lo que falta");
    EXPECT_NEAR(panel.right() + 1 - seen.left(panel.right() - 5, large.center().y()), 18, exact) << "panel padding";

    const QRect whole = placeOf(*list());
    const double listX = whole.center().x();
    // Its stroke has the colour of the window, so the first change of colour is inside it.
    const double listTop = seen.down(listX, whole.top() - 5) - 1;
    EXPECT_NEAR(seen.up(listX, whole.bottom() + 5) + 1 - listTop, 220, exact) << "height of the list";
    const double first = seen.down(listX, listTop + 3);
    const double second = seen.down(listX, first + 3);
    EXPECT_NEAR(first - listTop, 10 + 49, exact) << "list padding and first row";
    EXPECT_NEAR(second - first, 49, exact) << "height of a row of the list";
}

TEST_F(ContentViewMeasure, hasTheBarOfTheDesign)
{
    show(copying);
    const Enlarged seen = enlarged();
    const QRect place = placeOf(*bar());
    const double x = place.left() + 100;
    EXPECT_NEAR(seen.up(x, place.bottom() + 4) - seen.down(x, place.top() - 4), 6, exact) << "height of the bar";
    EXPECT_NEAR(seen.right(x, place.center().y()), place.left() + place.width() / 2.0, exact) << "filled to the half";
    EXPECT_EQ(place.left(), 24);
    EXPECT_EQ(place.width(), 1100);
}

TEST_F(ContentViewMeasure, hasTheCornersOfTheDesign)
{
    show(analysed);
    const auto expectRadius = [this](const QRect& place, double expected, const char* what) {
        const Enlarged corner(*content, QRect(place.topLeft() - QPoint(2, 2), QSize(24, 24)), 16);
        const QPointF diagonal(1, 1);
        const QPointF from = place.topLeft() - QPointF(1, 1);
        // On the diagonal, the arc begins at this fraction of the radius.
        const double radius = (corner.toChange(from, diagonal, 4) - 1) / (1 - std::sqrt(0.5));
        EXPECT_NEAR(radius, expected, 0.6) << what;
    };
    expectRadius(partAt(pill1), 12, "pill");
    expectRadius(partAt(step1), 18, "plate");
    expectRadius(QRect(partAt(step1).topLeft() + QPoint(18, 18), QSize(58, 58)), 18, "tile");
    expectRadius(placeOf(*text(QStringLiteral("EOS_DIGITAL")).parentWidget()), 12, "path box");
    expectRadius(placeOf(*text(QStringLiteral("3 ubicaciones seleccionadas")).parentWidget()), 12, "count box");
    expectRadius(partAt(row1), 12, "row");
    expectRadius(partAt("Analizar primero"), 18, "analysis panel");
    expectRadius(partAt("Copiar lo que falta"), 18, "copy panel");
    expectRadius(partAt(card1), 14, "card");
    expectRadius(placeOf(*list()), 8, "list");
    expectRadius(placeOf(button(QStringLiteral("Elegir camara"))), 6, "button");
    expectRadius(placeOf(*chooser()), 6, "chooser");
    expectRadius(placeOf(button(copyLabel)), 8, "large button");
}

TEST_F(ContentViewMeasure, hasTheLettersOfTheDesign)
{
    show(analysed);
    const auto expectLetters = [this](const TextWidget& words, double size, QFont::Weight weight,
                                      bool isFixed = false) {
        QFont font(isFixed ? QStringLiteral("JetBrains Mono") : QStringLiteral("Inter"));
        // Ten times as large, for exact outlines.
        font.setPixelSize(int(size * 10));
        font.setWeight(weight);
        const QRectF letters = QFontMetricsF(font).tightBoundingRect(words.text());
        const QRect place = placeOf(words);
        const QRectF ink = Enlarged(*content, place, 8).inkIn(place);
        EXPECT_NEAR(ink.height(), letters.height() / 10, 0.7) << words.text().toStdString();
        EXPECT_NEAR(ink.width(), letters.width() / 10, std::max(1.2, 0.02 * ink.width())) << words.text().toStdString();
    };
    const auto inStep = [this](const char* words) -> TextWidget& {
        return textIn(QString::fromLatin1(step1), QString::fromLatin1(words));
    };
    expectLetters(text(QStringLiteral("Reelkeep")), 28, QFont::Bold);
    expectLetters(text(QStringLiteral("Camara")), 13, QFont::DemiBold);
    expectLetters(text(QStringLiteral("ORIGEN")), 11, QFont::DemiBold);
    expectLetters(inStep("Paso 1"), 12, QFont::Bold);
    expectLetters(inStep("Camara o tarjeta"), 15, QFont::DemiBold);
    expectLetters(inStep("Aqui eliges el material original que quieres comprobar."), 13, QFont::Normal);
    expectLetters(inStep("Listo"), 12, QFont::Bold);
    expectLetters(inStep("EOS_DIGITAL"), 18, QFont::DemiBold);
    expectLetters(inStep("/media/ana/EOS_DIGITAL"), 10, QFont::Normal, true);
    expectLetters(inStep("Ubicacion lista para analizar."), 10, QFont::Normal);
    expectLetters(textIn(QString::fromLatin1(step3), QStringLiteral("3")), 28, QFont::DemiBold);
    expectLetters(text(QStringLiteral("Copia")), 11, QFont::Bold);
    expectLetters(textIn(QStringLiteral("Copiar lo que falta"), QStringLiteral("Archivo 2026")), 20, QFont::DemiBold);
    expectLetters(textIn(QStringLiteral("Copiar lo que falta"), QStringLiteral("4")), 26, QFont::Bold);
    expectLetters(textIn(QString::fromLatin1(card1), QStringLiteral("27")), 30, QFont::DemiBold);
    expectLetters(text(QStringLiteral("La comprobacion es solo de camara hacia los destinos revisados.")), 10,
                  QFont::Normal);
}

} // namespace
} // namespace reelkeep
