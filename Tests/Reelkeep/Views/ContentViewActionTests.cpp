#include "Fixtures/WindowTest.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QClipboard>
#include <QTest>
#include <QTextDocumentFragment>

#include <gtest/gtest.h>

namespace reelkeep {
namespace {

const QString nothingPending = QStringLiteral("No hay nada pendiente");

class ContentViewAction : public WindowTest {
protected:
    QStringList copyWords() const { return wordsIn(QStringLiteral("Copiar lo que falta")); }
    QStringList destinationBox() const
    {
        const QStringList all = copyWords();
        return all.mid(all.size() - 4, 2);
    }
    QStringList countRow() const
    {
        const QStringList all = copyWords();
        return all.mid(all.size() - 2);
    }
    QString pendingCount() const { return countRow().front(); }
    QStringList entries() const
    {
        QStringList texts;
        for (int index = 0; chooser() && index < chooser()->count(); ++index)
            texts.append(chooser()->itemText(index));
        return texts;
    }
    /// Analyses a card with so many pending videos.
    void analyseWithPending(int pending)
    {
        fill("/card", "/disk", pending, 0);
        chooseCamera("/card");
        chooseDestination("/disk");
        analyse();
    }
};

TEST_F(ContentViewAction, explainsItsTwoSteps)
{
    EXPECT_EQ(wordsIn(QStringLiteral("Analizar primero")),
              (QStringList{QStringLiteral("Analizar primero"),
                           QStringLiteral("Comprueba que videos de la camara ya existen antes de copiar nada.")}));
    EXPECT_EQ(copyWords().mid(0, 2),
              (QStringList{QStringLiteral("Copiar lo que falta"),
                           QStringLiteral("Elige el HD activo de copia y lanza la transferencia de los videos "
                                          "pendientes.")}));
}

TEST_F(ContentViewAction, offersNothingWhileNothingIsChosen)
{
    EXPECT_FALSE(button(scanLabel).isEnabled());
    EXPECT_EQ(chooser(), nullptr);
    EXPECT_EQ(destinationBox(),
              (QStringList{QStringLiteral("Sin seleccionar"), QStringLiteral("Selecciona un destino de copia.")}));
    EXPECT_EQ(countRow(), (QStringList{QStringLiteral("0"), QStringLiteral("videos pendientes para copiar")}));
    EXPECT_FALSE(button(nothingPending).isEnabled());
}

TEST_F(ContentViewAction, offersToAnalyseOnceBothFoldersAreChosen)
{
    chooseCamera("/card");
    EXPECT_FALSE(button(scanLabel).isEnabled());
    chooseDestination("/media/ana/Archivo 2026");
    EXPECT_TRUE(button(scanLabel).isEnabled());
    EXPECT_EQ(destinationBox(),
              (QStringList{QStringLiteral("Archivo 2026"), QStringLiteral("/media/ana/Archivo 2026")}));
    EXPECT_EQ(countRow(), (QStringList{QStringLiteral("0"), QStringLiteral("videos pendientes para copiar")}));
    EXPECT_FALSE(button(nothingPending).isEnabled());
}

TEST_F(ContentViewAction, needsMoreThanReviewLocationsToAnalyse)
{
    chooseCamera("/card");
    addReviewFolders({"/a", "/b"});
    EXPECT_FALSE(button(scanLabel).isEnabled());
}

TEST_F(ContentViewAction, countsOnePendingVideoInTheSingular)
{
    analyseWithPending(1);
    EXPECT_EQ(countRow(), (QStringList{QStringLiteral("1"), QStringLiteral("video pendiente para copiar")}));
    EXPECT_TRUE(button(copyLabel).isEnabled());
}

TEST_F(ContentViewAction, countsTwoPendingVideosInThePlural)
{
    analyseWithPending(2);
    EXPECT_EQ(countRow(), (QStringList{QStringLiteral("2"), QStringLiteral("videos pendientes para copiar")}));
    EXPECT_TRUE(button(copyLabel).isEnabled());
}

TEST_F(ContentViewAction, countsWithoutGrouping)
{
    analyseWithPending(12345);
    EXPECT_EQ(pendingCount(), QStringLiteral("12345"));
}

TEST_F(ContentViewAction, offersNoCopyIfNothingIsPending)
{
    analyseWithPending(0);
    EXPECT_EQ(countRow(), (QStringList{QStringLiteral("0"), QStringLiteral("videos pendientes para copiar")}));
    EXPECT_FALSE(button(nothingPending).isEnabled());
    EXPECT_FALSE(hasButton(copyLabel));
}

TEST_F(ContentViewAction, offersNothingWhileItAnalyses)
{
    analyseWithPending(2);
    files->close();
    press(scanLabel);
    ASSERT_TRUE(session().isScanning());
    EXPECT_FALSE(button(scanLabel).isEnabled());
    EXPECT_FALSE(button(copyLabel).isEnabled());
    EXPECT_EQ(pendingCount(), QStringLiteral("2"));
    EXPECT_EQ(destinationBox(), (QStringList{QStringLiteral("disk"), QStringLiteral("/disk")}));
    files->open();
    ASSERT_TRUE(becomesIdle());
    EXPECT_TRUE(button(scanLabel).isEnabled());
}

TEST_F(ContentViewAction, offersNothingWhileItCopies)
{
    analyseWithPending(2);
    files->holdCopy(1);
    press(copyLabel);
    ASSERT_TRUE(session().isCopying());
    EXPECT_FALSE(button(scanLabel).isEnabled());
    EXPECT_FALSE(button(copyLabel).isEnabled());
    EXPECT_EQ(pendingCount(), QStringLiteral("2"));
    files->releaseCopy();
    ASSERT_TRUE(becomesIdle());
    EXPECT_EQ(pendingCount(), QStringLiteral("0"));
    EXPECT_TRUE(hasButton(nothingPending));
    EXPECT_TRUE(files->has("/disk/DCIM/100CANON/MVI_1001.MOV"));
}

TEST_F(ContentViewAction, returnsAtOnceFromAPress)
{
    analyseWithPending(1);
    files->close();
    button(scanLabel).click();
    EXPECT_TRUE(session().isScanning());
    files->open();
    ASSERT_TRUE(becomesIdle());
}

TEST_F(ContentViewAction, copiesFlatWhenTheSwitchIsOff)
{
    analyseWithPending(1);
    QTest::mouseClick(&toggle(), Qt::LeftButton);
    EXPECT_FALSE(session().preserveFolderStructure());
    EXPECT_FALSE(session().isScanning() || session().isCopying()) << "it starts nothing";
    press(copyLabel);
    ASSERT_TRUE(becomesIdle());
    EXPECT_TRUE(files->has("/disk/MVI_1000.MOV"));
}

TEST_F(ContentViewAction, beginsWithTheFolderStructureKept)
{
    EXPECT_TRUE(toggle().isChecked());
    EXPECT_TRUE(session().preserveFolderStructure());
}

TEST_F(ContentViewAction, showsASwitchThatTheSessionTurned)
{
    session().setPreserveFolderStructure(false);
    settle();
    EXPECT_FALSE(toggle().isChecked());
}

TEST_F(ContentViewAction, refreshesWithoutWriting)
{
    chooseDestination("/a");
    addReviewFolders({"/b"});
    settle();
    int writes = 0;
    QObject::connect(&session(), &VideoSyncViewModel::objectWillChange, content, [&] { ++writes; });
    session().setPreserveFolderStructure(false);
    settle();
    session().setCopyDestinationFolder(Location("/b"));
    settle();
    session().setCopyDestinationFolder(std::nullopt);
    settle();
    EXPECT_EQ(writes, 3);
    EXPECT_FALSE(session().copyDestinationFolder().has_value());
}

TEST_F(ContentViewAction, keepsTheSwitchUsableWhileBusy)
{
    analyseWithPending(2);
    files->holdCopy(1);
    press(copyLabel);
    EXPECT_TRUE(toggle().isEnabled());
    QTest::mouseClick(&toggle(), Qt::LeftButton);
    EXPECT_FALSE(session().preserveFolderStructure());
    files->releaseCopy();
    ASSERT_TRUE(becomesIdle());
    EXPECT_TRUE(files->has("/disk/DCIM/100CANON/MVI_1001.MOV")) << "the running copy goes on as it began";
}

TEST_F(ContentViewAction, hasNoChooserForOneDisk)
{
    chooseDestination("/a");
    EXPECT_EQ(chooser(), nullptr);
    EXPECT_FALSE(words().contains(QStringLiteral("HD de copia activo")));
}

TEST_F(ContentViewAction, hasAChooserForTwoDisks)
{
    chooseDestination("/media/a");
    addReviewFolders({"/media/b"});
    ASSERT_NE(chooser(), nullptr);
    EXPECT_TRUE(chooser()->isEnabled());
    EXPECT_EQ(entries(), (QStringList{QStringLiteral("a"), QStringLiteral("b")}));
    EXPECT_EQ(chooser()->currentText(), QStringLiteral("a"));
    EXPECT_EQ(copyWords().count(QStringLiteral("HD de copia activo")), 2) << "as the heading and beside the pop-up";
}

TEST_F(ContentViewAction, losesTheChooserWithTheSecondDisk)
{
    chooseDestination("/media/a");
    addReviewFolders({"/media/b"});
    ASSERT_NE(chooser(), nullptr);
    press(QStringLiteral("Usar solo HD de copia"));
    EXPECT_EQ(chooser(), nullptr);
}

TEST_F(ContentViewAction, copiesToTheDiskThatIsPicked)
{
    chooseDestination("/media/a");
    addReviewFolders({"/media/b"});
    pick(QStringLiteral("b"));
    EXPECT_EQ(session().copyDestinationFolder(), Location("/media/b"));
    EXPECT_EQ(destinationBox(), (QStringList{QStringLiteral("b"), QStringLiteral("/media/b")}));
    EXPECT_EQ(entries(), (QStringList{QStringLiteral("b"), QStringLiteral("a")})) << "the destination comes first";
    EXPECT_EQ(chooser()->currentText(), QStringLiteral("b"));
    EXPECT_TRUE(wordsIn(QStringLiteral("Paso 2, Destino de copia")).contains(QStringLiteral("/media/b")));
    EXPECT_EQ(session().destinationReviewFolders().size(), 2U) << "a pick changes nothing else";
}

TEST_F(ContentViewAction, choosesNothingByItself)
{
    addReviewFolders({"/media/a", "/media/b"});
    ASSERT_NE(chooser(), nullptr);
    EXPECT_EQ(chooser()->currentIndex(), -1);
    EXPECT_EQ(chooser()->currentText(), QString());
    EXPECT_FALSE(session().copyDestinationFolder().has_value());
    EXPECT_EQ(destinationBox(),
              (QStringList{QStringLiteral("Sin seleccionar"), QStringLiteral("Selecciona un destino de copia.")}));
}

TEST_F(ContentViewAction, listsTheRootByItsWholePath)
{
    chooseDestination("/");
    addReviewFolders({"/media/b"});
    EXPECT_EQ(entries(), (QStringList{QStringLiteral("/"), QStringLiteral("b")}));
    EXPECT_EQ(destinationBox(), (QStringList{QStringLiteral("/"), QStringLiteral("/")}));
}

TEST_F(ContentViewAction, distinguishesDisksOfTheSameNameByTheirPath)
{
    chooseDestination("/media/ana/Disco");
    addReviewFolders({"/media/eva/Disco"});
    EXPECT_EQ(entries(), (QStringList{QStringLiteral("Disco"), QStringLiteral("Disco")}));
    chooser()->setFocus();
    QTest::keyClick(chooser(), Qt::Key_Down);
    QTest::keyClick(chooser()->view(), Qt::Key_Down);
    QTest::keyClick(chooser()->view(), Qt::Key_Return);
    settle();
    EXPECT_EQ(session().copyDestinationFolder(), Location("/media/eva/Disco"));
}

TEST_F(ContentViewAction, showsThePathOfEachEntryInTheOpenList)
{
    chooseDestination("/media/ana/Disco");
    addReviewFolders({"/media/eva/<b>Disco</b>"});
    QAbstractItemView& menu = *chooser()->view();
    EXPECT_EQ(spokenName(menu), QStringLiteral("HD de copia activo"));
    QStringList toolTips;
    for (int row = 0; row < 2; ++row) {
        const QModelIndex index = menu.model()->index(row, 0);
        toolTips.append(QTextDocumentFragment::fromHtml(index.data(Qt::ToolTipRole).toString()).toPlainText());
        EXPECT_EQ(index.data(Qt::AccessibleDescriptionRole).toString(), toolTips.last());
    }
    EXPECT_EQ(toolTips, (QStringList{QStringLiteral("/media/ana/Disco"), QStringLiteral("/media/eva/<b>Disco</b>")}));
}

TEST_F(ContentViewAction, picksWithTheMouseToo)
{
    chooseDestination("/media/a");
    addReviewFolders({"/media/b"});
    chooser()->showPopup();
    QAbstractItemView* menu = chooser()->view();
    ASSERT_TRUE(waitUntil([&] { return menu->isVisible(); }));
    const QRect second = menu->visualRect(menu->model()->index(1, 0));
    QTest::mouseMove(menu->viewport(), second.center());
    // The toolkit mistakes an early click for the one that opened the menu.
    QElapsedTimer open;
    open.start();
    ASSERT_TRUE(waitUntil([&] { return open.elapsed() > QApplication::doubleClickInterval(); }));
    QTest::mouseClick(menu->viewport(), Qt::LeftButton, {}, second.center());
    settle();
    EXPECT_EQ(session().copyDestinationFolder(), Location("/media/b"));
}

TEST_F(ContentViewAction, keepsTheChooserUsableWhileBusy)
{
    analyseWithPending(2);
    addReviewFolders({"/b"});
    files->holdCopy(1);
    press(copyLabel);
    ASSERT_NE(chooser(), nullptr);
    EXPECT_TRUE(chooser()->isEnabled());
}

TEST_F(ContentViewAction, cutsAPathOfMoreThanThreeLinesAndCopiesItWhole)
{
    const std::string longPath = "/media/" + std::string(1500, 'x') + "/ultima";
    chooseDestination(longPath);
    TextWidget& path = textIn(QStringLiteral("Copiar lo que falta"), QString::fromStdString(longPath));
    EXPECT_EQ(path.height(), 3 * 13) << "three lines";
    path.setFocus();
    QTest::keySequence(&path, QKeySequence::SelectAll);
    QTest::keySequence(&path, QKeySequence::Copy);
    EXPECT_EQ(QApplication::clipboard()->text().toStdString(), longPath);
}

TEST_F(ContentViewAction, keepsItsResultsWhenAnotherCameraIsChosen)
{
    analyseWithPending(2);
    chooseCamera("/other card");
    EXPECT_EQ(pendingCount(), QStringLiteral("2"));
    EXPECT_TRUE(button(copyLabel).isEnabled());
}

} // namespace
} // namespace reelkeep
