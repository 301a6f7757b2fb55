#include "Fixtures/Desktops.h"
#include "Fixtures/EventLoop.h"
#include "Fixtures/QtFolderDialogTest.h"
#include "Fixtures/Widgets.h"
#include "QtFolderDialog.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QContextMenuEvent>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QScreen>
#include <QSettings>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <cstdlib>
#include <vector>

namespace reelkeep {
namespace {

TEST_F(QtFolderDialogTest, haveTheirTitle)
{
    QString title;
    run([&](QFileDialog& shown) {
        title = shown.windowTitle();
        cancel(shown);
    });
    EXPECT_EQ(title, QStringLiteral("Selecciona la carpeta de origen"));
}

TEST_F(QtFolderDialogTest, fitASmallScreen)
{
    const QScreen* small = screenNamed("small");
    QWidget window;
    window.setGeometry(small->availableGeometry());
    showActive(window);
    QSize size;
    run([&](QFileDialog& shown) {
        size = shown.size();
        cancel(shown);
    });
    EXPECT_EQ(size, QSize(792, 540));
}

TEST_F(QtFolderDialogTest, beginWithoutTheLastChoice)
{
    run([](QFileDialog& shown) { accept(shown); });
    ASSERT_TRUE(dialog->URL().has_value());
    EXPECT_EQ(made(false)->URL(), std::nullopt);
    EXPECT_TRUE(made(false)->URLs().empty());
}

TEST_F(QtFolderDialogTest, leaveNoSettingsBehind)
{
    run([](QFileDialog& shown) { cancel(shown); });
    EXPECT_FALSE(QFile::exists(QSettings(QSettings::UserScope, QStringLiteral("QtProject")).fileName()));
}

TEST_F(QtFolderDialogTest, openAtHomeAtFirst)
{
    // In a new process, in which no dialog has been opened yet.
    const auto openOne = [] {
        QDir::setCurrent(QStringLiteral("/"));
        std::_Exit(firstFolder() == QDir::homePath() ? 0 : 1);
    };
    EXPECT_EXIT(openOne(), testing::ExitedWithCode(0), "");
}

TEST_F(QtFolderDialogTest, openWhereTheLastOneWasLeft)
{
    for (const bool isAccepted : {false, true}) {
        const QString left = QString::fromStdString(inside(isAccepted ? "Disco A" : "Disco B").path());
        run([&](QFileDialog& shown) {
            shown.setDirectory(left);
            isAccepted ? accept(shown) : cancel(shown);
        });
        EXPECT_EQ(firstFolder(), left);
    }
}

TEST_F(QtFolderDialogTest, openAtHomeIfTheLastFolderIsGone)
{
    const QString left = QString::fromStdString(inside("Disco A/DCIM").path());
    run([&](QFileDialog& shown) {
        shown.setDirectory(left);
        cancel(shown);
    });
    ASSERT_TRUE(QDir().rmdir(left));
    EXPECT_EQ(firstFolder(), QDir::homePath());
}

TEST_F(QtFolderDialogTest, listFoldersOnly)
{
    QStringList rows;
    run([&](QFileDialog& shown) {
        rows = rowsOf(shown);
        cancel(shown);
    });
    EXPECT_EQ(rows, (QStringList{QStringLiteral("Disco A"), QStringLiteral("Disco B"), QStringLiteral("Disco C")}));
}

TEST_F(QtFolderDialogTest, handleEventsWhileTheyAreOpen)
{
    int ticks = 0;
    QTimer work;
    QObject::connect(&work, &QTimer::timeout, &work, [&] {
        auto* shown = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        if (shown && ++ticks == 5)
            cancel(*shown);
    });
    work.start(1);
    dialog->runModal();
    EXPECT_EQ(ticks, 5);
}

TEST_F(QtFolderDialogTest, renameAndDeleteNothing)
{
    run([](QFileDialog& shown) {
        click(shown, "Disco B");
        QAbstractItemView& rows = view(shown);
        for (const Qt::Key key : {Qt::Key_F2, Qt::Key_Delete})
            QTest::keyClick(&rows, key);
        EXPECT_EQ(rows.findChild<QLineEdit*>(), nullptr) << "nothing can be edited in place";
        for (const char* name : {"qt_rename_action", "qt_delete_action"})
            EXPECT_FALSE(shown.findChild<QAction*>(QLatin1String(name))->isEnabled()) << name;
        EXPECT_FALSE(shown.findChild<QAbstractButton*>(QStringLiteral("newFolderButton"))->isEnabled());
        cancel(shown);
    });
    EXPECT_EQ(everythingBelow(folder.location()),
              (std::vector<std::string>{"Disco A", "Disco A/DCIM", "Disco B", "Disco C", "un video.MOV"}));
}

TEST_F(QtFolderDialogTest, offerNoMenuEntryThatChangesTheDisk)
{
    bool isSeen = false;
    QStringList offered;
    run([&](QFileDialog& shown) {
        const QModelIndex index = rowOf(shown, QStringLiteral("Disco B"));
        const QPoint place = view(shown).visualRect(index).center();
        // The menu may be modal, so a timer reads it and closes it.
        QTimer reader;
        QObject::connect(&reader, &QTimer::timeout, &reader, [&] {
            auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            if (!menu)
                return;
            isSeen = true;
            for (const QAction* action : menu->actions()) {
                if (action->isEnabled() && action->isVisible() && !action->isSeparator())
                    offered.append(action->objectName());
            }
            menu->close();
        });
        reader.start(5);
        QContextMenuEvent event(QContextMenuEvent::Mouse, place, view(shown).viewport()->mapToGlobal(place));
        QApplication::sendEvent(view(shown).viewport(), &event);
        waitUntil([&] { return isSeen; }); // Newer toolkits do not wait for the menu.
        cancel(shown);
    });
    EXPECT_TRUE(isSeen);
    for (const char* name : {"qt_rename_action", "qt_delete_action", "qt_new_folder_action"})
        EXPECT_FALSE(offered.contains(QLatin1String(name))) << name;
}

TEST_F(QtFolderDialogTest, speakSpanish)
{
    QStringList texts;
    run([&](QFileDialog& shown) {
        for (const auto role : {QDialogButtonBox::AcceptRole, QDialogButtonBox::RejectRole})
            texts.append(button(shown, role).text());
        cancel(shown);
    });
    EXPECT_EQ(texts, (QStringList{QStringLiteral("Seleccionar"), QStringLiteral("Cancelar")}));
}

TEST_F(QtFolderDialogTest, writeNoFiles)
{
    const Location home(QDir::homePath().toStdString());
    const auto before = everythingBelow(home);
    for (int count = 0; count < 2; ++count) {
        dialog = made(count == 1);
        run([](QFileDialog& shown) {
            click(shown, "Disco B");
            accept(shown);
        });
    }
    EXPECT_EQ(everythingBelow(home), before);
    EXPECT_EQ(everythingBelow(folder.location()),
              (std::vector<std::string>{"Disco A", "Disco A/DCIM", "Disco B", "Disco C", "un video.MOV"}));
}

} // namespace
} // namespace reelkeep
