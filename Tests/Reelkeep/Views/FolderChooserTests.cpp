#include "Fixtures/Desktops.h"
#include "Fixtures/EventLoop.h"
#include "Fixtures/TemporaryFolder.h"
#include "Fixtures/Widgets.h"
#include "FolderChooser.h"
#include "UI/Announcer.h"
#include "UI/Appearance.h"
#include "UI/Controls.h"
#include "UI/TextWidget.h"

#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QCompleter>
#include <QDir>
#include <QFileSystemModel>
#include <QHelpEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QScrollBar>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTest>
#include <QToolButton>
#include <QToolTip>
#include <QTreeView>

#include <gtest/gtest.h>

#include <memory>

namespace reelkeep {
namespace {

/// The dialog, opened on the test's folder, and the actions of a user.
class FolderChooserTest : public testing::Test {
protected:
    FolderChooserTest()
    {
        for (const char* name : {"Disco A", "Disco B", "Disco 2\""})
            folder.folder(name);
    }

    void open(bool several = false)
    {
        chooser = std::make_unique<FolderChooser>(nullptr, path(), false, several);
        parts = std::make_unique<FileDialogParts>(*chooser);
        showActive(*chooser);
        ASSERT_TRUE(waitUntil([this] { return rowOf(QStringLiteral("Disco B")).isValid(); }));
        letEventsPass();
    }

    QString path() const { return QString::fromStdString(folder.location().path()); }
    QString inside(const char* name) const { return path() + u'/' + QString::fromUtf8(name); }
    QString field() const { return parts->field->text(); }
    Button& button(const char* name) const { return *shownWidget<Button>(*chooser, QLatin1String(name)); }
    QAbstractItemView& rows() const
    {
        return parts->list->isVisible() ? static_cast<QAbstractItemView&>(*parts->list) : *parts->details;
    }
    QModelIndex rowOf(const QString& name) const
    {
        const QAbstractItemModel& model = *rows().model();
        for (int row = 0; row < model.rowCount(rows().rootIndex()); ++row) {
            const QModelIndex index = model.index(row, 0, rows().rootIndex());
            if (index.data().toString() == name)
                return index;
        }
        return {};
    }
    QModelIndex placeOf(const QString& place) const
    {
        const QAbstractItemModel& places = *parts->sidebar->model();
        for (int row = 0; row < places.rowCount(); ++row) {
            if (places.index(row, 0).data(Qt::UserRole + 1).toUrl().toLocalFile() == place)
                return places.index(row, 0);
        }
        return {};
    }
    QStringList words() const { return shownWords(*chooser); }

    void click(const char* name, Qt::KeyboardModifiers modifiers = {})
    {
        const QModelIndex index = rowOf(QString::fromUtf8(name));
        ASSERT_TRUE(index.isValid()) << name;
        QTest::mouseClick(rows().viewport(), Qt::LeftButton, modifiers, rows().visualRect(index).center());
    }
    void type(const QString& text)
    {
        parts->field->setFocus();
        parts->field->selectAll();
        QTest::keyClicks(parts->field, text);
    }
    void press(const char* name) { QTest::mouseClick(&button(name), Qt::LeftButton); }
    bool isAccepted() const { return chooser->result() == QDialog::Accepted; }
    /// Moves the focus to the rows first, since a field with the focus has a different edge.
    void expectVisibleFieldEdge()
    {
        rows().setFocus();
        const QImage image = picture(*chooser);
        const QPoint top = parts->field->mapTo(chooser.get(), QPoint(parts->field->width() / 2, 0));
        const QColor ground = image.pixelColor(top - QPoint(0, 2));
        EXPECT_EQ(ground, QApplication::palette().color(QPalette::Window));
        EXPECT_GE(Appearance::contrast(image.pixelColor(top), ground), 1.7);
    }

    TemporaryFolder folder;
    std::unique_ptr<FolderChooser> chooser;
    std::unique_ptr<FileDialogParts> parts;
};

TEST_F(FolderChooserTest, showsNoControlThatDoesNothing)
{
    open();
    EXPECT_FALSE(parts->fileTypeLabel->isVisible());
    EXPECT_FALSE(parts->fileType->isVisible());
    EXPECT_FALSE(parts->newFolder->isVisible());
    EXPECT_FALSE(parts->renameEntry->isVisible());
    EXPECT_FALSE(parts->deleteEntry->isVisible());
}

TEST_F(FolderChooserTest, speaksSpanishWithoutAccents)
{
    open();
    QStringList names;
    for (QToolButton* control : {parts->back, parts->forward, parts->up, parts->listMode, parts->detailMode}) {
        names.append(spokenName(*control));
        EXPECT_EQ(control->toolTip(), spokenName(*control));
    }
    EXPECT_EQ(names,
              (QStringList{QStringLiteral("Atras"), QStringLiteral("Adelante"), QStringLiteral("Carpeta superior"),
                           QStringLiteral("Lista"), QStringLiteral("Detalles")}));
    EXPECT_EQ(spokenName(*parts->sidebar), QStringLiteral("Lugares"));
    EXPECT_EQ(spokenName(*parts->field), QStringLiteral("Carpeta:"));
    EXPECT_EQ(spokenName(rows()), QStringLiteral("Carpetas"));
}

TEST_F(FolderChooserTest, showsPlacesByNameWithDifferentSymbols)
{
    QDir devices(QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) + QStringLiteral("/gvfs"));
    const QString camera = devices.filePath(QStringLiteral("mtp:host=SONY_ILCE-7M4"));
    const QString share = devices.filePath(QStringLiteral("smb-share:server=nas,share=Video"));
    for (const QString& device : {camera, share})
        ASSERT_TRUE(QDir().mkpath(device));
    open();
    const std::vector<std::pair<QString, QString>> places{{QDir::homePath(), QStringLiteral("Carpeta personal")},
                                                          {QStringLiteral("/"), QStringLiteral("Equipo")},
                                                          {camera, QStringLiteral("SONY ILCE-7M4")},
                                                          {share, QStringLiteral("Video")}};
    std::vector<QImage> symbols;
    for (const auto& [place, label] : places) {
        EXPECT_EQ(placeOf(place).data().toString(), label);
        const auto icon = placeOf(place).data(Qt::DecorationRole).value<QIcon>();
        EXPECT_EQ(icon.actualSize(parts->sidebar->iconSize()), parts->sidebar->iconSize());
        symbols.push_back(icon.pixmap(QSize(18, 18), 1.0).toImage());
        EXPECT_EQ(std::count(symbols.begin(), symbols.end(), symbols.back()), 1) << label.toStdString();
    }
    // The file system model may report a change of a folder at any time.
    const QModelIndex changed = parts->model->index(camera);
    emit parts->model->dataChanged(changed, changed);
    emit parts->model->layoutChanged();
    EXPECT_EQ(placeOf(camera).data().toString(), QStringLiteral("SONY ILCE-7M4"));
    EXPECT_EQ(placeOf(camera).data(Qt::DecorationRole).value<QIcon>().pixmap(QSize(18, 18), 1.0).toImage(), symbols[2]);
    devices.removeRecursively();
}

TEST_F(FolderChooserTest, drawsAllSymbolsAtOneSize)
{
    open();
    EXPECT_EQ(parts->list->iconSize(), parts->sidebar->iconSize());
    EXPECT_EQ(parts->details->iconSize(), parts->sidebar->iconSize());
    EXPECT_EQ(parts->path->iconSize(), parts->sidebar->iconSize());
    EXPECT_EQ(parts->sidebar->iconSize(), QSize(18, 18));
    const FontChange change(designFont(2));
    open();
    EXPECT_EQ(parts->sidebar->iconSize(), QSize(36, 36));
}

TEST_F(FolderChooserTest, hasNoMenuThatRemovesPlaces)
{
    open();
    EXPECT_EQ(parts->sidebar->contextMenuPolicy(), Qt::NoContextMenu);
}

TEST_F(FolderChooserTest, showsInItsFieldWhatWillBeChosen)
{
    open(true);
    EXPECT_EQ(field(), path());
    EXPECT_EQ(parts->field->selectedText(), path()) << "typing replaces it";
    click("Disco A");
    EXPECT_EQ(field(), inside("Disco A"));
    click("Disco B", Qt::ControlModifier);
    EXPECT_EQ(field(), QStringLiteral("\"Disco A\" \"Disco B\""));
    click("Disco A", Qt::ControlModifier);
    click("Disco B", Qt::ControlModifier);
    EXPECT_EQ(field(), path());
}

TEST_F(FolderChooserTest, showsThePathOfAFolderThatIsEntered)
{
    open();
    const QModelIndex row = rowOf(QStringLiteral("Disco B"));
    const QPoint place = rows().visualRect(row).center();
    QTest::mouseClick(rows().viewport(), Qt::LeftButton, {}, place);
    QTest::mouseDClick(rows().viewport(), Qt::LeftButton, {}, place);
    EXPECT_TRUE(waitUntil([this] { return field() == inside("Disco B"); })) << field().toStdString();
    QTest::mouseClick(parts->up, Qt::LeftButton);
    EXPECT_TRUE(waitUntil([this] { return field() == path(); })) << field().toStdString();
    QTest::mouseClick(parts->back, Qt::LeftButton);
    EXPECT_TRUE(waitUntil([this] { return field() == inside("Disco B"); })) << field().toStdString();
    press("Seleccionar");
    EXPECT_EQ(chooser->chosenFolders(), QStringList{inside("Disco B")});
}

TEST_F(FolderChooserTest, choosesNothingWhileItsFieldIsEmpty)
{
    open();
    EXPECT_TRUE(button("Seleccionar").isEnabled());
    type(QStringLiteral("x"));
    QTest::keyClick(parts->field, Qt::Key_Backspace);
    EXPECT_FALSE(button("Seleccionar").isEnabled());
    QTest::keyClick(parts->field, Qt::Key_Return);
    EXPECT_FALSE(isAccepted());
    type(path());
    EXPECT_TRUE(button("Seleccionar").isEnabled());
}

TEST_F(FolderChooserTest, choosesNothingWhileTheWholeComputerIsShown)
{
    open();
    chooser->setDirectory(QStringLiteral("/"));
    ASSERT_TRUE(waitUntil([this] { return field() == QStringLiteral("/"); }));
    QTest::mouseClick(parts->up, Qt::LeftButton);
    EXPECT_TRUE(waitUntil([this] { return field().isEmpty(); }));
    EXPECT_FALSE(button("Seleccionar").isEnabled());
}

TEST_F(FolderChooserTest, reportsThatATypedFolderWasNotFound)
{
    open();
    const QString wrong = inside("<b>no existe</b>");
    const QString sentence = QStringLiteral("No he encontrado la carpeta ") + wrong;
    const QSignalSpy announcements(chooser->findChild<Announcer*>(), &Announcer::announced);
    type(wrong);
    press("Seleccionar");
    EXPECT_FALSE(isAccepted());
    ASSERT_EQ(announcements.count(), 1);
    EXPECT_EQ(announcements.front().front().toString(), sentence);
    EXPECT_TRUE(words().contains(sentence)) << words().join(u'|').toStdString();
    EXPECT_EQ(spoken(*shownWidget<TextWidget>(*chooser, sentence)).role(), QAccessible::StatusBar);
    QTest::keyClick(parts->field, Qt::Key_Backspace);
    EXPECT_FALSE(words().contains(sentence));
}

TEST_F(FolderChooserTest, takesAQuoteWithoutItsCounterpartForALetter)
{
    open();
    type(QStringLiteral("\"Disco A"));
    press("Seleccionar");
    EXPECT_FALSE(isAccepted());
    EXPECT_TRUE(words().contains(QStringLiteral("No he encontrado la carpeta ") + inside("\"Disco A")));
}

TEST_F(FolderChooserTest, showsAllOfALongSentenceInAToolTip)
{
    open();
    const QString wrong = inside("x").repeated(20);
    type(wrong);
    press("Seleccionar");
    auto* complaint = shownWidget<TextWidget>(*chooser, QStringLiteral("No he encontrado la carpeta ") + wrong);
    ASSERT_NE(complaint, nullptr);
    QHelpEvent event(QEvent::ToolTip, QPoint(5, 5), complaint->mapToGlobal(QPoint(5, 5)));
    QApplication::sendEvent(complaint, &event);
    EXPECT_TRUE(QToolTip::isVisible());
    QToolTip::hideText();
}

TEST_F(FolderChooserTest, doesNotAcceptAFile)
{
    folder.file("un video.MOV");
    open();
    type(inside("un video.MOV"));
    press("Seleccionar");
    EXPECT_FALSE(isAccepted());
}

TEST_F(FolderChooserTest, acceptsATypedQuoteAsPartOfAName)
{
    for (const QString& typed : {inside("Disco 2\""), QStringLiteral("Disco 2\"")}) {
        open();
        type(typed);
        press("Seleccionar");
        EXPECT_TRUE(isAccepted());
        EXPECT_EQ(chooser->chosenFolders(), QStringList{inside("Disco 2\"")});
    }
}

TEST_F(FolderChooserTest, acceptsSeveralClickedFoldersWithQuotesInTheirNames)
{
    open(true);
    click("Disco 2\"");
    click("Disco B", Qt::ControlModifier);
    press("Seleccionar");
    EXPECT_EQ(chooser->chosenFolders(), (QStringList{inside("Disco 2\""), inside("Disco B")}));
}

TEST_F(FolderChooserTest, acceptsSeveralTypedNamesInQuotes)
{
    open(true);
    type(QStringLiteral("\"Disco B\" \"%1\"").arg(inside("Disco A")));
    press("Seleccionar");
    EXPECT_EQ(chooser->chosenFolders(), (QStringList{inside("Disco B"), inside("Disco A")}));
}

TEST_F(FolderChooserTest, acceptsOnlyTheFirstOfSeveralTypedNamesIfOneIsAllowed)
{
    open();
    type(QStringLiteral("\"Disco B\" \"Disco A\""));
    press("Seleccionar");
    EXPECT_EQ(chooser->chosenFolders(), QStringList{inside("Disco B")});
}

TEST_F(FolderChooserTest, acceptsAPathThatAssistiveTechnologyEntersWithoutFocus)
{
    const QString deep = QString::fromStdString(folder.folder("Disco A/DCIM").path());
    open();
    parts->sidebar->setFocus();
    spoken(*parts->field).editableTextInterface()->replaceText(0, int(field().size()), deep);
    EXPECT_EQ(field(), deep);
    press("Seleccionar");
    EXPECT_EQ(chooser->chosenFolders(), QStringList{deep});
}

TEST_F(FolderChooserTest, expandsTheTilde)
{
    open();
    type(QStringLiteral("~"));
    press("Seleccionar");
    EXPECT_EQ(chooser->chosenFolders(), QStringList{QDir::homePath()});
}

TEST_F(FolderChooserTest, closesItsCompletions)
{
    open();
    QAbstractItemView* completions = parts->field->completer()->popup();
    type(QStringLiteral("Disco"));
    ASSERT_TRUE(waitUntil([&] { return completions->isVisible(); }));
    type(inside("Disco A"));
    completions->show();
    QTest::keyClick(parts->field, Qt::Key_Return);
    EXPECT_TRUE(isAccepted());
    EXPECT_FALSE(completions->isVisible());
}

TEST_F(FolderChooserTest, letsTypingReplaceWhatItsFieldShows)
{
    open();
    parts->field->setFocus();
    chooser->setDirectory(inside("Disco A"));
    EXPECT_TRUE(waitUntil([&] { return field() == inside("Disco A"); }));
    EXPECT_EQ(parts->field->selectedText(), field());
    chooser->setDirectory(path());
    ASSERT_TRUE(waitUntil([&] { return rowOf(QStringLiteral("Disco B")).isValid(); }));
    rows().setFocus();
    click("Disco B");
    EXPECT_EQ(field(), inside("Disco B"));
    EXPECT_EQ(parts->field->selectedText(), QString()) << "the keyboard is elsewhere";
}

TEST_F(FolderChooserTest, showsTheEdgeOfItsFieldInLightAndDark)
{
    for (const QPalette& palette : {lightPalette(), darkPalette()}) {
        const PaletteChange change(palette);
        open();
        expectVisibleFieldEdge();
    }
}

TEST_F(FolderChooserTest, showsTheEdgeOfItsFieldWhenTheThemeChanges)
{
    const PaletteChange restoring(lightPalette());
    open();
    for (const QPalette& palette : {darkPalette(), lightPalette(), darkPalette()}) {
        QApplication::setPalette(palette);
        letEventsPass();
        expectVisibleFieldEdge();
    }
}

TEST_F(FolderChooserTest, keepsNamesReadableAtEverySize)
{
    for (const double scale : {1.0, 1.5}) {
        const FontChange change(designFont(scale));
        open();
        for (const int width : {640, 860, 1148}) {
            chooser->resize(width, 540);
            letEventsPass();
            EXPECT_EQ(chooser->width(), width);
            EXPECT_FALSE(parts->details->horizontalScrollBar()->isVisible()) << width;
            EXPECT_GE(parts->details->columnWidth(0), QFontMetrics(QApplication::font()).averageCharWidth() * 20)
                << width;
            for (const char* name : {"Seleccionar", "Cancelar"})
                EXPECT_GE(button(name).width(), button(name).sizeHint().width()) << name << " at " << width;
        }
    }
}

} // namespace
} // namespace reelkeep
