#include "Fixtures/Desktops.h"
#include "Fixtures/WindowTest.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QApplication>
#include <QScrollBar>
#include <QTest>

#include <gtest/gtest.h>

#include <set>

namespace reelkeep {
namespace {

using enum WindowState;

/// The window used without a mouse.
class ContentViewKeyboard : public WindowTest {
protected:
    /// What a screen reader says about a widget in the Tab order.
    static QString nameOf(QWidget& widget)
    {
        const QString description = spoken(widget).text(QAccessible::Description);
        return description.isEmpty() ? spokenName(widget) : spokenName(widget) + QStringLiteral(" ") + description;
    }
    QWidget& focused() const
    {
        if (!window->focusWidget())
            throw std::logic_error("nothing has the focus");
        return *window->focusWidget();
    }
    void tab() const { QTest::keyClick(&focused(), Qt::Key_Tab); }
    void tabBack() const { QTest::keyClick(&focused(), Qt::Key_Backtab, Qt::ShiftModifier); }
    /// The names of the widgets in the Tab order, once round from the first one.
    QStringList stops(const std::function<void()>& step) const
    {
        content->setFocus();
        step();
        QWidget* const first = &focused();
        QStringList names;
        do {
            names.append(nameOf(focused()));
            step();
        } while (&focused() != first && names.size() < 100);
        return names;
    }
    QStringList forward() const
    {
        return stops([this] { tab(); });
    }
    QStringList backward() const
    {
        return stops([this] { tabBack(); });
    }
    void tabTo(const QString& name) const
    {
        for (int count = 0; count < 100 && nameOf(focused()) != name; ++count)
            tab();
        ASSERT_EQ(nameOf(focused()), name);
    }
    bool isInView(const QWidget& widget) const
    {
        const QRect place(widget.mapTo(window.get(), QPoint()), widget.size());
        return window->rect().contains(place);
    }
};

TEST_F(ContentViewKeyboard, reachesEnabledControlsInReadingOrder)
{
    EXPECT_EQ(forward(), (QStringList{QStringLiteral("Elegir camara"), QStringLiteral("Elegir HD de copia"),
                                      QStringLiteral("Anadir ubicaciones"), QStringLiteral("Sin seleccionar"),
                                      QStringLiteral("Mantener estructura de carpetas"),
                                      QStringLiteral("Selecciona un destino de copia.")}));
}

TEST_F(ContentViewKeyboard, reachesEverythingInReadingOrder)
{
    enterState(analysed);
    EXPECT_EQ(
        forward(),
        (QStringList{QStringLiteral("/media/ana/EOS_DIGITAL"), QStringLiteral("Elegir camara"),
                     QStringLiteral("/media/ana/Archivo 2026"), QStringLiteral("Elegir HD de copia"),
                     QStringLiteral("Usar solo HD de copia"), QStringLiteral("Anadir ubicaciones"),
                     QStringLiteral("3 ubicaciones seleccionadas"), QStringLiteral("/media/ana/Archivo 2026"),
                     QStringLiteral("/media/ana/Disco B"), QStringLiteral("Quitar /media/ana/Disco B"),
                     QStringLiteral("/media/ana/Proyectos/Boda Marta"),
                     QStringLiteral("Quitar /media/ana/Proyectos/Boda Marta"),
                     QStringLiteral("Mantener estructura de carpetas"), scanLabel, QStringLiteral("HD de copia activo"),
                     QStringLiteral("/media/ana/Archivo 2026"), copyLabel, QStringLiteral("Videos pendientes")}));
}

TEST_F(ContentViewKeyboard, keepsReadingOrderWhenRowsAreRebuilt)
{
    chooseDestination("/media/a");
    addReviewFolders({"/media/b", "/media/c"});
    pick(QStringLiteral("c"));
    const QStringList names = forward();
    const auto indexOf = [&names](const char* name) { return names.indexOf(QString::fromLatin1(name)); };
    EXPECT_GT(indexOf("Quitar /media/a"), indexOf("Anadir ubicaciones"));
    EXPECT_GT(indexOf("Quitar /media/b"), indexOf("Quitar /media/a"));
    EXPECT_GT(indexOf("Mantener estructura de carpetas"), indexOf("Quitar /media/b"));
}

TEST_F(ContentViewKeyboard, keepsReadingOrderWhateverIsChosenFirst)
{
    addReviewFolders({"/media/b", "/media/c"});
    chooseDestination("/media/a");
    chooseCamera("/card");
    const QStringList names = forward();
    EXPECT_EQ(names.mid(0, 4), (QStringList{QStringLiteral("/card"), QStringLiteral("Elegir camara"),
                                            QStringLiteral("/media/a"), QStringLiteral("Elegir HD de copia")}));
}

TEST_F(ContentViewKeyboard, cyclesInBothDirections)
{
    for (const WindowState state : {fresh, analysed}) {
        enterState(state);
        const QStringList there = forward();
        QStringList back = backward();
        std::reverse(back.begin(), back.end());
        EXPECT_EQ(back, there);
    }
}

TEST_F(ContentViewKeyboard, followsTheLayoutAtEveryWidth)
{
    enterState(analysed);
    for (const int width : {480, 760, 1148}) {
        resize(width, 800);
        content->setFocus();
        tab();
        const QWidget* const first = &focused();
        QPoint before(-1, -1);
        do {
            const QPoint place = focused().mapTo(content, QPoint(0, focused().height() / 2));
            // If the panels are side by side, the whole left one comes first although it extends further down.
            const bool isNextColumn = place.x() > before.x() + 200;
            EXPECT_TRUE(place.y() > before.y() - 20 || isNextColumn)
                << width << ": " << nameOf(focused()).toStdString();
            before = place;
            tab();
        } while (&focused() != first);
    }
}

TEST_F(ContentViewKeyboard, scrollsTheFocusedControlIntoView)
{
    enterState(analysed);
    resize(800, 560); // What fits on a screen of 800 x 600.
    for (const auto& step : {std::function<void()>([this] { tab(); }), std::function<void()>([this] { tabBack(); })}) {
        content->setFocus();
        step();
        const QWidget* const first = &focused();
        do {
            EXPECT_TRUE(isInView(focused())) << nameOf(focused()).toStdString();
            step();
        } while (&focused() != first);
    }
}

TEST_F(ContentViewKeyboard, completesARunOnASmallScreen)
{
    fill("/card", "/disk", 3, 1);
    resize(800, 560);
    content->setFocus();
    willChoose({"/card"});
    tabTo(QStringLiteral("Elegir camara"));
    QTest::keyClick(&focused(), Qt::Key_Return);
    willChoose({"/disk"});
    tabTo(QStringLiteral("Elegir HD de copia"));
    QTest::keyClick(&focused(), Qt::Key_Space);
    settle();
    tabTo(QStringLiteral("Mantener estructura de carpetas"));
    QTest::keyClick(&focused(), Qt::Key_Space);
    tabTo(scanLabel);
    EXPECT_TRUE(isInView(focused()));
    QTest::keyClick(&focused(), Qt::Key_Return);
    ASSERT_TRUE(becomesIdle());
    ASSERT_NE(list(), nullptr);
    tabTo(QStringLiteral("Videos pendientes"));
    EXPECT_TRUE(isInView(focused()));
    QTest::keyClick(&focused(), Qt::Key_Down);
    EXPECT_EQ(list()->currentRow(), 1);
    tabTo(copyLabel);
    EXPECT_TRUE(isInView(focused()));
    QTest::keyClick(&focused(), Qt::Key_Return);
    ASSERT_TRUE(becomesIdle());
    EXPECT_TRUE(files->has("/disk/MVI_1001.MOV"));
    EXPECT_TRUE(files->has("/disk/MVI_1002.MOV"));
}

TEST_F(ContentViewKeyboard, choosesADiskWithTheArrowKeys)
{
    chooseDestination("/media/a");
    addReviewFolders({"/media/b"});
    tabTo(QStringLiteral("HD de copia activo"));
    QTest::keyClick(&focused(), Qt::Key_Down);
    EXPECT_EQ(session().copyDestinationFolder(), Location("/media/a")) << "the key only opens the list";
    QTest::keyClick(chooser()->view(), Qt::Key_Down);
    QTest::keyClick(chooser()->view(), Qt::Key_Return);
    settle();
    EXPECT_EQ(session().copyDestinationFolder(), Location("/media/b"));
    EXPECT_EQ(chooser()->currentText(), QStringLiteral("b"));
    EXPECT_EQ(window->focusWidget(), chooser());
}

TEST_F(ContentViewKeyboard, removesARowAndKeepsTheFocusInTheWindow)
{
    addReviewFolders({"/media/a", "/media/b"});
    tabTo(QStringLiteral("Quitar /media/a"));
    QTest::keyClick(&focused(), Qt::Key_Space);
    settle();
    EXPECT_EQ(session().destinationReviewFolders(), std::vector<Location>{Location("/media/b")});
    tab();
    EXPECT_TRUE(content->isAncestorOf(&focused()));
}

TEST_F(ContentViewKeyboard, keepsItsPlaceWhenAButtonIsDisabled)
{
    fill("/card", "/disk", 3, 1);
    chooseCamera("/card");
    chooseDestination("/disk");
    tabTo(scanLabel);
    files->close();
    QTest::keyClick(&focused(), Qt::Key_Return);
    settle();
    files->open();
    ASSERT_TRUE(becomesIdle());
    // The next Tab goes on from the scan button, not from the top of the window.
    tab();
    EXPECT_NE(nameOf(focused()), QStringLiteral("/card"));
    EXPECT_NE(nameOf(focused()), QStringLiteral("Elegir camara"));
}

TEST_F(ContentViewKeyboard, showsWhatHasTheFocus)
{
    enterState(analysed);
    resizeToContent(1148);
    content->setFocus();
    tab();
    QWidget* const first = &focused();
    do {
        QWidget& here = focused();
        const QImage with = picture(*window);
        here.clearFocus();
        EXPECT_NE(with, picture(*window)) << nameOf(here).toStdString();
        here.setFocus(Qt::TabFocusReason);
        tab();
    } while (&focused() != first);
}

TEST_F(ContentViewKeyboard, findsANameAndARoleOfEveryControl)
{
    const std::set<QAccessible::Role> known = {QAccessible::Button, QAccessible::CheckBox, QAccessible::ComboBox,
                                               QAccessible::StaticText, QAccessible::List};
    enterState(analysed);
    content->setFocus();
    tab();
    QWidget* const first = &focused();
    do {
        QAccessibleInterface& stop = spoken(focused());
        EXPECT_FALSE(stop.text(QAccessible::Name).isEmpty()) << focused().metaObject()->className();
        EXPECT_TRUE(known.count(stop.role())) << nameOf(focused()).toStdString() << " is a " << stop.role();
        EXPECT_TRUE(stop.state().focusable) << nameOf(focused()).toStdString();
        EXPECT_TRUE(stop.state().focused) << nameOf(focused()).toStdString();
        tab();
    } while (&focused() != first);
}

TEST_F(ContentViewKeyboard, findsAUniqueNameOfEveryButton)
{
    enterState(analysed);
    std::set<std::string> names;
    for (Button* button : content->findChildren<Button*>()) {
        if (button->isVisible()) {
            EXPECT_TRUE(names.insert(nameOf(*button).toStdString()).second) << nameOf(*button).toStdString();
        }
    }
    EXPECT_EQ(names.size(), 9U);
}

TEST_F(ContentViewKeyboard, leavesTheListWithTab)
{
    enterState(analysed);
    list()->setFocus();
    tab();
    EXPECT_FALSE(list()->hasFocus());
    tabBack();
    EXPECT_TRUE(list()->hasFocus());
}

class ContentViewKeyboardClosing : public WindowTest, public testing::WithParamInterface<Qt::Key> {};

TEST_P(ContentViewKeyboardClosing, closesTheWindowDuringACopyFromAControl)
{
    enterState(copying);
    toggle().setFocus();
    QTest::keyClick(&toggle(), GetParam(), Qt::ControlModifier);
    EXPECT_FALSE(window->isVisible());
}

INSTANTIATE_TEST_SUITE_P(Keys, ContentViewKeyboardClosing, testing::Values(Qt::Key_Q, Qt::Key_W));

} // namespace
} // namespace reelkeep
