#include "Fixtures/Desktops.h"
#include "Fixtures/WindowTest.h"

#include <QScrollBar>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace reelkeep {
namespace {

std::string repeated(const std::string& part, int count)
{
    std::string text;
    for (int i = 0; i < count; ++i)
        text += part;
    return text;
}

/// Paths of many scripts, short and long, each with its name at the end.
std::vector<std::string> pathsOfManyScripts()
{
    return {
        "DCIM/100CANON/MVI_0001.MOV",
        "DCIM/" + repeated("Entrevista con Marta y Luis en la plaza mayor ", 5) + "/toma buena.MOV",
        "Видео/" + repeated("Съёмка на Красной площади ", 6) + "/" + repeated("Интервью ", 12) + ".MOV",
        "ビデオ/" + repeated("東京の夏祭りの映像", 9) + "/" + repeated("花火大会", 20) + ".MOV",
        "فيديو/" + repeated("تصوير حفل الزفاف في المدينة القديمة ", 5) + "/" + repeated("مقابلة ", 14) + ".MOV",
        "Fiesta/" + repeated("🎉👩‍👩‍👧‍👦🎬", 16) + "/" + repeated("🎥 ", 30) + ".MOV",
        "Marcas/" + repeated("n\u0303a\u0301\u0323e\u0302\u0301", 30) + "/" + repeated("o\u0308\u0304 ", 30) + ".MOV",
        "SinCorte/" + repeated("x", 240) + "/" + repeated("W", 236) + ".MOV",
        "Mezcla/" + repeated("Boda 婚礼 свадьба زفاف 🎊 ", 6) + "/clip.MOV",
    };
}

class ContentViewPendingList : public WindowTest {
protected:
    void show(const std::vector<std::string>& paths)
    {
        for (const std::string& path : paths)
            files->add("/card/" + path, 1000);
        chooseCamera("/card");
        chooseDestination("/disk");
        analyse();
    }
    std::vector<TextWidget*> textsOf(int row) const
    {
        std::vector<TextWidget*> texts;
        for (TextWidget* text : shownTexts(*list()->viewport())) {
            if (list()->rowRect(row).contains(text->mapTo(list()->viewport(), text->rect().center())))
                texts.push_back(text);
        }
        return texts;
    }
    /// Shows each row in turn and checks that its texts fit.
    void expectWholeRows() const
    {
        for (int row = 0; row < list()->rowCount(); ++row) {
            list()->setCurrentRow(row);
            letEventsPass();
            const std::vector<TextWidget*> texts = textsOf(row);
            ASSERT_EQ(texts.size(), 3U) << "row " << row;
            for (const TextWidget* text : texts) {
                const QRect place(text->mapTo(list()->viewport(), QPoint()), text->size());
                EXPECT_TRUE(list()->rowRect(row).contains(place)) << text->text().toStdString();
                EXPECT_FALSE(text->isCut()) << text->text().toStdString();
                for (int position = 0; position < int(text->text().size()); ++position)
                    ASSERT_LE(text->characterRect(position).bottom(), text->height() + 0.5)
                        << text->text().toStdString() << " loses what follows " << position;
            }
        }
    }
};

TEST_F(ContentViewPendingList, showsALongPathCompletelyBesideOneOfMoreBytes)
{
    const std::string latin = repeated("n", 95) + "/a.MOV";
    const std::string cyrillic = repeated("я", 57) + "/a.MOV";
    ASSERT_LT(latin.size(), cyrillic.size());
    show({latin, cyrillic});
    for (int width = 480; width <= 900; width += 20) {
        resizeToContent(width);
        SCOPED_TRACE(width);
        expectWholeRows();
    }
}

TEST_F(ContentViewPendingList, losesNoLetterOfAnyScriptAtAnyWidth)
{
    show(pathsOfManyScripts());
    for (const int width : {480, 560, 640, 760, 900, 1024, 1148, 1366, 1600}) {
        resizeToContent(width);
        SCOPED_TRACE(width);
        expectWholeRows();
    }
}

TEST_F(ContentViewPendingList, losesNoLetterWithALargeFont)
{
    const FontChange change(designFont(2));
    show(pathsOfManyScripts());
    resizeToContent(760);
    expectWholeRows();
}

} // namespace
} // namespace reelkeep
