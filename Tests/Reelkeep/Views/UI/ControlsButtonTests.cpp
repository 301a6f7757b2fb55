#include "Fixtures/Desktops.h"
#include "Fixtures/EventLoop.h"
#include "Fixtures/Widgets.h"
#include "UI/Controls.h"

#include <QApplication>
#include <QPaintEvent>
#include <QRegion>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>

namespace reelkeep {
namespace {

/// The colour of a control's face, beside its label.
QColor faceOf(QWidget& widget)
{
    return picture(widget).pixelColor(6, widget.height() / 2);
}

/// A window that knows where it was painted.
class Ground : public QWidget {
public:
    QRegion painted;

protected:
    void paintEvent(QPaintEvent* event) override { painted += event->region(); }
};

TEST(ControlsButton, takesItsShadowAwayWhenItIsDisabled)
{
    Ground window;
    window.resize(200, 100);
    Button button(QStringLiteral("Quitar"));
    button.setParent(&window);
    button.setGeometry(20, 20, 100, 28);
    showActive(window);
    letEventsPass();
    window.painted = QRegion();
    button.setEnabled(false);
    letEventsPass();
    EXPECT_TRUE(window.painted.contains(QPoint(70, 20 + 28)));
}

TEST(ControlsButton, isPressedBySpaceAndByEnter)
{
    Button button(QStringLiteral("Elegir camara"));
    showActive(button);
    const QSignalSpy presses(&button, &QPushButton::clicked);
    for (const Qt::Key key : {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter})
        QTest::keyClick(&button, key);
    EXPECT_EQ(presses.count(), 3);
}

TEST(ControlsButton, isPressedOnceWhileEnterIsHeld)
{
    Button button(QStringLiteral("Quitar"));
    showActive(button);
    const QSignalSpy presses(&button, &QPushButton::clicked);
    for (const bool isRepeated : {false, true, true}) {
        QKeyEvent press(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, QStringLiteral("\r"), isRepeated);
        QApplication::sendEvent(&button, &press);
    }
    EXPECT_EQ(presses.count(), 1);
}

TEST(ControlsButton, isPressedByAClick)
{
    Button button(QStringLiteral("Elegir camara"));
    showActive(button);
    const QSignalSpy presses(&button, &QPushButton::clicked);
    QTest::mouseClick(&button, Qt::LeftButton);
    EXPECT_EQ(presses.count(), 1);
}

TEST(ControlsButton, isNotPressedWhileDisabled)
{
    Button button(QStringLiteral("Elegir camara"));
    showActive(button);
    button.setEnabled(false);
    const QSignalSpy presses(&button, &QPushButton::clicked);
    QTest::keyClick(&button, Qt::Key_Return);
    QTest::mouseClick(&button, Qt::LeftButton);
    EXPECT_EQ(presses.count(), 0);
}

TEST(ControlsButton, is28HighAnd12WiderThanItsLabelOnEachSide)
{
    for (const QString& label : {QStringLiteral("Elegir camara"), QStringLiteral("Anadir ubicaciones")}) {
        const Button button(label);
        const double designed = QFontMetricsF(type::body.font()).horizontalAdvance(label) + 24;
        EXPECT_EQ(button.sizeHint().height(), 28);
        EXPECT_GE(button.sizeHint().width(), designed);
        EXPECT_LT(button.sizeHint().width(), designed + 1);
    }
}

TEST(ControlsButton, is16HigherThanItsSymbolOnEachSideAndTakesTheWholeWidthIfLarge)
{
    Button button(QStringLiteral("No hay nada pendiente"));
    button.setLarge(glyph::copyButton);
    EXPECT_EQ(button.sizeHint().height(), 17 + 32);
    EXPECT_EQ(button.sizePolicy().horizontalPolicy(), QSizePolicy::Expanding);
}

TEST(ControlsButton, wrapsItsLabelIfItIsTooNarrow)
{
    Button button(QStringLiteral("Copiar faltantes al HD seleccionado"));
    button.setLarge(glyph::copyButton);
    EXPECT_EQ(button.heightForWidth(button.sizeHint().width()), 49);
    EXPECT_EQ(button.heightForWidth(button.sizeHint().width() - 10), 2 * 16 + 32);
    EXPECT_LT(button.minimumSizeHint().width(), 180);
}

TEST(ControlsButton, showsAnAmpersand)
{
    Button button(QStringLiteral("A & B"));
    Button other(QStringLiteral("A B"));
    EXPECT_GT(button.sizeHint().width(), other.sizeHint().width());
}

TEST(ControlsButton, growsWithTheUsersFont)
{
    QWidget window;
    Button& button = shownIn(window, new Button(QStringLiteral("Elegir camara")));
    const int width = button.sizeHint().width();
    const FontChange change(designFont(2));
    EXPECT_EQ(button.sizeHint().height(), 32 + 12);
    EXPECT_NEAR(button.sizeHint().width(), 2 * width - 24, 6);
}

struct Prominent {
    QColor tint;
    QColor face;
};
void PrintTo(const Prominent& prominent, std::ostream* stream)
{
    *stream << prominent.tint.name().toStdString();
}
class ControlsButtonProminent : public testing::TestWithParam<Prominent> {};

TEST_P(ControlsButtonProminent, isTheTintShadedUntilWhiteIsReadable)
{
    for (const QPalette& palette : {lightPalette(), darkPalette()}) {
        const PaletteChange change(palette);
        Button button(QStringLiteral("Analizar ubicaciones"));
        button.setTint(GetParam().tint);
        resizeToIdeal(button);
        const QColor face = faceOf(button);
        EXPECT_TRUE(areClose(face, GetParam().face)) << face.name().toStdString();
        EXPECT_GE(Appearance::contrast(face, Qt::white), 4.5);
    }
}

TEST_P(ControlsButtonProminent, isNeutralGreyWhileDisabled)
{
    for (const QPalette& palette : {lightPalette(), darkPalette()}) {
        const PaletteChange change(palette);
        Button button(QStringLiteral("Analizar ubicaciones"));
        button.setTint(GetParam().tint);
        button.setEnabled(false);
        resizeToIdeal(button);
        const QColor face = faceOf(button);
        EXPECT_TRUE(areClose(face, QColor(face.red(), face.red(), face.red()), 1)) << face.name().toStdString();
    }
}

INSTANTIATE_TEST_SUITE_P(Tints, ControlsButtonProminent,
                         testing::Values(Prominent{accent::analysisBlue, QColor(22, 117, 211)},
                                         Prominent{accent::copyGreen, QColor(29, 132, 86)},
                                         Prominent{accent::reviewOrange, QColor(171, 97, 28)}));

TEST(ControlsButton, isDarkerWhilePressed)
{
    Button plain(QStringLiteral("Quitar"));
    Button prominent(QStringLiteral("Elegir camara"));
    prominent.setTint(accent::analysisBlue);
    for (const QPalette& palette : {lightPalette(), darkPalette()}) {
        const PaletteChange change(palette);
        for (Button* button : {&plain, &prominent}) {
            resizeToIdeal(*button);
            const int before = faceOf(*button).lightness();
            button->setDown(true);
            EXPECT_LT(faceOf(*button).lightness(), before);
            button->setDown(false);
        }
    }
}

TEST(ControlsButtonDisabled, doesNotShowThatTheMouseIsOverIt)
{
    Button button(QStringLiteral("Quitar"));
    button.setEnabled(false);
    resizeToIdeal(button);
    const QImage before = picture(button);
    moveMouseOver(button, true);
    EXPECT_EQ(picture(button), before);
}

/// The highest contrast of any pixel with the face.
double contrastOfLabel(QWidget& widget)
{
    const QImage image = picture(widget);
    const QColor face = faceOf(widget);
    double strongest = 1;
    for (int x = 6; x < image.width() - 6; ++x) {
        for (int y = 6; y < image.height() - 6; ++y)
            strongest = std::max(strongest, Appearance::contrast(image.pixelColor(x, y), face));
    }
    return strongest;
}

TEST(ControlsButtonDisabled, hasAWeakerLabelThanAnEnabledOne)
{
    for (const QPalette& palette : {lightPalette(), darkPalette()}) {
        const PaletteChange change(palette);
        Button button(QStringLiteral("Quitar"));
        resizeToIdeal(button);
        const double enabled = contrastOfLabel(button);
        button.setEnabled(false);
        EXPECT_LT(contrastOfLabel(button), enabled / 2);
    }
}

} // namespace
} // namespace reelkeep
