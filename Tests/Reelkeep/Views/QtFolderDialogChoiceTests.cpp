#include "Fixtures/EventLoop.h"
#include "Fixtures/QtFolderDialogTest.h"
#include "Fixtures/Widgets.h"

#include <QAbstractItemView>
#include <QFileDialog>
#include <QLineEdit>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace reelkeep {
namespace {

class QtFolderDialogChoice : public QtFolderDialogTest {
protected:
    /// Clicks the first folder, and the third with a key held down.
    void chooseFirstAndThird(Qt::KeyboardModifier key)
    {
        dialog = made(true);
        run([key](QFileDialog& shown) {
            click(shown, "Disco A");
            click(shown, "Disco C", key);
            accept(shown);
        });
    }
};

TEST_F(QtFolderDialogChoice, giveTheFolderThatWasClicked)
{
    const auto response = run([](QFileDialog& shown) {
        click(shown, "Disco B");
        accept(shown);
    });
    EXPECT_EQ(response, FolderDialog::Response::ok);
    EXPECT_EQ(dialog->URL(), inside("Disco B"));
    EXPECT_EQ(dialog->URLs(), std::vector<Location>{inside("Disco B")});
}

TEST_F(QtFolderDialogChoice, giveOneFolderIfOneIsAllowed)
{
    run([](QFileDialog& shown) {
        click(shown, "Disco A");
        click(shown, "Disco C", Qt::ControlModifier);
        accept(shown);
    });
    EXPECT_EQ(dialog->URLs().size(), 1U);
}

TEST_F(QtFolderDialogChoice, giveTheFolderThatWasTyped)
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

TEST_F(QtFolderDialogChoice, giveTheFolderThatIsShownIfNoneIsSelected)
{
    const auto response = run([](QFileDialog& shown) { accept(shown); });
    EXPECT_EQ(response, FolderDialog::Response::ok);
    EXPECT_EQ(dialog->URL(), folder.location());
}

TEST_F(QtFolderDialogChoice, giveTheRoot)
{
    run([](QFileDialog& shown) {
        auto* field = shown.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        field->setText(QStringLiteral("/"));
        accept(shown);
    });
    EXPECT_EQ(dialog->URL(), Location("/"));
}

TEST_F(QtFolderDialogChoice, giveAFolderWithSpecialCharactersInItsName)
{
    const char* name = "C\xc3\xa1mara & <b>50%1";
    folder.folder(name);
    run([&](QFileDialog& shown) {
        ASSERT_TRUE(waitUntil([&] { return rowOf(shown, QString::fromUtf8(name)).isValid(); }));
        click(shown, name);
        accept(shown);
    });
    EXPECT_EQ(dialog->URL(), inside(name));
}

TEST_F(QtFolderDialogChoice, giveSeveralFoldersThatWereClicked)
{
    chooseFirstAndThird(Qt::ControlModifier);
    EXPECT_EQ(dialog->URLs(), (std::vector<Location>{inside("Disco A"), inside("Disco C")}));
    EXPECT_EQ(dialog->URL(), inside("Disco A"));
}

TEST_F(QtFolderDialogChoice, giveARangeOfFoldersThatWasClicked)
{
    chooseFirstAndThird(Qt::ShiftModifier);
    EXPECT_EQ(dialog->URLs(), (std::vector<Location>{inside("Disco A"), inside("Disco B"), inside("Disco C")}));
}

TEST_F(QtFolderDialogChoice, giveSeveralFoldersThatWereSelectedByKeyboard)
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

TEST_F(QtFolderDialogChoice, giveNothingWhenCancelledByTheirButton)
{
    const auto response = run([](QFileDialog& shown) {
        click(shown, "Disco B");
        cancel(shown);
    });
    EXPECT_EQ(response, FolderDialog::Response::cancel);
    EXPECT_EQ(dialog->URL(), std::nullopt);
    EXPECT_TRUE(dialog->URLs().empty());
}

TEST_F(QtFolderDialogChoice, giveNothingWhenCancelledByEscape)
{
    const auto response = run([](QFileDialog& shown) {
        click(shown, "Disco B");
        QTest::keyClick(&view(shown), Qt::Key_Escape);
    });
    EXPECT_EQ(response, FolderDialog::Response::cancel);
    EXPECT_TRUE(dialog->URLs().empty());
}

TEST_F(QtFolderDialogChoice, giveNothingWhenClosed)
{
    const auto response = run([](QFileDialog& shown) {
        click(shown, "Disco B");
        shown.close();
    });
    EXPECT_EQ(response, FolderDialog::Response::cancel);
    EXPECT_TRUE(dialog->URLs().empty());
}

TEST_F(QtFolderDialogChoice, giveNothingWhenTheirWindowIsDestroyed)
{
    auto window = std::make_unique<QWidget>();
    showActive(*window);
    const auto response = run([&](QFileDialog&) { window.reset(); });
    EXPECT_EQ(response, FolderDialog::Response::cancel);
    EXPECT_TRUE(dialog->URLs().empty());
}

} // namespace
} // namespace reelkeep
