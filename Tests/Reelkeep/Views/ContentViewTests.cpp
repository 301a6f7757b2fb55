#include "Fixtures/Desktops.h"
#include "Fixtures/WindowTest.h"

#include <QCoreApplication>
#include <QScrollBar>
#include <QTest>

#include <gtest/gtest.h>

namespace reelkeep {
namespace {

/// Counts the refreshes of the window, which are started by a precise single-shot timer.
class RefreshCounter : public QObject {
public:
    RefreshCounter() { QCoreApplication::instance()->installEventFilter(this); }

    int count = 0;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        const auto* timer = qobject_cast<QTimer*>(watched);
        if (timer && event->type() == QEvent::Timer && timer->isSingleShot() && timer->timerType() == Qt::PreciseTimer)
            ++count;
        return false;
    }
};

class ContentViewTest : public WindowTest {
protected:
    int topOf(const QString& words) const { return text(words).mapTo(content, QPoint()).y(); }
};

TEST_F(ContentViewTest, isCalledReelkeep)
{
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Reelkeep"));
}

TEST_F(ContentViewTest, beginsWithItsNameAndItsPurpose)
{
    const QString name = QStringLiteral("Reelkeep");
    const QString purpose =
        QStringLiteral("Controla que tu material de camara ya este archivado en uno o varios discos "
                       "y copia solo lo que falta al destino principal.");
    EXPECT_EQ(words().mid(0, 2), (QStringList{name, purpose}));
    EXPECT_EQ(text(name).style().size, 28);
    EXPECT_EQ(text(name).style().weight, QFont::Bold);
    EXPECT_EQ(text(purpose).color().level, TextColor::Level::secondary);
}

TEST_F(ContentViewTest, hasItsSixSectionsInOrder)
{
    const QStringList landmarks = {QStringLiteral("Reelkeep"),
                                   QStringLiteral("HD principal"),
                                   QStringLiteral("Paso 1"),
                                   QStringLiteral("Paso 2"),
                                   QStringLiteral("Paso 3"),
                                   QStringLiteral("Analizar primero"),
                                   QStringLiteral("En camara"),
                                   QStringLiteral("Videos pendientes"),
                                   QStringLiteral("La comprobacion es solo de camara hacia los destinos revisados.")};
    for (int index = 1; index < landmarks.size(); ++index)
        EXPECT_GT(topOf(landmarks[index]), topOf(landmarks[index - 1])) << landmarks[index].toStdString();
}

TEST_F(ContentViewTest, showsOnlyItsFixedTextsAtFirst)
{
    EXPECT_EQ(words().join(u'\n'), QStringLiteral(R"(Reelkeep
Controla que tu material de camara ya este archivado en uno o varios discos y copia solo lo que falta al destino principal.
1
Camara
ORIGEN
2
HD principal
COPIA
3
Otros discos
REVISION
Paso 1
Camara o tarjeta
Aqui eliges el material original que quieres comprobar.
Pendiente
Sin seleccionar
Selecciona una carpeta para continuar.
Aun no has elegido esta ubicacion.
Paso 2
Destino de copia
Aqui se guardaran los videos que todavia no esten archivados.
Pendiente
Sin seleccionar
Selecciona una carpeta para continuar.
Aun no has elegido esta ubicacion.
Paso 3
Ubicaciones a revisar
Busca los videos de la camara en uno o varios HDs o carpetas. El HD de copia se incluye tambien en la revision.
Pendiente
0
ubicaciones revisadas
Sin seleccionar
Analizar primero
Comprueba que videos de la camara ya existen antes de copiar nada.
Copiar lo que falta
Elige el HD activo de copia y lanza la transferencia de los videos pendientes.
Sin seleccionar
Selecciona un destino de copia.
0
videos pendientes para copiar
En camara
0
videos detectados
Ya en destinos
0
videos de la camara ya encontrados
Pendientes
0
videos de la camara por copiar
Videos pendientes
Todo lo de la camara ya esta en las ubicaciones revisadas
Los videos extra que ya existan en esos HDs o carpetas no se consideran un problema.
Selecciona la carpeta de la camara, el destino de copia y los HDs o carpetas a revisar.
La comprobacion es solo de camara hacia los destinos revisados.)"));
}

TEST_F(ContentViewTest, keepsChoicesThroughEveryRefresh)
{
    chooseCamera("/card");
    for (int count = 0; count < 20; ++count) {
        session().setPreserveFolderStructure(count % 2 == 0);
        settle();
    }
    EXPECT_EQ(session().sourceFolder(), Location("/card"));
    EXPECT_TRUE(wordsIn(QStringLiteral("Paso 1, Camara o tarjeta")).contains(QStringLiteral("/card")));
}

TEST_F(ContentViewTest, readsTheNewestValuesAndNotThoseOfTheAnnouncement)
{
    int announcements = 0;
    QObject::connect(&session(), &VideoSyncViewModel::objectWillChange, content, [&] {
        ++announcements;
        EXPECT_FALSE(session().copyDestinationFolder().has_value());
    });
    session().setCopyDestinationFolder(Location("/disk"));
    EXPECT_EQ(announcements, 1);
    settle();
    EXPECT_TRUE(wordsIn(QStringLiteral("Paso 2, Destino de copia")).contains(QStringLiteral("/disk")));
}

TEST_F(ContentViewTest, readsItsSessionOnceForSeveralWrites)
{
    settle();
    const RefreshCounter refreshes;
    session().setCopyDestinationFolder(Location("/one"));
    session().setCopyDestinationFolder(Location("/two"));
    session().setPreserveFolderStructure(false);
    EXPECT_EQ(refreshes.count, 0) << "no refresh between the writes";
    settle();
    EXPECT_EQ(refreshes.count, 1);
    EXPECT_TRUE(wordsIn(QStringLiteral("Paso 2, Destino de copia")).contains(QStringLiteral("/two")));
    EXPECT_FALSE(toggle().isChecked());
}

TEST_F(ContentViewTest, readsItsSessionAtMostOncePerFrame)
{
    settle();
    const RefreshCounter refreshes;
    QElapsedTimer passed;
    passed.start();
    ASSERT_TRUE(waitUntil([&] {
        session().setPreserveFolderStructure(false);
        return passed.elapsed() > 320;
    }));
    EXPECT_LE(refreshes.count, int(passed.elapsed() / 16) + 2);
    EXPECT_GE(refreshes.count, 2);
}

TEST_F(ContentViewTest, keepsItsScrollPositionWhenResultsArrive)
{
    fill("/card", "/disk", 30, 3);
    chooseCamera("/card");
    chooseDestination("/disk");
    resize(1148, 700);
    QScrollBar* scrollBar = window->scrollArea()->verticalScrollBar();
    scrollBar->setValue(750);
    button(scanLabel).click();
    ASSERT_TRUE(becomesIdle());
    EXPECT_NE(list(), nullptr);
    EXPECT_EQ(scrollBar->value(), 750);
}

TEST_F(ContentViewTest, showsNamesLiterally)
{
    const std::vector<std::string> names = {"<b>x<br>y.MOV", "%1 %2 %n.MOV", "&amp; &x.MOV", "a\nb\tc.MOV",
                                            "roto\xff.MOV"};
    for (const std::string& name : names)
        files->add("/card/" + name, 1);
    chooseCamera("/card");
    chooseDestination("/disk/<i>%2");
    analyse();
    EXPECT_TRUE(words().contains(QStringLiteral("<i>%2")));
    ASSERT_NE(list(), nullptr);
    ASSERT_EQ(list()->rowCount(), int(names.size()));
    const QStringList rows = shownWords(*list()->viewport());
    QStringList spokenRows;
    for (int row = 0; row < list()->rowCount(); ++row)
        spokenRows.append(list()->description(row).join(QStringLiteral(", ")));
    for (const std::string& name : names) {
        const QString shown = displayText(name);
        EXPECT_GE(rows.count(shown), 2) << "as name and as path: " << shown.toStdString();
        EXPECT_EQ(spokenRows.filter(shown + QStringLiteral(", ")).size(), 1) << shown.toStdString();
    }
}

TEST_F(ContentViewTest, endsInMidScanWithoutWaitingForTheDisk)
{
    fill("/card", "/disk", 3, 1);
    chooseCamera("/card");
    chooseDestination("/disk");
    files->close();
    press(scanLabel);
    ASSERT_TRUE(waitUntil([this] { return files->waitingCount() == 1; }));
    window.reset();
    EXPECT_EQ(files->stoppedCount(), 1);
}

} // namespace
} // namespace reelkeep
