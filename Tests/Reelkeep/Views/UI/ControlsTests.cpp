#include "Fixtures/Desktops.h"
#include "Fixtures/Widgets.h"
#include "UI/Controls.h"
#include "UI/PopUp.h"
#include "UI/TextWidget.h"

#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace reelkeep {
namespace {

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
        resizeToIdeal(*control);
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

TEST(Controls, lookDifferentWhenTheyArePressedThanUnderTheMouse)
{
    Button plain(QStringLiteral("Quitar"));
    Button prominent(QStringLiteral("Elegir camara"));
    prominent.setTint(accent::analysisBlue);
    Switch toggle(QStringLiteral("Mantener"));
    for (const QPalette& palette : {lightPalette(), darkPalette()}) {
        const PaletteChange change(palette);
        for (QAbstractButton* control : std::initializer_list<QAbstractButton*>{&plain, &prominent, &toggle}) {
            resizeToIdeal(*control);
            moveMouseOver(*control, true);
            const QImage hovered = picture(*control);
            control->setDown(true);
            EXPECT_NE(picture(*control), hovered) << control->metaObject()->className();
            control->setDown(false);
            EXPECT_EQ(picture(*control), hovered) << control->metaObject()->className();
            moveMouseOver(*control, false);
        }
    }
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
            resizeToIdeal(*control);
            const QImage before = picture(*control);
            moveMouseOver(*control, true);
            EXPECT_NE(picture(*control), before) << control->metaObject()->className();
            EXPECT_TRUE(control->testAttribute(Qt::WA_Hover)) << "repainted when the mouse comes and goes";
            moveMouseOver(*control, false);
            EXPECT_EQ(picture(*control), before) << control->metaObject()->className();
        }
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

TEST(ControlsSwitch, hasAWhiteKnobThatDoesNotGlareInTheDarkWhileItIsOff)
{
    Switch toggle(QStringLiteral("Mantener"));
    resizeToIdeal(toggle);
    const auto knob = [&toggle](bool isOn) {
        toggle.setChecked(isOn);
        return picture(toggle).pixelColor(toggle.width() - (isOn ? 11 : 27), toggle.height() / 2);
    };
    {
        const PaletteChange light(lightPalette());
        EXPECT_EQ(knob(true), QColor(Qt::white));
        EXPECT_EQ(knob(false), QColor(Qt::white));
    }
    const PaletteChange dark(darkPalette());
    EXPECT_EQ(knob(true), QColor(Qt::white));
    EXPECT_EQ(knob(false), grey(244));
}

TEST(ControlsSwitch, isTurnedByAClickAnywhereOnItsLine)
{
    Switch toggle(QStringLiteral("Mantener estructura de carpetas"));
    resizeToIdeal(toggle);
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
    resizeToIdeal(toggle);
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
