#include "Fixtures/Desktops.h"
#include "Fixtures/EventLoop.h"
#include "Fixtures/Widgets.h"
#include "UI/Controls.h"
#include "UI/TextWidget.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace reelkeep {
namespace {

/// The colour of a control's face, beside its label.
QColor faceOf(QWidget& widget)
{
    return picture(widget).pixelColor(6, widget.height() / 2);
}

void placeAtIdealSize(QWidget& widget)
{
    widget.resize(widget.sizeHint());
    widget.ensurePolished();
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

/// Shows a control inside a window, as in the program, and not as a window.
template <class Control>
Control& shownIn(QWidget& window, Control* control)
{
    control->setParent(&window);
    showActive(window);
    return *control;
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
class ControlsProminentButton : public testing::TestWithParam<Prominent> {};

bool areClose(const QColor& one, const QColor& other, int tolerance = 2)
{
    return std::abs(one.red() - other.red()) <= tolerance && std::abs(one.green() - other.green()) <= tolerance &&
           std::abs(one.blue() - other.blue()) <= tolerance;
}

TEST_P(ControlsProminentButton, isTheTintShadedUntilWhiteIsReadable)
{
    for (const QPalette& palette : {lightPalette(), darkPalette()}) {
        const PaletteChange change(palette);
        Button button(QStringLiteral("Analizar ubicaciones"));
        button.setTint(GetParam().tint);
        placeAtIdealSize(button);
        const QColor face = faceOf(button);
        EXPECT_TRUE(areClose(face, GetParam().face)) << face.name().toStdString();
        EXPECT_GE(Appearance::contrast(face, Qt::white), 4.5);
    }
}

TEST_P(ControlsProminentButton, isNeutralGreyWhileDisabled)
{
    for (const QPalette& palette : {lightPalette(), darkPalette()}) {
        const PaletteChange change(palette);
        Button button(QStringLiteral("Analizar ubicaciones"));
        button.setTint(GetParam().tint);
        button.setEnabled(false);
        placeAtIdealSize(button);
        const QColor face = faceOf(button);
        EXPECT_TRUE(areClose(face, QColor(face.red(), face.red(), face.red()), 1)) << face.name().toStdString();
    }
}

INSTANTIATE_TEST_SUITE_P(Tints, ControlsProminentButton,
                         testing::Values(Prominent{accent::analysisBlue, QColor(22, 117, 211)},
                                         Prominent{accent::copyGreen, QColor(29, 132, 86)},
                                         Prominent{accent::reviewOrange, QColor(171, 97, 28)}));

TEST(Controls, showThatTheyHaveTheFocus)
{
    QWidget window;
    auto* prominent = new Button(QStringLiteral("Elegir camara"));
    prominent->setTint(accent::analysisBlue);
    auto* popUp = new PopUp;
    popUp->addItem(QStringLiteral("Disco A"));
    for (QWidget* control :
         std::initializer_list<QWidget*>{new Button(QStringLiteral("Quitar")), prominent,
                                         new Switch(QStringLiteral("Mantener estructura de carpetas")), popUp}) {
        control->setParent(&window);
        placeAtIdealSize(*control);
        control->move(10, 10);
        control->show();
        showActive(window);
        control->clearFocus();
        const QImage without = picture(window);
        control->setFocus();
        const QImage with = picture(window);
        EXPECT_NE(without, with) << control->metaObject()->className();
        EXPECT_EQ(without.copy(control->geometry()), with.copy(control->geometry()))
            << "nothing is drawn over the control";
        control->hide();
    }
}

void moveMouseOver(QWidget& widget, bool isOver)
{
    QEnterEvent enter(QPointF(3, 3), QPointF(3, 3), QPointF(3, 3));
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(&widget, isOver ? &enter : &leave);
}

TEST(Controls, showThatTheMouseIsOverThem)
{
    Button plain(QStringLiteral("Quitar"));
    Button prominent(QStringLiteral("Elegir camara"));
    prominent.setTint(accent::analysisBlue);
    Switch off(QStringLiteral("Mantener"));
    Switch on(QStringLiteral("Mantener"));
    on.setChecked(true);
    PopUp popUp;
    popUp.addItem(QStringLiteral("Disco A"));
    TextWidget path;
    path.setText(QStringLiteral("/media/ana"));
    path.setColor({TextColor::Level::secondary});
    path.setSelectable(true);
    for (const QPalette& palette : {lightPalette(), darkPalette()}) {
        const PaletteChange change(palette);
        for (QWidget* control : std::initializer_list<QWidget*>{&plain, &prominent, &off, &on, &popUp, &path}) {
            placeAtIdealSize(*control);
            const QImage before = picture(*control);
            moveMouseOver(*control, true);
            EXPECT_NE(picture(*control), before) << control->metaObject()->className();
            EXPECT_TRUE(control->testAttribute(Qt::WA_Hover)) << "repainted when the mouse comes and goes";
            moveMouseOver(*control, false);
            EXPECT_EQ(picture(*control), before) << control->metaObject()->className();
        }
    }
}

TEST(Controls, areDarkerWhilePressed)
{
    Button plain(QStringLiteral("Quitar"));
    Button prominent(QStringLiteral("Elegir camara"));
    prominent.setTint(accent::analysisBlue);
    for (const QPalette& palette : {lightPalette(), darkPalette()}) {
        const PaletteChange change(palette);
        for (Button* button : {&plain, &prominent}) {
            placeAtIdealSize(*button);
            const int before = faceOf(*button).lightness();
            button->setDown(true);
            EXPECT_LT(faceOf(*button).lightness(), before);
            button->setDown(false);
        }
    }
}

TEST(ControlsDisabledButton, doesNotShowThatTheMouseIsOverIt)
{
    Button button(QStringLiteral("Quitar"));
    button.setEnabled(false);
    placeAtIdealSize(button);
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

TEST(ControlsDisabledButton, hasAWeakerLabelThanAnEnabledOne)
{
    for (const QPalette& palette : {lightPalette(), darkPalette()}) {
        const PaletteChange change(palette);
        Button button(QStringLiteral("Quitar"));
        placeAtIdealSize(button);
        const double enabled = contrastOfLabel(button);
        button.setEnabled(false);
        EXPECT_LT(contrastOfLabel(button), enabled / 2);
    }
}

TEST(ControlsSwitch, isAsHighAsItsWrappedLabel)
{
    const Switch toggle(QStringLiteral("Mantener estructura de carpetas"));
    const int oneLine = toggle.sizeHint().height();
    const int threeLines = toggle.heightForWidth(toggle.minimumSizeHint().width() + 10);
    EXPECT_EQ(oneLine, 22);
    EXPECT_GE(threeLines, 3 * QFontMetrics(type::body.font()).height());
}

TEST(ControlsSwitch, isTurnedByAClickAnywhereOnItsLine)
{
    Switch toggle(QStringLiteral("Mantener estructura de carpetas"));
    placeAtIdealSize(toggle);
    showActive(toggle);
    const QSignalSpy turns(&toggle, &QCheckBox::clicked);
    QTest::mouseClick(&toggle, Qt::LeftButton, {}, QPoint(3, 11));
    EXPECT_TRUE(toggle.isChecked());
    QTest::mouseClick(&toggle, Qt::LeftButton, {}, QPoint(toggle.width() - 10, 11));
    EXPECT_FALSE(toggle.isChecked());
    EXPECT_EQ(turns.count(), 2);
}

TEST(ControlsSwitch, isTurnedBySpace)
{
    Switch toggle(QStringLiteral("Mantener estructura de carpetas"));
    showActive(toggle);
    QTest::keyClick(&toggle, Qt::Key_Space);
    EXPECT_TRUE(toggle.isChecked());
}

TEST(ControlsSwitch, isBlueWhileOn)
{
    Switch toggle(QStringLiteral("Mantener estructura de carpetas"));
    placeAtIdealSize(toggle);
    toggle.setChecked(true);
    const QImage on = picture(toggle);
    // Left of the knob, inside the track.
    const QPoint track(toggle.width() - 6 - 28, toggle.height() / 2);
    EXPECT_TRUE(areClose(on.pixelColor(track), accent::analysisBlue)) << on.pixelColor(track).name().toStdString();
    toggle.setChecked(false);
    EXPECT_NE(on, picture(toggle));
}

TEST(ControlsSwitch, growsWithTheUsersFont)
{
    QWidget window;
    Switch& toggle = shownIn(window, new Switch(QStringLiteral("Mantener estructura de carpetas")));
    const int width = toggle.sizeHint().width();
    const FontChange change(designFont(2));
    EXPECT_GT(toggle.sizeHint().width(), 1.9 * width);
    EXPECT_EQ(toggle.sizeHint().height(), 44);
}

TEST(ControlsPopUp, showsNothingWhileNothingIsChosen)
{
    PopUp popUp;
    popUp.addItem(QStringLiteral("Disco A"));
    popUp.setCurrentIndex(-1);
    placeAtIdealSize(popUp);
    const QImage nothing = picture(popUp);
    popUp.setCurrentIndex(0);
    EXPECT_NE(nothing, picture(popUp));
}

class ControlsPopUpKeys : public testing::Test {
protected:
    ControlsPopUpKeys()
    {
        popUp.addItems({QStringLiteral("Disco A"), QStringLiteral("Disco B"), QStringLiteral("Disco C")});
        popUp.setCurrentIndex(1);
        changes.clear();
        showActive(popUp);
    }

    PopUp popUp;
    QSignalSpy choices{&popUp, &QComboBox::activated};
    QSignalSpy changes{&popUp, &QComboBox::currentIndexChanged};
};

TEST_F(ControlsPopUpKeys, openTheList)
{
    for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Up, Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter, Qt::Key_F4}) {
        QTest::keyClick(&popUp, key);
        EXPECT_TRUE(popUp.view()->isVisible()) << key;
        popUp.hidePopup();
    }
    EXPECT_EQ(changes.count() + choices.count(), 0);
}

TEST_F(ControlsPopUpKeys, goToTheWindowIfTheyDoNotOpenTheList)
{
    for (const Qt::Key key : {Qt::Key_PageDown, Qt::Key_PageUp, Qt::Key_Home, Qt::Key_End, Qt::Key_D, Qt::Key_Escape}) {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, key == Qt::Key_D ? QStringLiteral("D") : QString());
        QApplication::sendEvent(&popUp, &event);
        EXPECT_FALSE(event.isAccepted()) << key;
        EXPECT_FALSE(popUp.view()->isVisible()) << key;
    }
    EXPECT_EQ(changes.count() + choices.count(), 0);
}

TEST_F(ControlsPopUpKeys, chooseInTheOpenList)
{
    QTest::keyClick(&popUp, Qt::Key_Down);
    QTest::keyClick(popUp.view(), Qt::Key_Down);
    EXPECT_EQ(changes.count(), 0);
    QTest::keyClick(popUp.view(), Qt::Key_Return);
    EXPECT_EQ(popUp.currentText(), QStringLiteral("Disco C"));
    EXPECT_EQ(choices.count(), 1);
}

TEST(ControlsPopUp, leavesTheWheelToTheWindow)
{
    PopUp popUp;
    popUp.addItems({QStringLiteral("Disco A"), QStringLiteral("Disco B")});
    showActive(popUp);
    turnWheel(popUp, {5, 5}, -1);
    EXPECT_EQ(popUp.currentText(), QStringLiteral("Disco A"));
}

TEST(ControlsPopUp, isNotWidenedByALongName)
{
    PopUp popUp;
    popUp.addItem(QStringLiteral("Disco ").repeated(100));
    EXPECT_LE(popUp.minimumSizeHint().width(), 80);
}

TEST(ControlsPopUp, growsWithTheUsersFont)
{
    QWidget window;
    PopUp& popUp = shownIn(window, new PopUp);
    popUp.addItem(QStringLiteral("Disco A"));
    EXPECT_EQ(popUp.sizeHint().height(), 28);
    const int width = popUp.sizeHint().width();
    const FontChange change(designFont(2));
    EXPECT_EQ(popUp.sizeHint().height(), 44);
    EXPECT_GT(popUp.sizeHint().width(), width);
}

TEST(ControlsBar, isFilledToItsFraction)
{
    Bar bar;
    bar.resize(200, 6);
    bar.setFraction(0.5);
    const QImage half = picture(bar);
    EXPECT_TRUE(areClose(half.pixelColor(90, 3), accent::analysisBlue));
    EXPECT_FALSE(areClose(half.pixelColor(110, 3), accent::analysisBlue, 40));
    bar.setFraction(0);
    EXPECT_FALSE(areClose(picture(bar).pixelColor(3, 3), accent::analysisBlue, 40));
    bar.setFraction(1);
    EXPECT_TRUE(areClose(picture(bar).pixelColor(196, 3), accent::analysisBlue));
}

TEST(ControlsBar, staysWithinItsRange)
{
    Bar bar;
    bar.setFraction(1.5);
    EXPECT_EQ(bar.value(), bar.maximum());
    bar.setFraction(-1);
    EXPECT_EQ(bar.value(), bar.minimum());
}

TEST(ControlsBar, isNeverIndeterminate)
{
    const Bar bar;
    EXPECT_LT(bar.minimum(), bar.maximum());
}

} // namespace
} // namespace reelkeep
