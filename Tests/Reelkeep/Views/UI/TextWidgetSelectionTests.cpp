#include "Fixtures/TextWidgetTest.h"

#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QMenu>
#include <QTest>

#include <gtest/gtest.h>

namespace reelkeep {
namespace {

class TextWidgetSelection : public TextWidgetTest {
protected:
    QString clipboard() const { return QApplication::clipboard()->text(); }
};

TEST_F(TextWidgetSelection, areCopiedWholeAlthoughTheirEndIsCutOff)
{
    makePath(300);
    QTest::keySequence(&text, QKeySequence::SelectAll);
    QTest::keySequence(&text, QKeySequence::Copy);
    EXPECT_EQ(clipboard(), longPath);
}

TEST_F(TextWidgetSelection, areCopiedWholeWhenNothingIsSelected)
{
    makePath(300);
    QTest::keySequence(&text, QKeySequence::Copy);
    EXPECT_EQ(clipboard(), longPath);
}

TEST_F(TextWidgetSelection, areSelectedToTheirCutOffEndByADragAcrossTheEllipsis)
{
    makePath(300);
    QTest::mousePress(&text, Qt::LeftButton, {}, QPoint(0, 3));
    QTest::mouseMove(&text, QPoint(299, 38));
    QTest::mouseRelease(&text, Qt::LeftButton, {}, QPoint(299, 38));
    EXPECT_EQ(text.selectedText(), longPath);
}

TEST_F(TextWidgetSelection, areSelectedByADrag)
{
    makeSelectable(QStringLiteral("/media/ana/EOS"));
    QTest::mousePress(&text, Qt::LeftButton, {}, text.characterRect(7).topLeft().toPoint() + QPoint(0, 8));
    QTest::mouseMove(&text, text.characterRect(10).topLeft().toPoint() + QPoint(0, 8));
    QTest::mouseRelease(&text, Qt::LeftButton, {}, text.characterRect(10).topLeft().toPoint() + QPoint(0, 8));
    EXPECT_EQ(text.selectedText(), QStringLiteral("ana"));
    QTest::keySequence(&text, QKeySequence::Copy);
    EXPECT_EQ(clipboard(), QStringLiteral("ana"));
}

TEST_F(TextWidgetSelection, areSelectedAcrossLinesByADrag)
{
    makeSelectable(QStringLiteral("/media/ana/EOS_DIGITAL/DCIM/100CANON"));
    text.resize(120, text.heightForWidth(120));
    const auto from = text.characterRect(7).center().toPoint() - QPoint(3, 0);
    const auto to = text.characterRect(23).center().toPoint() - QPoint(3, 0);
    ASSERT_NE(from.y(), to.y());
    QTest::mousePress(&text, Qt::LeftButton, {}, from);
    QTest::mouseMove(&text, to);
    QTest::mouseRelease(&text, Qt::LeftButton, {}, to);
    EXPECT_EQ(text.selectedText(), QStringLiteral("ana/EOS_DIGITAL/"));
}

TEST_F(TextWidgetSelection, areSelectedCompletelyByADoubleClick)
{
    makeSelectable(QStringLiteral("/media/ana/EOS"));
    QTest::mouseDClick(&text, Qt::LeftButton, {}, QPoint(20, 8));
    EXPECT_EQ(text.selectedText(), QStringLiteral("/media/ana/EOS"));
}

TEST_F(TextWidgetSelection, extendTheirSelectionToAClickWithShift)
{
    makeSelectable(QStringLiteral("/media/ana/EOS"));
    QTest::mouseClick(&text, Qt::LeftButton, {}, text.characterRect(1).topLeft().toPoint() + QPoint(0, 8));
    QTest::mouseClick(&text, Qt::LeftButton, Qt::ShiftModifier,
                      text.characterRect(6).topLeft().toPoint() + QPoint(0, 8));
    EXPECT_EQ(text.selectedText(), QStringLiteral("media"));
}

TEST_F(TextWidgetSelection, areSelectedByKeys)
{
    makeSelectable(QStringLiteral("/media/ana/EOS"));
    QTest::keySequence(&text, QKeySequence::MoveToStartOfLine);
    for (int count = 0; count < 6; ++count)
        QTest::keySequence(&text, QKeySequence::SelectNextChar);
    EXPECT_EQ(text.selectedText(), QStringLiteral("/media"));
    QTest::keySequence(&text, QKeySequence::SelectPreviousChar);
    EXPECT_EQ(text.selectedText(), QStringLiteral("/medi"));
    QTest::keySequence(&text, QKeySequence::SelectEndOfLine);
    EXPECT_EQ(text.selectedText(), QStringLiteral("/media/ana/EOS"));
    QTest::keySequence(&text, QKeySequence::MoveToEndOfLine);
    EXPECT_FALSE(text.hasSelection());
    QTest::keySequence(&text, QKeySequence::SelectStartOfLine);
    EXPECT_EQ(text.selectedText(), QStringLiteral("/media/ana/EOS"));
}

TEST_F(TextWidgetSelection, areSelectedByCharacterEvenIfOneTakesTwoUnits)
{
    makeSelectable(QStringLiteral("🎬.MOV"));
    QTest::keySequence(&text, QKeySequence::MoveToStartOfLine);
    QTest::keySequence(&text, QKeySequence::SelectNextChar);
    EXPECT_EQ(text.selectedText(), QStringLiteral("🎬"));
    QTest::keySequence(&text, QKeySequence::SelectNextChar);
    QTest::keySequence(&text, QKeySequence::SelectPreviousChar);
    EXPECT_EQ(text.selectedText(), QStringLiteral("🎬"));
    QTest::keySequence(&text, QKeySequence::SelectPreviousChar);
    EXPECT_FALSE(text.hasSelection());
}

TEST_F(TextWidgetSelection, showWhatIsSelected)
{
    makeSelectable(QStringLiteral("/media/ana/EOS"));
    const QImage plain = picture(text);
    QTest::keySequence(&text, QKeySequence::SelectAll);
    EXPECT_NE(plain, picture(text));
}

TEST_F(TextWidgetSelection, offerToBeCopiedInAMenu)
{
    makeSelectable(QStringLiteral("/media/ana/EOS"));
    QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(5, 5), text.mapToGlobal(QPoint(5, 5)));
    QApplication::sendEvent(&text, &event);
    auto* menu = text.findChild<QMenu*>();
    ASSERT_NE(menu, nullptr);
    ASSERT_EQ(menu->actions().size(), 2);
    EXPECT_EQ(menu->actions().at(0)->text(), QStringLiteral("Copiar"));
    EXPECT_EQ(menu->actions().at(1)->text(), QStringLiteral("Seleccionar todo"));
    menu->actions().at(1)->trigger();
    EXPECT_EQ(text.selectedText(), QStringLiteral("/media/ana/EOS"));
    QApplication::clipboard()->clear();
    menu->actions().at(0)->trigger();
    EXPECT_EQ(clipboard(), QStringLiteral("/media/ana/EOS"));
    menu->close();
}

TEST_F(TextWidgetSelection, keepTheirSelectionWhenTheirMenuIsOpened)
{
    makeSelectable(QStringLiteral("/media/ana/EOS"));
    showActive(text);
    text.setFocus();
    text.select(7, 10);
    const QPoint place = text.rect().center();
    QTest::mousePress(&text, Qt::RightButton, {}, place);
    QContextMenuEvent event(QContextMenuEvent::Mouse, place, text.mapToGlobal(place));
    QApplication::sendEvent(&text, &event);
    auto* menu = text.findChild<QMenu*>();
    ASSERT_NE(menu, nullptr);
    EXPECT_EQ(text.selectedText(), QStringLiteral("ana"));
    menu->actions().at(0)->trigger();
    EXPECT_EQ(clipboard(), QStringLiteral("ana"));
    menu->close();
    QTest::mouseRelease(&text, Qt::RightButton, {}, place);
}

TEST_F(TextWidgetSelection, loseTheirSelectionWithTheFocus)
{
    makeSelectable(QStringLiteral("/media/ana/EOS"));
    text.selectAll();
    text.clearFocus();
    EXPECT_FALSE(text.hasSelection());
}

TEST_F(TextWidgetSelection, loseTheirSelectionWhenTheyChange)
{
    makeSelectable(QStringLiteral("/media/ana/EOS"));
    text.selectAll();
    text.setText(QStringLiteral("/media/ana"));
    EXPECT_FALSE(text.hasSelection());
    EXPECT_EQ(text.selectedText(), QString());
}

TEST_F(TextWidgetSelection, keepTheirSelectionWhenTheyAreSetAgainUnchanged)
{
    makeSelectable(QStringLiteral("/media/ana/EOS"));
    text.select(1, 6);
    text.setText(QStringLiteral("/media/ana/EOS"));
    EXPECT_EQ(text.selectedText(), QStringLiteral("media"));
}

TEST_F(TextWidgetSelection, cannotBeSelectedByDefault)
{
    make(QStringLiteral("Listo"));
    showActive(text);
    QTest::mouseDClick(&text, Qt::LeftButton, {}, QPoint(5, 5));
    QTest::mousePress(&text, Qt::LeftButton, {}, QPoint(0, 5));
    QTest::mouseMove(&text, QPoint(20, 5));
    QTest::mouseRelease(&text, Qt::LeftButton, {}, QPoint(20, 5));
    EXPECT_FALSE(text.hasSelection());
    EXPECT_EQ(text.focusPolicy(), Qt::NoFocus);
}

TEST_F(TextWidgetSelection, takeTheFocusOnlyIfSelectable)
{
    text.setSelectable(true);
    EXPECT_EQ(text.focusPolicy(), Qt::StrongFocus);
    text.setSelectable(false);
    EXPECT_EQ(text.focusPolicy(), Qt::NoFocus);
}

TEST_F(TextWidgetSelection, areCopiedWithTheirControlCharacters)
{
    const QString name = QStringLiteral("a\nb\tc.MOV");
    makeSelectable(name);
    QTest::keySequence(&text, QKeySequence::SelectAll);
    QTest::keySequence(&text, QKeySequence::Copy);
    EXPECT_EQ(clipboard(), name);
}

} // namespace
} // namespace reelkeep
