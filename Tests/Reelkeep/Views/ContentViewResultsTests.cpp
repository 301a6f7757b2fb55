#include "Fixtures/Desktops.h"
#include "Fixtures/WindowTest.h"

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QDateTime>
#include <QLocale>
#include <QScrollBar>
#include <QTest>

#include <gtest/gtest.h>

namespace reelkeep {
namespace {

const QString emptyTitle = QStringLiteral("Todo lo de la camara ya esta en las ubicaciones revisadas");
const QString emptyNote =
    QStringLiteral("Los videos extra que ya existan en esos HDs o carpetas no se consideran un problema.");
const QString closingNote = QStringLiteral("La comprobacion es solo de camara hacia los destinos revisados.");

class ContentViewResults : public WindowTest {
protected:
    void prepare(int onCard, int onDisk)
    {
        fill("/card", "/disk", onCard, onDisk);
        chooseCamera("/card");
        chooseDestination("/disk");
    }
    void prepareAndAnalyse(int onCard, int onDisk)
    {
        prepare(onCard, onDisk);
        analyse();
    }
    /// The three counters as a screen reader reads them.
    QStringList cards() const
    {
        QStringList spokenCards;
        for (Box* box : content->findChildren<Box*>()) {
            const QString name = spokenName(*box);
            if (box->isVisible() && name.contains(QStringLiteral(": ")) && name.contains(QStringLiteral("videos ")))
                spokenCards.append(name);
        }
        return spokenCards;
    }
    /// The date beside the heading, or an empty text.
    QString headingDate() const
    {
        const QStringList all = words();
        const QString next = all.at(all.indexOf(QStringLiteral("Videos pendientes")) + 1);
        return next.contains(u':') && next.contains(u'/') && list() ? next
               : next.contains(QStringLiteral(", "))                ? next
                                                                    : QString();
    }
    bool showsEmptyState() const { return words().contains(emptyTitle) && words().contains(emptyNote); }
    QStringList rowWords(int row) const
    {
        QStringList found;
        for (const TextWidget* text : shownTexts(*list()->viewport())) {
            const QPoint middle = text->mapTo(list()->viewport(), text->rect().center());
            if (list()->rowRect(row).contains(middle))
                found.append(text->text());
        }
        return found;
    }
};

TEST_F(ContentViewResults, areEmptyInAFreshWindow)
{
    EXPECT_EQ(cards(), (QStringList{QStringLiteral("En camara: 0, videos detectados"),
                                    QStringLiteral("Ya en destinos: 0, videos de la camara ya encontrados"),
                                    QStringLiteral("Pendientes: 0, videos de la camara por copiar")}));
    EXPECT_EQ(headingDate(), QString());
    EXPECT_TRUE(showsEmptyState());
    EXPECT_EQ(list(), nullptr);
    EXPECT_EQ(bar(), nullptr);
    EXPECT_EQ(status(), QStringLiteral(
                            "Selecciona la carpeta de la camara, el destino de copia y los HDs o carpetas a revisar."));
    EXPECT_TRUE(words().contains(closingNote));
}

TEST_F(ContentViewResults, showABarWhileAnalysing)
{
    prepareAndAnalyse(5, 3);
    const QStringList before = cards();
    const QString date = headingDate();
    files->close();
    press(scanLabel);
    ASSERT_NE(bar(), nullptr);
    EXPECT_EQ(bar()->value(), 0) << "an analysis does not move the bar";
    EXPECT_LT(bar()->minimum(), bar()->maximum());
    EXPECT_EQ(status(), QStringLiteral("Escaneando videos..."));
    EXPECT_EQ(cards(), before);
    EXPECT_EQ(headingDate(), date);
    EXPECT_NE(list(), nullptr);
    EXPECT_TRUE(words().contains(closingNote));
    files->open();
    ASSERT_TRUE(becomesIdle());
    EXPECT_EQ(bar(), nullptr);
}

TEST_F(ContentViewResults, keepTheEmptyStateDuringTheFirstAnalysis)
{
    prepare(5, 3);
    files->close();
    press(scanLabel);
    EXPECT_NE(bar(), nullptr);
    EXPECT_TRUE(showsEmptyState());
    EXPECT_EQ(headingDate(), QString());
}

TEST_F(ContentViewResults, countWhatAnAnalysisFound)
{
    const QDateTime before = QDateTime::currentDateTime();
    prepareAndAnalyse(27, 23);
    EXPECT_EQ(cards(), (QStringList{QStringLiteral("En camara: 27, videos detectados"),
                                    QStringLiteral("Ya en destinos: 23, videos de la camara ya encontrados"),
                                    QStringLiteral("Pendientes: 4, videos de la camara por copiar")}));
    ASSERT_NE(list(), nullptr);
    EXPECT_EQ(list()->rowCount(), 4);
    EXPECT_FALSE(showsEmptyState());
    EXPECT_EQ(bar(), nullptr);
    EXPECT_EQ(status(), QStringLiteral("He encontrado 4 videos de la camara que aun no estan en ninguna de las "
                                       "ubicaciones revisadas."));
    const QString format = QStringLiteral("d/M/yyyy, H:mm");
    const QString shown = headingDate();
    EXPECT_TRUE(shown == before.toString(format) || shown == QDateTime::currentDateTime().toString(format))
        << shown.toStdString();
}

TEST_F(ContentViewResults, showTheEmptyStateWhenNothingIsPending)
{
    prepareAndAnalyse(3, 3);
    EXPECT_TRUE(showsEmptyState());
    EXPECT_EQ(list(), nullptr);
    EXPECT_NE(headingDate(), QString());
    EXPECT_EQ(status(), QStringLiteral("Todo lo de la camara ya esta guardado en las ubicaciones revisadas. Los videos "
                                       "extra se ignoran."));
}

TEST_F(ContentViewResults, listOnePendingVideo)
{
    prepareAndAnalyse(1, 0);
    ASSERT_NE(list(), nullptr);
    EXPECT_EQ(list()->rowCount(), 1);
    EXPECT_EQ(rowWords(0), (QStringList{QStringLiteral("MVI_1000.MOV"), QStringLiteral("DCIM/100CANON/MVI_1000.MOV"),
                                        QStringLiteral("1 kB")}));
}

TEST_F(ContentViewResults, followACopyToItsEnd)
{
    prepareAndAnalyse(4, 0);
    const QStringList before = cards();
    files->holdCopy(2);
    press(copyLabel);
    ASSERT_TRUE(waitUntil([this] { return status() == QStringLiteral("Copiando 2/4: MVI_1002.MOV"); }));
    ASSERT_NE(bar(), nullptr);
    EXPECT_EQ(2 * bar()->value(), bar()->maximum());
    EXPECT_EQ(cards(), before);
    EXPECT_EQ(list()->rowCount(), 4);
    files->releaseCopy();
    ASSERT_TRUE(becomesIdle());
    EXPECT_EQ(cards(), (QStringList{QStringLiteral("En camara: 4, videos detectados"),
                                    QStringLiteral("Ya en destinos: 4, videos de la camara ya encontrados"),
                                    QStringLiteral("Pendientes: 0, videos de la camara por copiar")}));
    EXPECT_TRUE(showsEmptyState());
    EXPECT_EQ(bar(), nullptr);
}

TEST_F(ContentViewResults, keepTheFullBarDuringTheAnalysisAfterACopy)
{
    prepareAndAnalyse(2, 0);
    files->holdCopy(1);
    press(copyLabel);
    ASSERT_TRUE(waitUntil([this] { return status() == QStringLiteral("Copiando 1/2: MVI_1001.MOV"); }));
    files->holdAnalyses();
    files->releaseCopy();
    ASSERT_TRUE(waitUntil([this] { return session().isScanning(); }));
    settle();
    ASSERT_NE(bar(), nullptr);
    EXPECT_EQ(bar()->value(), bar()->maximum());
    files->releaseAnalyses();
    ASSERT_TRUE(becomesIdle());
}

TEST_F(ContentViewResults, keepTheListWhenACopyFails)
{
    prepareAndAnalyse(4, 0);
    files->failBelow("/disk/DCIM/100CANON/MVI_1002.MOV", "No queda espacio en el disco.");
    press(copyLabel);
    ASSERT_TRUE(becomesIdle());
    EXPECT_TRUE(status().startsWith(QStringLiteral("No he podido copiar los videos: "))) << status().toStdString();
    EXPECT_TRUE(status().contains(QStringLiteral("No queda espacio en el disco."))) << status().toStdString();
    EXPECT_EQ(list()->rowCount(), 4);
    EXPECT_EQ(bar(), nullptr);
}

TEST_F(ContentViewResults, stayUnchangedWhenAnAnalysisFails)
{
    prepareAndAnalyse(4, 1);
    const QStringList before = cards();
    const QString date = headingDate();
    files->failBelow("/disk", "No se puede leer.");
    analyse();
    EXPECT_TRUE(status().startsWith(QStringLiteral("No he podido escanear las carpetas: "))) << status().toStdString();
    EXPECT_EQ(cards(), before);
    EXPECT_EQ(headingDate(), date);
    EXPECT_EQ(list()->rowCount(), 3);
}

TEST_F(ContentViewResults, countWithoutGrouping)
{
    prepareAndAnalyse(23456, 1234);
    EXPECT_EQ(cards(), (QStringList{QStringLiteral("En camara: 23456, videos detectados"),
                                    QStringLiteral("Ya en destinos: 1234, videos de la camara ya encontrados"),
                                    QStringLiteral("Pendientes: 22222, videos de la camara por copiar")}));
}

TEST_F(ContentViewResults, listVideosInTheOrderOfTheSession)
{
    for (const char* name : {"C10.MOV", "C2.MOV", "c1.MOV"})
        files->add(std::string("/card/") + name, 5);
    chooseCamera("/card");
    chooseDestination("/disk");
    analyse();
    EXPECT_EQ(rowWords(0)[0], QStringLiteral("c1.MOV"));
    EXPECT_EQ(rowWords(1)[0], QStringLiteral("C2.MOV"));
    EXPECT_EQ(rowWords(2)[0], QStringLiteral("C10.MOV"));
}

TEST_F(ContentViewResults, letOnlyThePathOfARowBeSelected)
{
    prepareAndAnalyse(3, 0);
    for (const TextWidget* text : shownTexts(*list()->viewport()))
        EXPECT_EQ(text->isSelectable(), text->text().contains(u'/')) << text->text().toStdString();
    TextWidget& path = text(QStringLiteral("DCIM/100CANON/MVI_1001.MOV"));
    QTest::mouseDClick(&path, Qt::LeftButton, {}, QPoint(5, 5));
    EXPECT_EQ(path.selectedText(), path.text());
    QTest::keySequence(&path, QKeySequence::Copy);
    EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("DCIM/100CANON/MVI_1001.MOV"));
}

TEST_F(ContentViewResults, letTheKeyboardCopyThePathOfTheCurrentRow)
{
    prepareAndAnalyse(3, 0);
    list()->setFocus();
    QTest::keyClick(list(), Qt::Key_Down);
    QTest::keySequence(list(), QKeySequence::Copy);
    EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("DCIM/100CANON/MVI_1001.MOV"));
}

TEST_F(ContentViewResults, letOnlyPathsBeSelected)
{
    prepareAndAnalyse(3, 0);
    for (const TextWidget* text : shownTexts(*content)) {
        const bool isPath = text->style().monospaced;
        EXPECT_TRUE(isPath || !text->isSelectable()) << text->text().toStdString();
    }
}

TEST_F(ContentViewResults, keepScrollPositionAndRowThroughProgress)
{
    prepareAndAnalyse(200, 0);
    list()->verticalScrollBar()->setValue(3000);
    list()->setCurrentRow(63);
    const int before = list()->verticalScrollBar()->value();
    files->holdCopy(150);
    press(copyLabel);
    ASSERT_TRUE(waitUntil([this] { return status().startsWith(QStringLiteral("Copiando 150/200: ")); }));
    EXPECT_EQ(list()->verticalScrollBar()->value(), before);
    EXPECT_EQ(list()->currentRow(), 63);
}

TEST_F(ContentViewResults, buildOnlyTheRowsInView)
{
    prepareAndAnalyse(100'000, 0);
    EXPECT_EQ(list()->rowCount(), 100'000);
    EXPECT_LT(list()->builtRowCount(), 20U);
    EXPECT_LT(content->findChildren<QWidget*>().size(), 400);
}

TEST_F(ContentViewResults, giveScreenReadersTheNamePathAndSizeOfARow)
{
    files->add("/card/DCIM/MVI_1.MOV", 1'840'000'000);
    chooseCamera("/card");
    chooseDestination("/disk");
    analyse();
    EXPECT_EQ(spoken(*list()).child(0)->text(QAccessible::Name), QStringLiteral("MVI_1.MOV, DCIM/MVI_1.MOV, 1,84 GB"));
}

struct WrittenSize {
    std::int64_t bytes;
    const char* spanish;
    const char* english;
};
void PrintTo(const WrittenSize& size, std::ostream* stream)
{
    *stream << size.bytes;
}
class ContentViewResultsSize : public ContentViewResults, public testing::WithParamInterface<WrittenSize> {};

TEST_P(ContentViewResultsSize, areFormattedAsInFileBrowsers)
{
    files->add("/card/a.MOV", GetParam().bytes);
    chooseCamera("/card");
    chooseDestination("/disk");
    analyse();
    EXPECT_EQ(rowWords(0).last(), QString::fromUtf8(GetParam().spanish));
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    files->add("/card/b.MOV", GetParam().bytes);
    analyse();
    EXPECT_EQ(rowWords(0).last(), QString::fromUtf8(GetParam().english));
    QLocale::setDefault(QLocale(QLocale::Spanish, QLocale::Spain));
}

INSTANTIATE_TEST_SUITE_P(
    Sizes, ContentViewResultsSize,
    testing::Values(WrittenSize{0, "0 bytes", "0 bytes"}, WrittenSize{1, "1 byte", "1 byte"},
                    WrittenSize{999, "999 bytes", "999 bytes"}, WrittenSize{1000, "1 kB", "1 kB"},
                    WrittenSize{1499, "1 kB", "1 kB"}, WrittenSize{612'400, "612 kB", "612 kB"},
                    WrittenSize{999'499, "999 kB", "999 kB"}, WrittenSize{999'500, "1 MB", "1 MB"},
                    WrittenSize{999'999, "1 MB", "1 MB"}, WrittenSize{999'949'999, "999,9 MB", "999.9 MB"},
                    WrittenSize{999'999'999, "1 GB", "1 GB"}, WrittenSize{999'999'999'999, "1 TB", "1 TB"},
                    WrittenSize{2'500'000, "2,5 MB", "2.5 MB"}, WrittenSize{612'400'000, "612,4 MB", "612.4 MB"},
                    WrittenSize{958'000'000, "958 MB", "958 MB"}, WrittenSize{1'840'000'000, "1,84 GB", "1.84 GB"},
                    WrittenSize{3'000'000'000, "3 GB", "3 GB"}, WrittenSize{3'100'000'000, "3,1 GB", "3.1 GB"},
                    WrittenSize{1'250'000'000'000, "1,25 TB", "1.25 TB"}));

TEST_F(ContentViewResults, formatTheDateByTheLocale)
{
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));
    prepareAndAnalyse(1, 0);
    QLocale::setDefault(QLocale(QLocale::Spanish, QLocale::Spain));
    const QString shown = headingDate();
    EXPECT_TRUE(shown.contains(QDateTime::currentDateTime().toString(QStringLiteral("M/d/yyyy"))))
        << shown.toStdString();
    EXPECT_TRUE(shown.contains(QStringLiteral("AM")) || shown.contains(QStringLiteral("PM"))) << shown.toStdString();
}

TEST_F(ContentViewResults, centreTheTextsOfTheEmptyState)
{
    const TextWidget& title = text(emptyTitle);
    const TextWidget& note = text(emptyNote);
    const auto middle = [this](const TextWidget& widget) {
        return widget.mapTo(content, QPoint(0, 0)).x() + widget.width() / 2.0;
    };
    EXPECT_NEAR(middle(title), 24 + 550, 1);
    EXPECT_NEAR(middle(note), 24 + 550, 1);
    EXPECT_LE(note.width(), 520);
}

TEST_F(ContentViewResults, giveSpareHeightToTheList)
{
    prepareAndAnalyse(100, 0);
    resizeToContent(1148);
    EXPECT_EQ(list()->height(), 220);
    resize(1148, content->heightForWidth(1148) + 300);
    EXPECT_EQ(list()->height(), 520);
}

TEST_F(ContentViewResults, scrollTheWindowOnceTheListIsAtItsEnd)
{
    prepareAndAnalyse(20, 0);
    resize(1148, 700);
    QScrollBar* windowBar = window->scrollArea()->verticalScrollBar();
    windowBar->setValue(1000);
    turnWheel(*list()->viewport(), {200, 100}, -1);
    EXPECT_GT(list()->verticalScrollBar()->value(), 0);
    EXPECT_EQ(windowBar->value(), 1000);
    list()->verticalScrollBar()->setValue(list()->verticalScrollBar()->maximum());
    turnWheel(*list()->viewport(), {200, 100}, -1);
    EXPECT_GT(windowBar->value(), 1000);
}

} // namespace
} // namespace reelkeep
