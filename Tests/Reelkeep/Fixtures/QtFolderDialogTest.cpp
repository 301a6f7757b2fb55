#include "Fixtures/QtFolderDialogTest.h"

#include "Fixtures/EventLoop.h"
#include "Fixtures/Widgets.h"
#include "QtFolderDialog.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <stdexcept>

namespace reelkeep {

QtFolderDialogTest::QtFolderDialogTest()
{
    for (const char* name : {"Disco A", "Disco B", "Disco C", "Disco A/DCIM"})
        folder.folder(name);
    folder.file("un video.MOV");
}

FolderDialog::Response QtFolderDialogTest::run(const std::function<void(QFileDialog&)>& person)
{
    QTimer arrival;
    bool isServed = false;
    QObject::connect(&arrival, &QTimer::timeout, &arrival, [&] {
        auto* shown = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        if (!shown || isServed)
            return;
        isServed = true;
        shown->setDirectory(QString::fromStdString(folder.location().path()));
        // They arrive in the order of the disk and are sorted after that.
        const QStringList sorted = {QStringLiteral("Disco A"), QStringLiteral("Disco B"), QStringLiteral("Disco C")};
        EXPECT_TRUE(waitUntil([&] { return rowsOf(*shown).filter(QStringLiteral("Disco ")) == sorted; }));
        person(*shown);
    });
    arrival.start(5);
    const auto response = dialog->runModal();
    EXPECT_TRUE(isServed);
    return response;
}

QString QtFolderDialogTest::firstFolder()
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

std::unique_ptr<FolderDialog> QtFolderDialogTest::made(bool several)
{
    auto made = qtFolderDialogs()();
    made->title = "Selecciona la carpeta de origen";
    made->canChooseDirectories = true;
    made->canChooseFiles = false;
    made->allowsMultipleSelection = several;
    return made;
}

QAbstractItemView& QtFolderDialogTest::view(QFileDialog& shown)
{
    for (const char* name : {"listView", "treeView"}) {
        auto* candidate = shown.findChild<QAbstractItemView*>(QLatin1String(name));
        if (candidate && candidate->isVisible())
            return *candidate;
    }
    throw std::logic_error("the dialog shows no folders");
}

QStringList QtFolderDialogTest::rowsOf(QFileDialog& shown)
{
    QStringList names;
    const QAbstractItemView& rows = view(shown);
    for (int row = 0; row < rows.model()->rowCount(rows.rootIndex()); ++row)
        names.append(rows.model()->index(row, 0, rows.rootIndex()).data().toString());
    return names;
}

QModelIndex QtFolderDialogTest::rowOf(QFileDialog& shown, const QString& name)
{
    const auto row = int(rowsOf(shown).indexOf(name));
    const QAbstractItemView& rows = view(shown);
    return row < 0 ? QModelIndex() : rows.model()->index(row, 0, rows.rootIndex());
}

QPushButton& QtFolderDialogTest::button(QFileDialog& shown, QDialogButtonBox::ButtonRole role)
{
    auto* box = shown.findChild<QDialogButtonBox*>();
    for (QAbstractButton* candidate : box->buttons()) {
        if (box->buttonRole(candidate) == role)
            return *qobject_cast<QPushButton*>(candidate);
    }
    throw std::logic_error("the dialog lacks a button");
}

void QtFolderDialogTest::click(QFileDialog& shown, const char* name, Qt::KeyboardModifiers modifiers)
{
    const QRect place = view(shown).visualRect(rowOf(shown, QString::fromUtf8(name)));
    QTest::mouseClick(view(shown).viewport(), Qt::LeftButton, modifiers, place.center());
}

void QtFolderDialogTest::accept(QFileDialog& shown)
{
    QTest::mouseClick(&button(shown, QDialogButtonBox::AcceptRole), Qt::LeftButton);
}

void QtFolderDialogTest::cancel(QFileDialog& shown)
{
    QTest::mouseClick(&button(shown, QDialogButtonBox::RejectRole), Qt::LeftButton);
}

} // namespace reelkeep
