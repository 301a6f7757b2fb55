#include "Fixtures/Desktops.h"
#include "Fixtures/WindowTest.h"

#include <QApplication>
#include <QHelpEvent>
#include <QLabel>
#include <QScreen>
#include <QScrollBar>
#include <QTest>
#include <QTextDocumentFragment>
#include <QToolTip>

#include <gtest/gtest.h>

namespace reelkeep {
namespace {

/// The whole of a text that the window has to cut, shown under the pointer.
class ContentViewToolTip : public WindowTest {
protected:
    ~ContentViewToolTip() override { hideTip(); }

    static void hideTip()
    {
        QToolTip::hideText();
        ASSERT_TRUE(waitUntil([] { return !QToolTip::isVisible(); }));
    }
    /// The open tool tip, or null.
    static const QLabel* tip()
    {
        for (const QWidget* widget : QApplication::topLevelWidgets()) {
            if (widget->isVisible() && widget->inherits("QTipLabel"))
                return qobject_cast<const QLabel*>(widget);
        }
        return nullptr;
    }
    static QString words(const QLabel& tip)
    {
        EXPECT_TRUE(Qt::mightBeRichText(tip.text()));
        return QTextDocumentFragment::fromHtml(tip.text()).toPlainText();
    }
    /// The text without its line breaks.
    static QString unbroken(QString text) { return text.remove(u'\n'); }
    void restPointerOn(QWidget& widget)
    {
        window->scrollArea()->ensureWidgetVisible(&widget);
        settle();
        QTest::mouseMove(window->windowHandle(), widget.mapTo(window.get(), QPoint(20, 8)));
        QTest::mouseMove(window->windowHandle(), widget.mapTo(window.get(), QPoint(22, 8)));
    }
    /// Requests the tool tip at once, as the toolkit does when the pointer has rested.
    static bool wantsToolTip(QWidget& widget)
    {
        hideTip();
        QHelpEvent event(QEvent::ToolTip, QPoint(20, 8), widget.mapToGlobal(QPoint(20, 8)));
        QApplication::sendEvent(&widget, &event);
        return QToolTip::isVisible();
    }
};

const std::string longPath = "/media/ana/" + std::string(40, 'a') + "/<b>Boda &amp; %1</b>/" + std::string(1500, 'x');

TEST_F(ContentViewToolTip, showsTheWholeOfAPathOfMoreThanThreeLines)
{
    chooseCamera(longPath);
    chooseDestination(longPath);
    const QString path = displayText(longPath);
    for (const char* part : {"Paso 1, Camara o tarjeta", "Paso 2, Destino de copia", "Copiar lo que falta"}) {
        restPointerOn(textIn(QString::fromLatin1(part), path));
        ASSERT_TRUE(waitUntil([] { return tip() != nullptr; })) << part;
        EXPECT_EQ(unbroken(words(*tip())), path) << part;
        EXPECT_TRUE(tip()->screen()->availableGeometry().contains(tip()->geometry())) << part;
        EXPECT_LE(tip()->sizeHint().width(), tip()->width());
        EXPECT_LE(tip()->sizeHint().height(), tip()->height());
        hideTip();
    }
}

TEST_F(ContentViewToolTip, showsTheWholeOfAChoiceThatIsCutInTheMiddle)
{
    const std::string name(300, 'y');
    chooseDestination("/media/ana/" + name);
    addReviewFolders({"/media/ana/corto"});
    restPointerOn(*chooser());
    ASSERT_TRUE(waitUntil([] { return tip() != nullptr; }));
    EXPECT_EQ(unbroken(words(*tip())), displayText(name));
    pick(QStringLiteral("corto"));
    EXPECT_FALSE(wantsToolTip(*chooser()));
}

TEST_F(ContentViewToolTip, showsControlCharactersAsTheWindowDoes)
{
    chooseCamera("/card/a\nb" + std::string(1500, 'x'));
    TextWidget& path =
        textIn(QStringLiteral("Paso 1, Camara o tarjeta"), displayText(session().sourceFolder()->path()));
    ASSERT_TRUE(wantsToolTip(path));
    EXPECT_TRUE(unbroken(words(*tip())).startsWith(QStringLiteral("/card/a\u240Ab")));
}

TEST_F(ContentViewToolTip, isAbsentIfNothingIsCut)
{
    enterState(WindowState::analysed);
    for (const int width : {480, 1148}) {
        resize(width, 1000);
        for (TextWidget* text : shownTexts(*content))
            EXPECT_FALSE(wantsToolTip(*text)) << text->text().toStdString();
        EXPECT_FALSE(wantsToolTip(*chooser()));
    }
}

TEST_F(ContentViewToolTip, isThereExactlyIfThereIsAnEllipsis)
{
    for (const int length : {100, 200, 300, 1000}) {
        chooseCamera("/media/" + std::string(std::size_t(length), 'x'));
        for (const int width : {480, 760, 1148}) {
            resize(width, 1000);
            TextWidget& path =
                textIn(QStringLiteral("Paso 1, Camara o tarjeta"), displayText(session().sourceFolder()->path()));
            // All characters that are cut off have the place of the ellipsis.
            const bool isWhole = path.characterRect(length).right() <= path.width() &&
                                 path.characterRect(length + 6) != path.characterRect(length + 5);
            EXPECT_NE(wantsToolTip(path), isWhole) << length << " at " << width;
        }
    }
}

} // namespace
} // namespace reelkeep
