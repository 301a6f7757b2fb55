#include "Fixtures/Desktops.h"
#include "Fixtures/WindowTest.h"

#include <QScreen>
#include <QScrollBar>
#include <QTest>

#include <gtest/gtest.h>

#include <map>
#include <optional>

namespace reelkeep {
namespace {

using enum WindowState;

class ContentViewGeometry : public WindowTest {
protected:
    void SetUp() override
    {
        if (!isDesignFontInstalled())
            GTEST_SKIP() << "the measures are those of Inter, which is not installed";
    }
    QRect place(const QWidget& widget) const { return {widget.mapTo(content, QPoint()), widget.size()}; }
    QRect placeOf(const QString& partName) const { return place(part(partName)); }
    QRect placeOfText(const QString& words) const { return place(text(words)); }
    /// The smallest width in this range from which `holds` stays true; none if it is false at `to`.
    std::optional<int> widthFrom(int from, int to, const std::function<bool()>& holds)
    {
        resize(to, 1000);
        if (!holds())
            return std::nullopt;
        while (from < to) {
            const int middle = (from + to) / 2;
            resize(middle, 1000);
            (holds() ? to : from) = holds() ? middle : middle + 1;
        }
        return to;
    }
};

struct Height {
    WindowState state;
    int width;
    int expected;
};
void PrintTo(const Height& height, std::ostream* stream)
{
    *stream << height.state << " at " << height.width;
}
class ContentViewGeometryHeight : public ContentViewGeometry, public testing::WithParamInterface<Height> {};

TEST_P(ContentViewGeometryHeight, matchesTheDesign)
{
    enterState(GetParam().state);
    resizeToContent(GetParam().width);
    EXPECT_EQ(content->width(), GetParam().width);
    EXPECT_NEAR(content->height(), GetParam().expected, 0.01 * GetParam().expected);
    std::cout << GetParam().state << " at " << GetParam().width << ": " << content->height() << ", designed "
              << GetParam().expected << "\n";
}

INSTANTIATE_TEST_SUITE_P(
    States, ContentViewGeometryHeight,
    testing::Values(Height{fresh, 1148, 1709}, Height{chosen, 1148, 1971}, Height{analysed, 1148, 1923},
                    Height{copying, 1148, 1939}, Height{allSaved, 1148, 1971}, Height{fresh, 760, 1925},
                    Height{chosen, 760, 2187}, Height{analysed, 760, 2139}, Height{copying, 760, 2155},
                    Height{allSaved, 760, 2187}, Height{fresh, 480, 2285}, Height{chosen, 480, 2544},
                    Height{analysed, 480, 2496}, Height{copying, 480, 2496}, Height{allSaved, 480, 2544},
                    Height{fresh, 1600, 1709}, Height{analysed, 1600, 1923}));

TEST_F(ContentViewGeometry, placesTheSectionsAsDesigned)
{
    enterState(analysed);
    resizeToContent(1148);
    const auto expectPlace = [](const QRect& actual, int top, int height, const char* what) {
        EXPECT_NEAR(actual.top(), top, 3) << what;
        EXPECT_NEAR(actual.height(), height, 3) << what;
    };
    expectPlace(placeOfText(QStringLiteral("Reelkeep")), 24, 34, "header");
    expectPlace(placeOf(QStringLiteral("1, Camara, origen")), 102, 56, "pills");
    expectPlace(placeOf(QStringLiteral("Paso 1, Camara o tarjeta")), 172, 222, "step 1");
    expectPlace(placeOf(QStringLiteral("Paso 2, Destino de copia")), 408, 222, "step 2");
    expectPlace(placeOf(QStringLiteral("Paso 3, Ubicaciones a revisar")), 644, 433, "step 3");
    expectPlace(placeOf(QStringLiteral("Copiar lo que falta")), 1097, 335, "action area");
    expectPlace(placeOf(QStringLiteral("En camara: 27, videos detectados")), 1452, 112, "cards");
    expectPlace(place(*list()), 1584 + 30, 220, "list");
    EXPECT_NEAR(placeOfText(QStringLiteral("La comprobacion es solo de camara hacia los destinos revisados.")).bottom(),
                1854 + 45, 3);
}

/// The bounds of the letters in a rectangle: of its dark pixels.
QRect inkIn(const QImage& image, const QRect& place)
{
    QRect ink;
    for (int y = place.top(); y <= place.bottom(); ++y) {
        for (int x = place.left(); x <= place.right(); ++x) {
            if (image.pixelColor(x, y).lightness() < 160)
                ink |= QRect(x, y, 1, 1);
        }
    }
    return ink;
}

TEST_F(ContentViewGeometry, centresTheDigitsOfThePillsInTheirDiscs)
{
    for (const char* digit : {"1", "2", "3"}) {
        const QWidget& disc = *text(QString::fromLatin1(digit)).parentWidget();
        const QRect place(disc.mapTo(window.get(), QPoint()), disc.size());
        const QRect ink = inkIn(picture(*window), place);
        EXPECT_EQ(place.width(), 28);
        const double left = ink.left() - place.left();
        const double right = place.right() - ink.right();
        EXPECT_LE(std::abs(left - right), 1) << digit << ": " << left << " on the left, " << right << " on the right";
    }
}

TEST_F(ContentViewGeometry, makesReviewRows56HighAnd8Apart)
{
    enterState(analysed);
    const QRect first = placeOf(QStringLiteral("Archivo 2026, /media/ana/Archivo 2026, Copia"));
    const QRect second = placeOf(QStringLiteral("Disco B, /media/ana/Disco B"));
    EXPECT_EQ(first.height(), 56);
    EXPECT_EQ(second.top() - first.bottom() - 1, 8);
}

TEST_F(ContentViewGeometry, keepsTheLabelOfTheCountOnOneLineInTheNarrowestWindow)
{
    enterState(analysed);
    resize(480, 1000);
    EXPECT_EQ(placeOfText(QStringLiteral("ubicaciones revisadas")).height(), 16);
}

TEST_F(ContentViewGeometry, letsReviewRowsHugTheirContent)
{
    enterState(analysed);
    const QRect row = placeOf(QStringLiteral("Disco B, /media/ana/Disco B"));
    EXPECT_LT(row.width(), 300);
    const QRect section = placeOf(QStringLiteral("Paso 3, Ubicaciones a revisar"));
    EXPECT_EQ(row.left(), section.left() + 18 + 58 + 16);
}

TEST_F(ContentViewGeometry, keepsTheContentAtTheLeadingEdgeOfAWideWindow)
{
    enterState(analysed);
    resize(1600, 1000);
    for (const QString& section :
         {QStringLiteral("Paso 1, Camara o tarjeta"), QStringLiteral("Paso 2, Destino de copia"),
          QStringLiteral("Paso 3, Ubicaciones a revisar")}) {
        EXPECT_EQ(placeOf(section).left(), 24) << section.toStdString();
        EXPECT_EQ(placeOf(section).width(), 1100) << section.toStdString();
    }
    EXPECT_EQ(placeOf(QStringLiteral("Copiar lo que falta")).right(), 24 + 1100 - 1);
    EXPECT_EQ(place(*list()).left(), 24);
    EXPECT_EQ(place(*list()).width(), 1100);
}

TEST_F(ContentViewGeometry, putsThePanelsSideBySideIfTheyFit)
{
    enterState(analysed);
    resize(1148, 1000);
    const QRect analysis = placeOf(QStringLiteral("Analizar primero"));
    const QRect copy = placeOf(QStringLiteral("Copiar lo que falta"));
    EXPECT_EQ(analysis.width(), 543);
    EXPECT_EQ(copy.width(), 543);
    EXPECT_EQ(copy.left() - analysis.right() - 1, 14);
    EXPECT_EQ(analysis.top(), copy.top());
    EXPECT_LT(analysis.height(), copy.height()) << "each as tall as its own content";
}

TEST_F(ContentViewGeometry, stacksThePanelsIfTheyDoNotFit)
{
    enterState(analysed);
    const auto areSideBySide = [this] { return placeOf(QStringLiteral("Copiar lo que falta")).left() > 24; };
    EXPECT_NEAR(widthFrom(900, 1148, areSideBySide).value_or(0), 1099, 4);
    resize(1000, 1000);
    const QRect analysis = placeOf(QStringLiteral("Analizar primero"));
    const QRect copy = placeOf(QStringLiteral("Copiar lo que falta"));
    EXPECT_EQ(copy.left(), analysis.left());
    EXPECT_EQ(copy.top() - analysis.bottom() - 1, 14);
    EXPECT_EQ(copy.width(), 1000 - 48);
    EXPECT_EQ(analysis.width(), 1000 - 48);
}

TEST_F(ContentViewGeometry, stacksThePanelsForALongPath)
{
    chooseDestination("/media/" + std::string(120, 'x'));
    resize(1148, 1000);
    EXPECT_EQ(placeOf(QStringLiteral("Copiar lo que falta")).left(), 24);
}

TEST_F(ContentViewGeometry, putsThePillsInARowIfTheyFit)
{
    window->setMinimumSize(0, 0);
    const auto areInARow = [this] {
        return placeOf(QStringLiteral("2, HD principal, copia")).top() ==
               placeOf(QStringLiteral("1, Camara, origen")).top();
    };
    EXPECT_NEAR(widthFrom(440, 600, areInARow).value_or(0), 475, 4);
    resize(480, 1000);
    EXPECT_TRUE(areInARow());
    EXPECT_EQ(placeOf(QStringLiteral("2, HD principal, copia")).left() -
                  placeOf(QStringLiteral("1, Camara, origen")).right() - 1,
              12);
}

TEST_F(ContentViewGeometry, centresThePillsIfTheyAreStacked)
{
    window->setMinimumSize(0, 0);
    resize(469, 1000);
    const QRect first = placeOf(QStringLiteral("1, Camara, origen"));
    const QRect second = placeOf(QStringLiteral("2, HD principal, copia"));
    const QRect third = placeOf(QStringLiteral("3, Otros discos, revision"));
    EXPECT_EQ(second.top() - first.bottom() - 1, 10);
    EXPECT_EQ(third.top() - second.bottom() - 1, 10);
    EXPECT_NEAR(first.center().x(), second.center().x(), 1);
    EXPECT_NEAR(third.center().x(), second.center().x(), 1);
    EXPECT_EQ(std::min({first.left(), second.left(), third.left()}), 24);
}

TEST_F(ContentViewGeometry, arrangesTheCardsInAsManyColumnsAsFit)
{
    enterState(analysed);
    const QString first = QStringLiteral("En camara: 27, videos detectados");
    const QString second = QStringLiteral("Ya en destinos: 23, videos de la camara ya encontrados");
    const QString third = QStringLiteral("Pendientes: 4, videos de la camara por copiar");
    const std::map<int, int> inFirstRow = {{1600, 3}, {1148, 3}, {964, 3}, {963, 3}, {732, 3},
                                           {731, 2},  {500, 2},  {499, 1}, {480, 1}};
    for (const auto& [width, expected] : inFirstRow) {
        resize(width, 1000);
        int count = 0;
        for (const QString& name : {first, second, third}) {
            count += placeOf(name).top() == placeOf(first).top();
            EXPECT_GE(placeOf(name).width(), 220) << width;
        }
        EXPECT_EQ(count, expected) << width;
    }
    resize(1148, 1000);
    EXPECT_EQ(placeOf(first).width(), 266);
    EXPECT_EQ(placeOf(third).right(), 24 + 3 * 266 + 2 * 12 - 1) << "the fourth column stays empty";
    resize(964, 1000);
    EXPECT_EQ(placeOf(first).width(), 220);
    resize(963, 1000);
    EXPECT_GT(placeOf(first).width(), 290);
}

TEST_F(ContentViewGeometry, growsThePendingSectionBy48WhenTheListEmpties)
{
    enterState(analysed);
    resizeToContent(1148);
    const int listHeight = place(*list()).height();
    files->releaseCopy();
    press(copyLabel);
    ASSERT_TRUE(becomesIdle());
    resizeToContent(1148);
    const QRect title = placeOfText(QStringLiteral("Todo lo de la camara ya esta en las ubicaciones revisadas"));
    const QWidget* box =
        text(QStringLiteral("Todo lo de la camara ya esta en las ubicaciones revisadas")).parentWidget();
    EXPECT_EQ(box->height(), listHeight + 48);
    EXPECT_TRUE(place(*box).contains(title));
}

TEST_F(ContentViewGeometry, limitsLongPathsToThreeLinesOfTheAvailableWidth)
{
    constexpr int threeLines = 3 * 13;
    const std::string longPath = "/media/" + std::string(2000, 'x');
    chooseCamera(longPath);
    chooseDestination(longPath);
    addReviewFolders({"/media/" + std::string(500, 'y')});
    for (const int width : {480, 760, 1148, 1600}) {
        resize(width, 1000);
        EXPECT_EQ(content->width(), width);
        for (TextWidget* shown : shownTexts(*content)) {
            EXPECT_LE(place(*shown).right(), 24 + std::min(width - 48, 1100)) << width;
            EXPECT_FALSE(shown->isCut()) << width;
        }
        for (const char* card : {"Paso 1, Camara o tarjeta", "Paso 2, Destino de copia"}) {
            const QString path = QString::fromStdString(longPath);
            EXPECT_LE(textIn(QString::fromLatin1(card), path).height(), threeLines) << card;
        }
    }
}

TEST_F(ContentViewGeometry, showsListRowsOfEveryLengthCompletely)
{
    for (int length = 1; length < 120; length += 7)
        files->add("/card/" + std::string(std::size_t(length), 'x') + ".MOV", 1);
    chooseCamera("/card");
    chooseDestination("/disk");
    analyse();
    for (const int width : {480, 760, 1148}) {
        resize(width, 1000);
        for (int row = 0; row < list()->rowCount(); ++row) {
            list()->setCurrentRow(row);
            letEventsPass();
            for (const TextWidget* shown : shownTexts(*list()->viewport())) {
                EXPECT_FALSE(shown->isCut()) << width << " " << shown->text().toStdString();
                EXPECT_LE(shown->mapTo(list()->viewport(), QPoint(shown->width(), 0)).x(), list()->viewport()->width());
            }
        }
    }
}

class ContentViewGeometryFirstSize : public ContentViewGeometry {
protected:
    /// The size that a new window takes on a screen.
    QSize onScreen(const char* name)
    {
        auto* fresh = new ContentView(dialogs.factory(), files);
        ScrollingWindow opened(QStringLiteral("Reelkeep"), fresh);
        opened.setScreen(screenNamed(name));
        opened.openAtFirstSize();
        return opened.size();
    }
};

TEST_F(ContentViewGeometryFirstSize, showsEverythingIfTheScreenAllows)
{
    const QSize size = onScreen("tall");
    EXPECT_EQ(size.width(), 1148);
    EXPECT_NEAR(size.height(), 1709, 8);
}

TEST_F(ContentViewGeometryFirstSize, fitsCommonScreens)
{
    EXPECT_EQ(onScreen("full").width(), 1148);
    EXPECT_LE(onScreen("full").height(), 1080);
    EXPECT_EQ(onScreen("laptop").width(), 1148);
    EXPECT_LE(onScreen("laptop").height(), 768);
}

TEST_F(ContentViewGeometryFirstSize, pressesNothingByAccident)
{
    EXPECT_EQ(qobject_cast<QAbstractButton*>(window->focusWidget()), nullptr);
    QTest::keyClick(window->focusWidget(), Qt::Key_Return);
    QTest::keyClick(window->focusWidget(), Qt::Key_Space);
    EXPECT_TRUE(dialogs.shown.empty());
}

TEST_F(ContentViewGeometry, followsAChangeOfTheFontWhileOpen)
{
    enterState(analysed);
    resizeToContent(1148);
    const int before = content->height();
    {
        const FontChange change(designFont(1.5));
        settle();
        EXPECT_GT(content->heightForWidth(1148), 1.3 * before);
        EXPECT_NEAR(placeOfText(QStringLiteral("Reelkeep")).height(), 51, 1);
        EXPECT_GT(button(QStringLiteral("Elegir camara")).height(), 32);
    }
    settle();
    EXPECT_EQ(content->heightForWidth(1148), before);
}

} // namespace
} // namespace reelkeep
