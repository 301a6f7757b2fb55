#include "Fixtures/Desktops.h"
#include "Fixtures/WindowTest.h"

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QTest>

#include <gtest/gtest.h>

namespace reelkeep {
namespace {

const QString onlyDestination = QStringLiteral("Usar solo HD de copia");
const QString add = QStringLiteral("Anadir ubicaciones");

class ContentViewReview : public WindowTest {
protected:
    QStringList sectionWords() const { return wordsIn(QStringLiteral("Paso 3, Ubicaciones a revisar")); }
    /// The texts of each row: name, path, and the tag if there is one.
    QList<QStringList> rows() const
    {
        QList<QStringList> found;
        for (const Button* remove : removeButtons())
            found.append(shownWords(rowOf(*remove)));
        return found;
    }
    static const QWidget& rowOf(const Button& remove)
    {
        const QWidget* row = remove.parentWidget();
        while (row->accessibleName().isEmpty())
            row = row->parentWidget();
        return *row;
    }
    std::vector<Button*> removeButtons() const
    {
        std::vector<Button*> found;
        for (Button* candidate : content->findChildren<Button*>()) {
            if (candidate->isVisible() && candidate->text() == QStringLiteral("Quitar"))
                found.push_back(candidate);
        }
        return found;
    }
    void remove(int row)
    {
        QTest::mouseClick(removeButtons().at(std::size_t(row)), Qt::LeftButton);
        settle();
    }
    /// The count, what is counted, and the path or the number of folders.
    QStringList summary() const { return sectionWords().mid(wordsOfHead, 3); }
    QString badge() const { return sectionWords().mid(0, wordsOfHead).back(); }

    static constexpr int wordsOfHead = 4; ///< Step, title, subtitle and badge.
};

TEST_F(ContentViewReview, areNoneAtFirst)
{
    EXPECT_EQ(sectionWords(),
              (QStringList{QStringLiteral("Paso 3"), QStringLiteral("Ubicaciones a revisar"),
                           QStringLiteral("Busca los videos de la camara en uno o varios HDs o carpetas. El HD de "
                                          "copia se incluye tambien en la revision."),
                           QStringLiteral("Pendiente"), QStringLiteral("0"), QStringLiteral("ubicaciones revisadas"),
                           QStringLiteral("Sin seleccionar")}));
    EXPECT_TRUE(removeButtons().empty());
    EXPECT_FALSE(button(onlyDestination).isEnabled());
    EXPECT_TRUE(button(add).isEnabled());
}

TEST_F(ContentViewReview, areOnlyTheCopyDestinationIfNothingElseIsChosen)
{
    chooseDestination("/media/ana/Archivo");
    EXPECT_EQ(rows(), (QList<QStringList>{
                          {QStringLiteral("Archivo"), QStringLiteral("/media/ana/Archivo"), QStringLiteral("Copia")}}));
    EXPECT_FALSE(removeButtons()[0]->isEnabled());
    EXPECT_EQ(badge(), QStringLiteral("Listo"));
    EXPECT_EQ(summary(), (QStringList{QStringLiteral("1"), QStringLiteral("ubicacion revisada"),
                                      QStringLiteral("/media/ana/Archivo")}));
}

TEST_F(ContentViewReview, areAddedInTheOrderOfTheDialog)
{
    addReviewFolders({"/media/ana/B", "/media/ana/A"});
    EXPECT_EQ(rows(), (QList<QStringList>{{QStringLiteral("B"), QStringLiteral("/media/ana/B")},
                                          {QStringLiteral("A"), QStringLiteral("/media/ana/A")}}));
    EXPECT_EQ(summary(), (QStringList{QStringLiteral("2"), QStringLiteral("ubicaciones revisadas"),
                                      QStringLiteral("2 ubicaciones seleccionadas")}));
    EXPECT_EQ(badge(), QStringLiteral("Listo"));
    EXPECT_EQ(dialogs.shown, std::vector{ScriptedFolderDialogs::forSeveralFolders(
                                 "Selecciona uno o varios HDs o carpetas a revisar")});
}

TEST_F(ContentViewReview, includeTheCopyDestinationOnce)
{
    addReviewFolders({"/media/ana/B", "/media/ana/A"});
    chooseDestination("/media/ana/A");
    EXPECT_EQ(rows(),
              (QList<QStringList>{{QStringLiteral("A"), QStringLiteral("/media/ana/A"), QStringLiteral("Copia")},
                                  {QStringLiteral("B"), QStringLiteral("/media/ana/B")}}));
    EXPECT_EQ(summary().front(), QStringLiteral("2"));
}

TEST_F(ContentViewReview, canBeRemovedExceptTheCopyDestination)
{
    chooseDestination("/media/ana/A");
    addReviewFolders({"/media/ana/B", "/media/ana/C"});
    EXPECT_FALSE(removeButtons()[0]->isEnabled());
    EXPECT_TRUE(removeButtons()[1]->isEnabled());
    remove(1);
    EXPECT_EQ(rows(),
              (QList<QStringList>{{QStringLiteral("A"), QStringLiteral("/media/ana/A"), QStringLiteral("Copia")},
                                  {QStringLiteral("C"), QStringLiteral("/media/ana/C")}}));
}

TEST_F(ContentViewReview, areComparedWithTheCopyDestinationByTheirWholePath)
{
    addReviewFolders({"/media/ana/Disco", "/media/luis/Disco"});
    chooseDestination("/media/luis/Disco");
    EXPECT_EQ(rows(), (QList<QStringList>{
                          {QStringLiteral("Disco"), QStringLiteral("/media/luis/Disco"), QStringLiteral("Copia")},
                          {QStringLiteral("Disco"), QStringLiteral("/media/ana/Disco")}}));
    EXPECT_FALSE(removeButtons()[0]->isEnabled());
    EXPECT_TRUE(removeButtons()[1]->isEnabled());
    remove(1);
    EXPECT_EQ(session().destinationReviewFolders(), std::vector<Location>{Location("/media/luis/Disco")});
}

TEST_F(ContentViewReview, areRemovedWithAllEntriesOfTheSamePath)
{
    addReviewFolders({"/media/ana/B", "/media/ana/A", "/media/ana/B"});
    EXPECT_EQ(session().destinationReviewFolders().size(), 3U);
    EXPECT_EQ(rows().size(), 2);
    remove(0);
    EXPECT_EQ(session().destinationReviewFolders(), std::vector<Location>{Location("/media/ana/A")});
    EXPECT_EQ(rows(), (QList<QStringList>{{QStringLiteral("A"), QStringLiteral("/media/ana/A")}}));
}

TEST_F(ContentViewReview, leaveNothingBehindWhenTheLastIsRemoved)
{
    addReviewFolders({"/media/ana/B"});
    remove(0);
    EXPECT_TRUE(rows().isEmpty());
    EXPECT_EQ(badge(), QStringLiteral("Pendiente"));
    EXPECT_EQ(summary(), (QStringList{QStringLiteral("0"), QStringLiteral("ubicaciones revisadas"),
                                      QStringLiteral("Sin seleccionar")}));
}

TEST_F(ContentViewReview, areReducedToTheCopyDestination)
{
    chooseDestination("/media/ana/A");
    addReviewFolders({"/media/ana/B", "/media/ana/C"});
    ASSERT_TRUE(button(onlyDestination).isEnabled());
    press(onlyDestination);
    EXPECT_EQ(rows(),
              (QList<QStringList>{{QStringLiteral("A"), QStringLiteral("/media/ana/A"), QStringLiteral("Copia")}}));
}

TEST_F(ContentViewReview, cannotBeReducedToACopyDestinationThatIsNotChosen)
{
    addReviewFolders({"/media/ana/B"});
    EXPECT_FALSE(button(onlyDestination).isEnabled());
}

TEST_F(ContentViewReview, stayUnchangedWhenTheDialogIsCancelled)
{
    addReviewFolders({"/media/ana/B"});
    const QStringList before = words();
    willCancel();
    press(add);
    EXPECT_EQ(words(), before);
}

TEST_F(ContentViewReview, showTheRootByItsPath)
{
    addReviewFolders({"/"});
    EXPECT_EQ(rows(), (QList<QStringList>{{QStringLiteral("/"), QStringLiteral("/")}}));
    EXPECT_EQ(summary().back(), QStringLiteral("/"));
}

TEST_F(ContentViewReview, moveTheTagWithTheCopyDestination)
{
    chooseDestination("/media/ana/A");
    chooseDestination("/media/ana/B");
    EXPECT_EQ(rows(),
              (QList<QStringList>{{QStringLiteral("B"), QStringLiteral("/media/ana/B"), QStringLiteral("Copia")},
                                  {QStringLiteral("A"), QStringLiteral("/media/ana/A")}}));
    EXPECT_FALSE(removeButtons()[0]->isEnabled());
    EXPECT_TRUE(removeButtons()[1]->isEnabled());
}

TEST_F(ContentViewReview, haveTheirTagAndButtonBelowTheirNameIfTheFontIsLarge)
{
    chooseDestination("/media/ana/Archivo 2026");
    resize(480, 1000);
    const auto standsBelow = [this] {
        const QWidget& row = rowOf(*removeButtons()[0]);
        const TextWidget* path = shownTexts(row)[1];
        return removeButtons()[0]->mapTo(&row, QPoint()).y() >= path->mapTo(&row, path->rect().bottomLeft()).y();
    };
    EXPECT_FALSE(standsBelow());
    const FontChange change(designFont(2));
    settle();
    EXPECT_TRUE(standsBelow());
    EXPECT_EQ(shownTexts(rowOf(*removeButtons()[0]))[0]->height(), 32) << "the name is on one line";
}

TEST_F(ContentViewReview, keepANameWithoutSpacesInsideTheirRow)
{
    const std::string name(200, 'x');
    addReviewFolders({"/media/ana/" + name});
    for (const double scale : {1.0, 2.0}) {
        const FontChange change(designFont(scale));
        for (const int width : {480, 760, 1148}) {
            resize(width, 1000);
            const QWidget& row = rowOf(*removeButtons()[0]);
            EXPECT_LE(row.mapTo(content, row.rect().bottomRight()).x(), width - 24 - 18) << scale;
            for (const TextWidget* text : shownTexts(row)) {
                EXPECT_FALSE(text->isCut()) << width << " at " << scale;
                EXPECT_LE(text->mapTo(&row, text->rect().bottomRight()).x(), row.width() - 12) << width;
            }
        }
    }
}

TEST_F(ContentViewReview, differByLetterCase)
{
    addReviewFolders({"/media/ana/disco", "/media/ana/Disco"});
    EXPECT_EQ(rows().size(), 2);
}

TEST_F(ContentViewReview, letTheirPathsAndTheSummaryBeCopied)
{
    addReviewFolders({"/media/ana/B"});
    int selectable = 0;
    for (TextWidget* text : shownTexts(part(QStringLiteral("Paso 3, Ubicaciones a revisar")))) {
        if (!text->isSelectable())
            continue;
        ++selectable;
        QApplication::clipboard()->clear();
        QTest::mouseDClick(text, Qt::LeftButton, {}, QPoint(5, 5));
        QTest::keySequence(text, QKeySequence::Copy);
        EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("/media/ana/B"));
    }
    EXPECT_EQ(selectable, 2);
}

TEST_F(ContentViewReview, describeToScreenReadersWhatEachButtonRemoves)
{
    addReviewFolders({"/media/ana/B", "/media/ana/C"});
    EXPECT_EQ(spoken(*removeButtons()[1]).text(QAccessible::Description), QStringLiteral("/media/ana/C"));
}

TEST_F(ContentViewReview, countWithoutGrouping)
{
    std::vector<std::string> many;
    for (int number = 0; number < 1000; ++number)
        many.push_back("/media/disco " + std::to_string(number));
    addReviewFolders(many);
    EXPECT_EQ(summary(), (QStringList{QStringLiteral("1000"), QStringLiteral("ubicaciones revisadas"),
                                      QStringLiteral("1000 ubicaciones seleccionadas")}));
}

} // namespace
} // namespace reelkeep
