#include "Fixtures/Desktops.h"
#include "Fixtures/TextWidgetTest.h"

#include <QFontMetricsF>

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace reelkeep {
namespace {

TEST_F(TextWidgetTest, fitOnOneLineAtTheirIdealWidth)
{
    make(QStringLiteral("Videos pendientes de copiar"));
    EXPECT_EQ(text.height(), 16);
    EXPECT_GE(text.width(), QFontMetricsF(type::body.font()).horizontalAdvance(text.text()));
    EXPECT_FALSE(text.isCut());
}

TEST_F(TextWidgetTest, wrapBetweenWordsIfTheyAreTooWide)
{
    const int ideal = make(QStringLiteral("Videos pendientes")).width();
    make(QStringLiteral("Videos pendientes"), ideal - 10);
    EXPECT_EQ(text.height(), 32);
    EXPECT_EQ(text.characterRect(6).top(), 0);
    EXPECT_EQ(text.characterRect(7).top(), 16);
    EXPECT_EQ(text.characterRect(7).left(), 0);
}

TEST_F(TextWidgetTest, wrapInsideAWordThatIsTooWideAlone)
{
    make(QStringLiteral("x").repeated(200), 100);
    EXPECT_GT(text.height(), 10 * 16);
    for (int position = 0; position < 200; ++position)
        ASSERT_LE(text.characterRect(position).right(), 101) << position;
}

TEST_F(TextWidgetTest, breakBetweenTheWordsOfAPath)
{
    const QString path = QStringLiteral("/media/ana/Proyectos 2026");
    const int ideal = make(path).width();
    make(path, ideal - 20);
    EXPECT_EQ(text.height(), 32);
    EXPECT_EQ(text.characterRect(int(path.size()) - 5).top(), 0);
    EXPECT_EQ(text.characterRect(int(path.size()) - 4).top(), 16);
}

TEST_F(TextWidgetTest, needNoMoreThanOneLineWhenEmpty)
{
    make(QString());
    EXPECT_EQ(text.heightForWidth(100), 16);
}

TEST_F(TextWidgetTest, areNeverTallerThanTheirLineLimit)
{
    makePath(300);
    EXPECT_EQ(text.height(), 3 * 13);
    EXPECT_EQ(text.heightForWidth(50), 3 * 13);
    EXPECT_FALSE(text.isCut()) << "what the limit cuts off does not count";
}

TEST_F(TextWidgetTest, endInAnEllipsisIfTheLineLimitCutsThem)
{
    const QString sentence = QStringLiteral("Una frase que no cabe en una sola linea de la ventana");
    text.setLineLimit(1);
    make(sentence, 150);
    const QImage cut = picture(text);

    TextWidget expected;
    expected.setText(QFontMetricsF(type::body.font()).elidedText(sentence, Qt::ElideRight, 150));
    ASSERT_TRUE(expected.text().endsWith(QStringLiteral("…")));
    expected.resize(150, 16);
    EXPECT_EQ(cut, picture(expected));
}

TEST_F(TextWidgetTest, endWithoutEllipsisIfTheyFit)
{
    text.setLineLimit(3);
    make(QStringLiteral("/media/ana"));
    const QImage limited = picture(text);
    text.setLineLimit(0);
    EXPECT_EQ(limited, picture(text));
}

TEST_F(TextWidgetTest, areCutIfTheWidgetIsTooLow)
{
    make(QStringLiteral("Videos pendientes"), 90);
    EXPECT_FALSE(text.isCut());
    text.resize(90, 16);
    EXPECT_TRUE(text.isCut());
}

TEST_F(TextWidgetTest, showControlCharactersAsSymbols)
{
    const QString name = QStringLiteral("a\nb\tc\x7f") + QChar::LineSeparator + QStringLiteral("d\r");
    make(name);
    EXPECT_EQ(text.height(), 16) << "a line feed in a name begins no new line";
    const QImage shown = picture(text);
    TextWidget expected;
    expected.setText(QStringLiteral("a␊b␉c␡␤d␍"));
    expected.resize(text.size());
    EXPECT_EQ(shown, picture(expected));
}

TEST_F(TextWidgetTest, arePlainText)
{
    const QString name = QStringLiteral("<b>x</b> &amp; %1.MOV");
    make(name);
    EXPECT_GE(text.width(), QFontMetricsF(type::body.font()).horizontalAdvance(name));
    EXPECT_EQ(text.text(), name);
}

TEST_F(TextWidgetTest, wrapAtTheWidthTheyAreLimitedTo)
{
    text.setMaximumTextWidth(100);
    make(QStringLiteral("Los videos extra no se consideran un problema"));
    EXPECT_EQ(text.width(), 100);
    EXPECT_GT(text.height(), 16);
}

TEST_F(TextWidgetTest, areAlignedToTheGivenEdge)
{
    make(QStringLiteral("abc"), 200);
    EXPECT_EQ(text.characterRect(0).left(), 0);
    text.setAlignment(Qt::AlignRight);
    EXPECT_NEAR(text.characterRect(2).right(), 200, 1);
    text.setAlignment(Qt::AlignHCenter);
    EXPECT_NEAR((text.characterRect(0).left() + text.characterRect(2).right()) / 2, 100, 1);
}

TEST_F(TextWidgetTest, runFromRightToLeftInScriptsThatDo)
{
    make(QStringLiteral("אבגד"));
    EXPECT_NEAR(text.characterRect(0).right(), text.width(), 1);
    for (int position = 1; position < 4; ++position) {
        EXPECT_GT(text.characterRect(position).width(), 0) << position;
        EXPECT_NEAR(text.characterRect(position).right(), text.characterRect(position - 1).left(), 0.1) << position;
    }
    EXPECT_NEAR(text.characterRect(3).left(), 0, 1);
}

TEST_F(TextWidgetTest, fillTheirLineWithoutGapsInBothDirectionsOfWriting)
{
    make(QStringLiteral("/media/אבגד 12/EOS"));
    std::vector<QRectF> rects;
    for (int position = 0; position < int(text.text().size()); ++position)
        rects.push_back(text.characterRect(position));
    std::sort(rects.begin(), rects.end(), [](const QRectF& a, const QRectF& b) { return a.left() < b.left(); });
    EXPECT_NEAR(rects.front().left(), 0, 0.1);
    for (std::size_t index = 1; index < rects.size(); ++index)
        EXPECT_NEAR(rects[index].left(), rects[index - 1].right(), 0.1) << index;
}

TEST_F(TextWidgetTest, mapPointsToCharacters)
{
    for (const QString& content : {QStringLiteral("/media/ana/EOS"), QStringLiteral("/media/אבגד 12/EOS")}) {
        make(content);
        for (int position = 0; position < int(content.size()); ++position) {
            const int hit = text.positionAt(text.characterRect(position).center());
            EXPECT_TRUE(hit == position || hit == position + 1) << content.toStdString() << position << " " << hit;
        }
    }
}

TEST_F(TextWidgetTest, placeTheirCutOffCharactersAtTheEllipsis)
{
    makePath(300);
    const QRectF last = text.characterRect(int(longPath.size()) - 1);
    EXPECT_EQ(last.top(), 2 * 13);
    EXPECT_LE(last.right(), 300);
    EXPECT_EQ(last, text.characterRect(int(longPath.size()) - 20));
}

TEST_F(TextWidgetTest, endAtTheEllipsisOnlyForPointsOnIt)
{
    makePath(300);
    const auto end = int(longPath.size());
    const QRectF ellipsis = text.characterRect(end - 1);
    int hidden = end - 1; // the first character behind the ellipsis
    while (text.characterRect(hidden - 1) == ellipsis)
        --hidden;
    const double middle = ellipsis.center().y();
    EXPECT_EQ(text.positionAt({ellipsis.left() - 1, middle}), hidden);
    EXPECT_EQ(text.positionAt({ellipsis.left() + 1, middle}), end);
    EXPECT_EQ(text.positionAt({ellipsis.right() + 1, middle}), end);
}

TEST_F(TextWidgetTest, growWithTheUsersFont)
{
    make(QStringLiteral("Videos pendientes"));
    const int width = text.width();
    const FontChange change(designFont(2));
    EXPECT_EQ(text.sizeHint().height(), 32);
    EXPECT_NEAR(text.sizeHint().width(), 2 * width, 0.05 * width);
}

TEST_F(TextWidgetTest, neverShrinkBelowTheirDesignedSize)
{
    const int width = make(QStringLiteral("Videos pendientes")).width();
    QFont smaller = designFont();
    smaller.setPixelSize(9);
    const FontChange change(smaller);
    EXPECT_EQ(text.sizeHint(), QSize(width, 16));
}

} // namespace
} // namespace reelkeep
