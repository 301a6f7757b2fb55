#include "Fixtures/WindowTest.h"

#include <QApplication>
#include <QClipboard>
#include <QTest>

#include <gtest/gtest.h>

namespace reelkeep {
namespace {

struct Card {
    const char* part;
    const char* step;
    const char* title;
    const char* subtitle;
    const char* button;
    const char* dialog;
    QColor accent;
};
void PrintTo(const Card& card, std::ostream* stream)
{
    *stream << card.step;
}

class ContentViewSetupCard : public WindowTest, public testing::WithParamInterface<Card> {
protected:
    QString partName() const { return QString::fromLatin1(GetParam().part); }
    QStringList cardWords() const { return wordsIn(partName()); }
    void choose(const std::string& path)
    {
        willChoose({path});
        press(QString::fromLatin1(GetParam().button));
    }
    TextWidget& cardText(const QString& searched) const { return textIn(partName(), searched); }
};

TEST_P(ContentViewSetupCard, showsThatNothingIsChosenYet)
{
    EXPECT_EQ(cardWords(),
              (QStringList{QString::fromLatin1(GetParam().step), QString::fromLatin1(GetParam().title),
                           QString::fromLatin1(GetParam().subtitle), QStringLiteral("Pendiente"),
                           QStringLiteral("Sin seleccionar"), QStringLiteral("Selecciona una carpeta para continuar."),
                           QStringLiteral("Aun no has elegido esta ubicacion.")}));
    EXPECT_EQ(cardText(QStringLiteral("Pendiente")).color().level, TextColor::Level::secondary);
}

TEST_P(ContentViewSetupCard, showsTheChosenFolder)
{
    choose("/media/ana/Julio 2026");
    EXPECT_EQ(cardWords(), (QStringList{QString::fromLatin1(GetParam().step), QString::fromLatin1(GetParam().title),
                                        QString::fromLatin1(GetParam().subtitle), QStringLiteral("Listo"),
                                        QStringLiteral("Julio 2026"), QStringLiteral("/media/ana/Julio 2026"),
                                        QStringLiteral("Ubicacion lista para analizar.")}));
    EXPECT_EQ(cardText(QStringLiteral("Listo")).color().accent, GetParam().accent);
    EXPECT_EQ(cardText(QStringLiteral("Julio 2026")).style().size, 18);
    EXPECT_EQ(cardText(QStringLiteral("Julio 2026")).style().weight, QFont::DemiBold);
    EXPECT_TRUE(cardText(QStringLiteral("/media/ana/Julio 2026")).style().monospaced);
}

TEST_P(ContentViewSetupCard, opensItsDialog)
{
    choose("/media/ana");
    EXPECT_EQ(dialogs.shown, std::vector{ScriptedFolderDialogs::forOneFolder(GetParam().dialog)});
}

TEST_P(ContentViewSetupCard, staysUnchangedWhenItsDialogIsCancelled)
{
    const QStringList fresh = words();
    willCancel();
    press(QString::fromLatin1(GetParam().button));
    EXPECT_EQ(words(), fresh);
    choose("/media/ana");
    const QStringList chosen = words();
    willCancel();
    press(QString::fromLatin1(GetParam().button));
    EXPECT_EQ(words(), chosen);
}

TEST_P(ContentViewSetupCard, showsTheNewestChoice)
{
    choose("/media/ana");
    choose("/media/eva");
    EXPECT_TRUE(cardWords().contains(QStringLiteral("/media/eva")));
    EXPECT_FALSE(cardWords().contains(QStringLiteral("/media/ana")));
}

TEST_P(ContentViewSetupCard, callsTheRootUnselectedAlthoughItIsReady)
{
    choose("/");
    EXPECT_EQ(cardWords().mid(3), (QStringList{QStringLiteral("Listo"), QStringLiteral("Sin seleccionar"),
                                               QStringLiteral("/"), QStringLiteral("Ubicacion lista para analizar.")}));
}

TEST_P(ContentViewSetupCard, letsItsPathBeSelectedAndCopied)
{
    choose("/media/ana/Julio 2026");
    TextWidget& path = cardText(QStringLiteral("/media/ana/Julio 2026"));
    QTest::mouseDClick(&path, Qt::LeftButton, {}, QPoint(5, 5));
    QTest::keySequence(&path, QKeySequence::Copy);
    EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("/media/ana/Julio 2026"));
}

TEST_P(ContentViewSetupCard, copiesTheWholeOfAPathThatIsCut)
{
    const std::string longPath = "/media/carpeta de nombre largo/" + std::string(900, 'x') + "/ultima";
    choose(longPath);
    TextWidget& path = cardText(QString::fromStdString(longPath));
    EXPECT_EQ(path.height(), 3 * 13);
    path.setFocus();
    QTest::keySequence(&path, QKeySequence::SelectAll);
    QTest::keySequence(&path, QKeySequence::Copy);
    EXPECT_EQ(QApplication::clipboard()->text().toStdString(), longPath);
}

TEST_P(ContentViewSetupCard, letsOnlyItsPathBeSelected)
{
    choose("/media/ana/Julio 2026");
    for (const TextWidget* text : shownTexts(part(partName())))
        EXPECT_EQ(text->isSelectable(), text->text().startsWith(u'/')) << text->text().toStdString();
}

TEST_P(ContentViewSetupCard, offersItsDialogDuringAnAnalysis)
{
    fill("/card", "/disk", 3, 1);
    chooseCamera("/card");
    chooseDestination("/disk");
    files->close();
    press(scanLabel);
    EXPECT_TRUE(session().isScanning());
    EXPECT_TRUE(button(QString::fromLatin1(GetParam().button)).isEnabled());
}

TEST_P(ContentViewSetupCard, showsItsStepInItsAccent)
{
    const TextWidget& step = cardText(QString::fromLatin1(GetParam().step));
    EXPECT_EQ(step.color().level, TextColor::Level::accent);
    EXPECT_EQ(step.color().accent, GetParam().accent);
    EXPECT_EQ(step.style().size, 12);
    EXPECT_EQ(step.style().weight, QFont::Bold);
}

INSTANTIATE_TEST_SUITE_P(Setup, ContentViewSetupCard,
                         testing::Values(Card{"Paso 1, Camara o tarjeta", "Paso 1", "Camara o tarjeta",
                                              "Aqui eliges el material original que quieres comprobar.",
                                              "Elegir camara", "Selecciona la carpeta de origen", accent::analysisBlue},
                                         Card{"Paso 2, Destino de copia", "Paso 2", "Destino de copia",
                                              "Aqui se guardaran los videos que todavia no esten archivados.",
                                              "Elegir HD de copia", "Selecciona la carpeta de destino",
                                              accent::copyGreen}));

class ContentViewSetup : public WindowTest {};

TEST_F(ContentViewSetup, showsTheStepsInPills)
{
    EXPECT_EQ(wordsIn(QStringLiteral("1, Camara, origen")),
              (QStringList{QStringLiteral("1"), QStringLiteral("Camara"), QStringLiteral("ORIGEN")}));
    EXPECT_EQ(wordsIn(QStringLiteral("2, HD principal, copia")),
              (QStringList{QStringLiteral("2"), QStringLiteral("HD principal"), QStringLiteral("COPIA")}));
    EXPECT_EQ(wordsIn(QStringLiteral("3, Otros discos, revision")),
              (QStringList{QStringLiteral("3"), QStringLiteral("Otros discos"), QStringLiteral("REVISION")}));
}

TEST_F(ContentViewSetup, showsTheFirstCopyDestinationAsReviewedToo)
{
    chooseDestination("/media/ana/Archivo");
    EXPECT_TRUE(wordsIn(QStringLiteral("Archivo, /media/ana/Archivo, Copia")).contains(QStringLiteral("Copia")));
}

TEST_F(ContentViewSetup, changesOnlyTheCardOfTheChosenFolder)
{
    chooseCamera("/media/ana/EOS");
    EXPECT_TRUE(wordsIn(QStringLiteral("Paso 2, Destino de copia"))
                    .contains(QStringLiteral("Aun no has elegido esta ubicacion.")));
}

} // namespace
} // namespace reelkeep
