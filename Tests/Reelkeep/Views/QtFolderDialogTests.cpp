#include "Fixtures/Desktops.h"
#include "Fixtures/EventLoop.h"
#include "Fixtures/TemporaryFolder.h"
#include "Fixtures/Widgets.h"
#include "QtFolderDialog.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QContextMenuEvent>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QScreen>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>

namespace reelkeep {
namespace {

/// The real dialog, operated by a function while it is open.
class QtFolderDialog : public testing::Test {
protected:
    QtFolderDialog()
    {
        for (const char* name : {"Disco A", "Disco B", "Disco C", "Disco A/DCIM"})
            folder.folder(name);
        folder.file("un video.MOV");
    }
    Location inside(const char* name) const { return folder / name; }

    /// Shows the dialog on the test's folder and calls `person` once the folders are listed.
    FolderDialog::Response run(const std::function<void(QFileDialog&)>& person)
    {
        QTimer arrival;
        bool isServed = false;
        QObject::connect(&arrival, &QTimer::timeout, &arrival, [&] {
            auto* shown = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            if (!shown || isServed)
                return;
            isServed = true;
            shown->setDirectory(QString::fromStdString(folder.location().path()));
            EXPECT_TRUE(waitUntil([&] { return rowOf(*shown, QStringLiteral("Disco C")).isValid(); }));
            person(*shown);
        });
        arrival.start(5);
        const auto response = dialog->runModal();
        EXPECT_TRUE(isServed);
        return response;
    }
    /// The folder in which a new dialog opens; it is cancelled at once.
    static QString firstFolder()
    {
        QTimer arrival;
        QString first;
        QObject::connect(&arrival, &QTimer::timeout, &arrival, [&] {
            if (auto* shown = qobject_cast<QFileDialog*>(QApplication::activeModalWidget())) {
                first = shown->directory().absolutePath();
                shown->reject();
            }
        });
        arrival.start(5);
        made(false)->runModal();
        return first;
    }
    static QAbstractItemView& view(QFileDialog& shown)
    {
        for (const char* name : {"listView", "treeView"}) {
            auto* candidate = shown.findChild<QAbstractItemView*>(QLatin1String(name));
            if (candidate && candidate->isVisible())
                return *candidate;
        }
        throw std::logic_error("the dialog shows no folders");
    }
    static QModelIndex rowOf(QFileDialog& shown, const QString& name)
    {
        QAbstractItemView& rows = view(shown);
        for (int row = 0; row < rows.model()->rowCount(rows.rootIndex()); ++row) {
            const QModelIndex index = rows.model()->index(row, 0, rows.rootIndex());
            if (index.data().toString() == name)
                return index;
        }
        return {};
    }
    static QStringList rowsOf(QFileDialog& shown)
    {
        QStringList names;
        QAbstractItemView& rows = view(shown);
        for (int row = 0; row < rows.model()->rowCount(rows.rootIndex()); ++row)
            names.append(rows.model()->index(row, 0, rows.rootIndex()).data().toString());
        return names;
    }
    static void click(QFileDialog& shown, const char* name, Qt::KeyboardModifiers modifiers = {})
    {
        const QModelIndex index = rowOf(shown, QString::fromLatin1(name));
        const QRect place = view(shown).visualRect(index);
        QTest::mouseClick(view(shown).viewport(), Qt::LeftButton, modifiers, place.center());
    }
    static QPushButton& button(QFileDialog& shown, QDialogButtonBox::ButtonRole role)
    {
        auto* box = shown.findChild<QDialogButtonBox*>();
        for (QAbstractButton* candidate : box->buttons()) {
            if (box->buttonRole(candidate) == role)
                return *qobject_cast<QPushButton*>(candidate);
        }
        throw std::logic_error("the dialog lacks a button");
    }
    static void accept(QFileDialog& shown)
    {
        QTest::mouseClick(&button(shown, QDialogButtonBox::AcceptRole), Qt::LeftButton);
    }
    static void cancel(QFileDialog& shown)
    {
        QTest::mouseClick(&button(shown, QDialogButtonBox::RejectRole), Qt::LeftButton);
    }

    TemporaryFolder folder;
    std::unique_ptr<FolderDialog> dialog = made(false);

    static std::unique_ptr<FolderDialog> made(bool several)
    {
        auto made = qtFolderDialogs()();
        made->title = "Selecciona la carpeta de origen";
        made->canChooseDirectories = true;
        made->canChooseFiles = false;
        made->allowsMultipleSelection = several;
        return made;
    }
};

TEST_F(QtFolderDialog, haveTheirTitle)
{
    QString title;
    run([&](QFileDialog& shown) {
        title = shown.windowTitle();
        cancel(shown);
    });
    EXPECT_EQ(title, QStringLiteral("Selecciona la carpeta de origen"));
}

TEST_F(QtFolderDialog, fitASmallScreen)
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

TEST_F(QtFolderDialog, areNewForEachQuestion)
{
    EXPECT_NE(qtFolderDialogs()(), qtFolderDialogs()());
}

TEST_F(QtFolderDialog, openAtHomeAtFirst)
{
    // In a new process, in which no dialog has been opened yet.
    const auto openOne = [] {
        QDir::setCurrent(QStringLiteral("/"));
        std::_Exit(firstFolder() == QDir::homePath() ? 0 : 1);
    };
    EXPECT_EXIT(openOne(), testing::ExitedWithCode(0), "");
}

TEST_F(QtFolderDialog, openWhereTheLastOneWasLeft)
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

TEST_F(QtFolderDialog, openAtHomeIfTheLastFolderIsGone)
{
    const QString left = QString::fromStdString(inside("Disco A/DCIM").path());
    run([&](QFileDialog& shown) {
        shown.setDirectory(left);
        cancel(shown);
    });
    ASSERT_TRUE(QDir().rmdir(left));
    EXPECT_EQ(firstFolder(), QDir::homePath());
}

TEST_F(QtFolderDialog, listFoldersOnly)
{
    QStringList rows;
    run([&](QFileDialog& shown) {
        rows = rowsOf(shown);
        cancel(shown);
    });
    rows.sort();
    EXPECT_EQ(rows, (QStringList{QStringLiteral("Disco A"), QStringLiteral("Disco B"), QStringLiteral("Disco C")}));
}

TEST_F(QtFolderDialog, giveTheFolderThatWasClicked)
{
    const auto response = run([](QFileDialog& shown) {
        click(shown, "Disco B");
        accept(shown);
    });
    EXPECT_EQ(response, FolderDialog::Response::ok);
    EXPECT_EQ(dialog->URL(), inside("Disco B"));
    EXPECT_EQ(dialog->URLs(), std::vector<Location>{inside("Disco B")});
}

TEST_F(QtFolderDialog, giveOneFolderIfOneIsAllowed)
{
    run([](QFileDialog& shown) {
        click(shown, "Disco A");
        click(shown, "Disco C", Qt::ControlModifier);
        accept(shown);
    });
    EXPECT_EQ(dialog->URLs().size(), 1U);
}

TEST_F(QtFolderDialog, giveTheFolderThatWasTyped)
{
    run([this](QFileDialog& shown) {
        auto* field = shown.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        field->setFocus();
        field->selectAll();
        QTest::keyClicks(field, QString::fromStdString(inside("Disco A/DCIM").path()));
        QTest::keyClick(field, Qt::Key_Return);
    });
    EXPECT_EQ(dialog->URL(), inside("Disco A/DCIM"));
}

TEST_F(QtFolderDialog, giveTheFolderThatIsShownIfNoneIsSelected)
{
    const auto response = run([](QFileDialog& shown) { accept(shown); });
    EXPECT_EQ(response, FolderDialog::Response::ok);
    EXPECT_EQ(dialog->URL(), folder.location());
}

TEST_F(QtFolderDialog, giveTheRoot)
{
    run([](QFileDialog& shown) {
        auto* field = shown.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        field->setText(QStringLiteral("/"));
        accept(shown);
    });
    EXPECT_EQ(dialog->URL(), Location("/"));
}

TEST_F(QtFolderDialog, giveAFolderWithSpecialCharactersInItsName)
{
    const char* name = "C\xc3\xa1mara & <b>50%1";
    folder.folder(name);
    run([&](QFileDialog& shown) {
        const QString wanted = QString::fromUtf8(name);
        ASSERT_TRUE(waitUntil([&] { return rowOf(shown, wanted).isValid(); }));
        const QRect place = view(shown).visualRect(rowOf(shown, wanted));
        QTest::mouseClick(view(shown).viewport(), Qt::LeftButton, {}, place.center());
        accept(shown);
    });
    EXPECT_EQ(dialog->URL(), inside(name));
}

TEST_F(QtFolderDialog, giveSeveralFoldersThatWereClicked)
{
    dialog = made(true);
    run([](QFileDialog& shown) {
        click(shown, "Disco A");
        click(shown, "Disco C", Qt::ControlModifier);
        accept(shown);
    });
    EXPECT_EQ(dialog->URLs(), (std::vector<Location>{inside("Disco A"), inside("Disco C")}));
    EXPECT_EQ(dialog->URL(), inside("Disco A"));
}

TEST_F(QtFolderDialog, giveARangeOfFoldersThatWasClicked)
{
    dialog = made(true);
    run([](QFileDialog& shown) {
        click(shown, "Disco A");
        click(shown, "Disco C", Qt::ShiftModifier);
        accept(shown);
    });
    EXPECT_EQ(dialog->URLs(), (std::vector<Location>{inside("Disco A"), inside("Disco B"), inside("Disco C")}));
}

TEST_F(QtFolderDialog, giveSeveralFoldersThatWereSelectedByKeyboard)
{
    dialog = made(true);
    run([](QFileDialog& shown) {
        QAbstractItemView& rows = view(shown);
        rows.setFocus();
        rows.setCurrentIndex(rowOf(shown, QStringLiteral("Disco A")));
        QTest::keyClick(&rows, Qt::Key_Down, Qt::ShiftModifier);
        accept(shown);
    });
    EXPECT_EQ(dialog->URLs(), (std::vector<Location>{inside("Disco A"), inside("Disco B")}));
}

TEST_F(QtFolderDialog, giveNothingWhenCancelledByTheirButton)
{
    const auto response = run([](QFileDialog& shown) {
        click(shown, "Disco B");
        cancel(shown);
    });
    EXPECT_EQ(response, FolderDialog::Response::cancel);
    EXPECT_EQ(dialog->URL(), std::nullopt);
    EXPECT_TRUE(dialog->URLs().empty());
}

TEST_F(QtFolderDialog, giveNothingWhenCancelledByEscape)
{
    const auto response = run([](QFileDialog& shown) {
        click(shown, "Disco B");
        QTest::keyClick(&view(shown), Qt::Key_Escape);
    });
    EXPECT_EQ(response, FolderDialog::Response::cancel);
    EXPECT_TRUE(dialog->URLs().empty());
}

TEST_F(QtFolderDialog, giveNothingWhenClosed)
{
    const auto response = run([](QFileDialog& shown) {
        click(shown, "Disco B");
        shown.close();
    });
    EXPECT_EQ(response, FolderDialog::Response::cancel);
    EXPECT_TRUE(dialog->URLs().empty());
}

TEST_F(QtFolderDialog, giveNothingWhenTheirWindowIsDestroyed)
{
    auto window = std::make_unique<QWidget>();
    showActive(*window);
    const auto response = run([&](QFileDialog&) { window.reset(); });
    EXPECT_EQ(response, FolderDialog::Response::cancel);
    EXPECT_TRUE(dialog->URLs().empty());
}

TEST_F(QtFolderDialog, letWorkGoOnMeanwhile)
{
    int ticks = 0;
    QTimer work;
    QObject::connect(&work, &QTimer::timeout, &work, [&] { ++ticks; });
    work.start(1);
    run([&](QFileDialog& shown) {
        const int before = ticks;
        EXPECT_TRUE(waitUntil([&] { return ticks > before + 5; }));
        cancel(shown);
    });
}

TEST_F(QtFolderDialog, renameAndDeleteNothing)
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

TEST_F(QtFolderDialog, offerNoMenuEntryThatChangesTheDisk)
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

TEST_F(QtFolderDialog, speakSpanish)
{
    QStringList texts;
    run([&](QFileDialog& shown) {
        for (const auto role : {QDialogButtonBox::AcceptRole, QDialogButtonBox::RejectRole})
            texts.append(button(shown, role).text());
        cancel(shown);
    });
    EXPECT_EQ(texts, (QStringList{QStringLiteral("Seleccionar"), QStringLiteral("Cancelar")}));
}

TEST_F(QtFolderDialog, writeNoFiles)
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
