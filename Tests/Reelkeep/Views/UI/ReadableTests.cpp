#include "Fixtures/Desktops.h"
#include "Fixtures/EventLoop.h"
#include "Fixtures/Widgets.h"
#include "UI/Controls.h"
#include "UI/PopUp.h"
#include "UI/TextWidget.h"
#include "UI/View.h"

#include <gtest/gtest.h>

namespace reelkeep {
namespace {

void place(TextWidget& text, int width)
{
    text.resize(width, text.heightForWidth(width));
}

/// Give or take a pixel: with some fonts, rounding makes a word too wide that would just fit.
TEST(ReadableText, needsTheWidthOfItsLongestWord)
{
    for (const QString& words :
         {QStringLiteral("3 ubicaciones seleccionadas"), QStringLiteral("Ubicaciones a revisar"),
          QStringLiteral("/media/ana/Proyectos/Boda Marta"), QStringLiteral("DCIM/100CANON/MVI_0412.MOV")}) {
        for (const double scale : {1.0, 1.5, 2.0}) {
            const FontChange change(designFont(scale));
            TextWidget text;
            text.setText(words);
            place(text, text.readableWidth() + 1);
            EXPECT_FALSE(breaksAWord(text)) << words.toStdString() << " at " << scale;
            place(text, text.readableWidth() - 1);
            EXPECT_TRUE(breaksAWord(text)) << words.toStdString() << " at " << scale;
        }
    }
}

TEST(ReadableText, fitsOnOneLineAtItsIdealWidthWhateverItEndsWith)
{
    for (const double scale : {1.0, 1.5, 2.0}) {
        const FontChange change(designFont(scale));
        for (char last = '!'; last <= '~'; ++last) {
            TextWidget text;
            text.setText(QStringLiteral("Videos ") + QLatin1Char(last));
            place(text, text.sizeHint().width());
            EXPECT_EQ(text.characterRect(int(text.text().size()) - 1).top(), 0) << last << " at " << scale;
        }
    }
}

TEST(ReadableText, isReadableOnlyOnOneLineIfLimitedToOne)
{
    TextWidget text;
    text.setText(QStringLiteral("HD de copia activo"));
    EXPECT_LT(text.readableWidth(), text.sizeHint().width() / 2);
    text.setLineLimit(1);
    EXPECT_EQ(text.readableWidth(), text.sizeHint().width());
}

/// A row of two children that becomes a column if that keeps them readable.
class ReadableRow : public testing::Test {
protected:
    void show(std::vector<View> children)
    {
        first = children.front().widget;
        second = children.back().widget;
        View row = HStack({.staysReadable = true}, std::move(children));
        row.refresh();
        row.widget->setParent(&window);
        row.widget->show();
        window.show();
        shown = row.widget;
    }
    void resize(int width) const
    {
        shown->resize(width, shown->heightForWidth(width));
        letEventsPass();
    }
    bool isRow() const { return second->x() >= first->x() + first->width() && second->y() < first->height(); }
    bool isColumn() const { return second->x() == first->x() && second->y() == first->height() + 8; }
    static int readableWidth(const QWidget* child) { return dynamic_cast<const Readable&>(*child).readableWidth(); }

    QWidget window;
    QWidget* shown = nullptr;
    QWidget* first = nullptr;
    QWidget* second = nullptr;
};

TEST_F(ReadableRow, becomesAColumnIfAWordWouldBreak)
{
    show({Text("ubicaciones revisadas"), Text("todas las seleccionadas")});
    const int narrowest = readableWidth(first) + 8 + readableWidth(second);
    resize(narrowest);
    EXPECT_TRUE(isRow());
    for (const TextWidget* text : shownTexts(*shown))
        EXPECT_FALSE(breaksAWord(*text)) << text->text().toStdString();
    resize(narrowest - 1);
    EXPECT_TRUE(isColumn());
}

TEST_F(ReadableRow, breaksNoWordWhileAnotherChildCanShrink)
{
    show({Text("a b c d e f g h i j k l m n o p q r s t u v w x y z"), Text("transferenciaincondicional")});
    resize(readableWidth(second) + 8 + 40);
    EXPECT_TRUE(isRow());
    EXPECT_EQ(second->width(), readableWidth(second));
    EXPECT_EQ(first->width(), 40);
}

TEST_F(ReadableRow, becomesAColumnIfTheLabelOfAButtonWouldWrap)
{
    show({Text("Ubicacion lista para analizar."), Spacer(), PushButton("Elegir HD de copia", [] {})});
    // A gap on either side of the spacer, whose minimum is a third one.
    const int narrowest = readableWidth(first) + 3 * 8 + second->sizeHint().width();
    resize(narrowest);
    EXPECT_TRUE(isRow());
    EXPECT_EQ(second->height(), 28);
    resize(narrowest - 1);
    EXPECT_TRUE(isColumn());
    EXPECT_EQ(second->height(), 28);
}

TEST_F(ReadableRow, isAColumnIfAWordBreaksInAnyCase)
{
    show({Text(QStringLiteral("x").repeated(200)), Text("Copia")});
    resize(300);
    EXPECT_TRUE(isColumn());
    EXPECT_EQ(first->width(), 300);
}

class ReadablePicker : public ReadableRow {
protected:
    void show(const QString& name)
    {
        View picker = Picker(
            QStringLiteral("HD de copia activo"),
            [name] {
                return std::vector<PickerEntry>{{"a", name}};
            },
            [] { return std::string("a"); }, [](const std::string&) {});
        picker.refresh();
        picker.widget->setParent(&window);
        picker.widget->show();
        window.show();
        shown = picker.widget;
        first = shownTexts(*shown).front();
        second = shown->findChild<PopUp*>();
    }
};

TEST_F(ReadablePicker, hasItsPopUpBelowTheLabelOnlyIfThereIsNoRoomBesideIt)
{
    show(QStringLiteral("Archivo 2026"));
    resize(396);
    EXPECT_TRUE(isRow());
    const FontChange change(designFont(2));
    resize(396);
    EXPECT_TRUE(isColumn());
    EXPECT_EQ(second->width(), 396);
}

TEST_F(ReadablePicker, keepsItsLabelOnOneLineBesideALongName)
{
    show(QStringLiteral("Archivo de todas las bodas del verano de 2026"));
    resize(396);
    EXPECT_TRUE(isRow());
    EXPECT_EQ(first->width(), first->sizeHint().width());
}

} // namespace
} // namespace reelkeep
