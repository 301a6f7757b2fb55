#include "Fixtures/EventLoop.h"
#include "Fixtures/Widgets.h"
#include "UI/FocusRing.h"
#include "UI/RowList.h"
#include "UI/View.h"

#include <QAccessible>
#include <QComboBox>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>

namespace reelkeep {
namespace {

class Accessible : public testing::Test {
protected:
    QAccessibleInterface& made(View view)
    {
        widget.reset(view.widget);
        view.refresh();
        return spoken(*widget);
    }
    template <class Wanted>
    QAccessibleInterface& inside(View view)
    {
        made(std::move(view));
        return spoken(*widget->findChild<Wanted*>());
    }

    std::unique_ptr<QWidget> widget;
};

TEST_F(Accessible, readsATextByItsWords)
{
    const auto& text = made(Text("Listo"));
    EXPECT_EQ(text.role(), QAccessible::StaticText);
    EXPECT_EQ(text.text(QAccessible::Name), QStringLiteral("Listo"));
    EXPECT_FALSE(text.state().selectableText);
}

TEST_F(Accessible, readsATitleAsAHeading)
{
    EXPECT_EQ(made(Text("Videos pendientes").title3()).role(), QAccessible::Heading);
}

TEST_F(Accessible, readsASelectableTextByCharacters)
{
    auto& text = made(Text("/media/ana").monospacedCaption().selectable());
    EXPECT_TRUE(text.state().selectableText);
    EXPECT_TRUE(text.state().readOnly);
    EXPECT_TRUE(text.state().focusable);
    QAccessibleTextInterface* characters = text.textInterface();
    ASSERT_NE(characters, nullptr);
    EXPECT_EQ(characters->characterCount(), 10);
    EXPECT_EQ(characters->text(1, 6), QStringLiteral("media"));
    characters->setSelection(0, 1, 6);
    EXPECT_EQ(characters->selectionCount(), 1);
    int start = 0;
    int end = 0;
    characters->selection(0, &start, &end);
    EXPECT_EQ(start, 1);
    EXPECT_EQ(end, 6);
    EXPECT_EQ(characters->cursorPosition(), 6);
    EXPECT_EQ(static_cast<TextWidget*>(widget.get())->selectedText(), QStringLiteral("media"));
    characters->removeSelection(0);
    EXPECT_EQ(characters->selectionCount(), 0);
}

TEST_F(Accessible, findsTheCharactersOfASelectableTextOnTheScreen)
{
    auto& text = made(Text("/media/ana").monospacedCaption().selectable());
    widget->resize(widget->sizeHint());
    showActive(*widget);
    QAccessibleTextInterface* characters = text.textInterface();
    const QRect fourth = characters->characterRect(3);
    EXPECT_TRUE(text.rect().contains(fourth));
    EXPECT_EQ(characters->offsetAtPoint(fourth.center() - QPoint(1, 0)), 3);
}

TEST_F(Accessible, readsATextThatCannotBeSelectedOnlyAsAWhole)
{
    EXPECT_EQ(made(Text("Listo")).textInterface(), nullptr);
}

TEST_F(Accessible, readsAnAnnouncedTextAsAStatusBar)
{
    const auto& text = made(Text([] { return QStringLiteral("Escaneando videos..."); }).announced());
    EXPECT_EQ(text.role(), QAccessible::StatusBar);
    EXPECT_EQ(text.text(QAccessible::Name), QStringLiteral("Escaneando videos..."));
}

TEST_F(Accessible, readsTheCurrentCharactersOfAnAnnouncedText)
{
    int count = 0;
    View view = Text([&] { return QStringLiteral("Copiando %1/9").arg(++count); }).announced();
    QAccessibleTextInterface* characters = made(view).textInterface();
    ASSERT_NE(characters, nullptr);
    for (int refresh = 2; refresh < 9; ++refresh) {
        view.refresh();
        EXPECT_EQ(characters->text(0, characters->characterCount()), QStringLiteral("Copiando %1/9").arg(refresh));
    }
    characters->setSelection(0, 1, 6);
    EXPECT_EQ(characters->selectionCount(), 0) << "it cannot be selected";
}

TEST_F(Accessible, pressesAButton)
{
    int presses = 0;
    auto& button = made(ProminentButton("Elegir camara", accent::analysisBlue, [&] { ++presses; }));
    EXPECT_EQ(button.role(), QAccessible::Button);
    EXPECT_EQ(button.text(QAccessible::Name), QStringLiteral("Elegir camara"));
    EXPECT_TRUE(button.state().focusable);
    ASSERT_EQ(button.actionInterface()->actionNames().value(0), QAccessibleActionInterface::pressAction());
    button.actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_TRUE(waitUntil([&] { return presses == 1; }));
}

TEST_F(Accessible, reportsThatAButtonIsDisabled)
{
    EXPECT_TRUE(made(PushButton("Quitar", [] {}).enabled([] { return false; })).state().disabled);
}

TEST_F(Accessible, describesAButton)
{
    const auto& button = made(PushButton("Quitar", [] {}).accessibleDescription(QStringLiteral("/media/ana")));
    EXPECT_EQ(button.text(QAccessible::Description), QStringLiteral("/media/ana"));
}

TEST_F(Accessible, turnsASwitch)
{
    bool isOn = true;
    auto& toggle = made(Toggle(
        QStringLiteral("Mantener estructura de carpetas"), [&] { return isOn; }, [&](bool on) { isOn = on; }));
    EXPECT_EQ(toggle.role(), QAccessible::CheckBox);
    EXPECT_EQ(toggle.text(QAccessible::Name), QStringLiteral("Mantener estructura de carpetas"));
    EXPECT_TRUE(toggle.state().checkable);
    EXPECT_TRUE(toggle.state().checked);
    ASSERT_EQ(toggle.actionInterface()->actionNames().value(0), QAccessibleActionInterface::toggleAction());
    toggle.actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
    EXPECT_FALSE(isOn);
    EXPECT_FALSE(toggle.state().checked);
}

TEST_F(Accessible, readsAChooserByItsLabelAndItsChoice)
{
    std::string chosen = "/b";
    const auto entries = [] {
        return std::vector<PickerEntry>{{"/a", QStringLiteral("a")}, {"/b", QStringLiteral("b")}};
    };
    View view = Picker(
        QStringLiteral("HD de copia activo"), entries, [&] { return chosen; }, [](const std::string&) {});
    auto& chooser = inside<QComboBox>(view);
    EXPECT_EQ(chooser.role(), QAccessible::ComboBox);
    EXPECT_EQ(chooser.text(QAccessible::Name), QStringLiteral("HD de copia activo"));
    EXPECT_EQ(chooser.text(QAccessible::Value), QStringLiteral("b"));
    ASSERT_NE(chooser.textInterface(), nullptr);
    EXPECT_EQ(chooser.textInterface()->text(0, chooser.textInterface()->characterCount()), QStringLiteral("b"));
    chosen.clear();
    view.refresh();
    EXPECT_EQ(chooser.text(QAccessible::Name), QStringLiteral("HD de copia activo"));
    EXPECT_EQ(chooser.text(QAccessible::Value), QString());
}

TEST_F(Accessible, opensAChooser)
{
    auto& chooser = made(VStack({}, {Picker(
                                        QStringLiteral("HD de copia activo"),
                                        [] {
                                            return std::vector<PickerEntry>{{"/a", QStringLiteral("a")}};
                                        },
                                        [] { return std::string("/a"); }, [](const std::string&) {})}));
    (void)chooser;
    showActive(*widget);
    auto& popUp = spoken(*widget->findChild<QComboBox*>());
    EXPECT_TRUE(popUp.state().expandable);
    EXPECT_FALSE(popUp.state().expanded);
    popUp.actionInterface()->doAction(QAccessibleActionInterface::showMenuAction());
    EXPECT_TRUE(popUp.state().expanded);
    ASSERT_EQ(popUp.childCount(), 1);
    EXPECT_EQ(popUp.child(0)->childCount(), 1);
    popUp.actionInterface()->doAction(QAccessibleActionInterface::showMenuAction());
    EXPECT_FALSE(popUp.state().expanded);
}

TEST_F(Accessible, readsHowFarAProgressBarIs)
{
    auto& bar = made(ProgressBar(QStringLiteral("Progreso"), [] { return 0.25; }));
    EXPECT_EQ(bar.role(), QAccessible::ProgressBar);
    EXPECT_EQ(bar.text(QAccessible::Name), QStringLiteral("Progreso"));
    const double part =
        bar.valueInterface()->currentValue().toDouble() / bar.valueInterface()->maximumValue().toDouble();
    EXPECT_DOUBLE_EQ(part, 0.25);
}

TEST_F(Accessible, readsANamedBoxAsAGroup)
{
    const auto& group = made(VStack({.name = QStringLiteral("En camara: 27")}, {Text("En camara"), Text("27")}));
    EXPECT_EQ(group.role(), QAccessible::Grouping);
    EXPECT_EQ(group.text(QAccessible::Name), QStringLiteral("En camara: 27"));
    EXPECT_EQ(group.childCount(), 2);
}

TEST_F(Accessible, findsNeitherDecorationNorHiddenWidgets)
{
    bool isShown = false;
    View view =
        HStack({}, {Symbol(glyph::allSaved).secondary(), Tile(glyph::cameraTile, plate::reviewTile),
                    Circle(8, plate::pillNumber), Text("a veces").visible([&] { return isShown; }), Text("siempre")});
    const auto& group = made(view);
    ASSERT_EQ(group.childCount(), 1);
    EXPECT_EQ(group.child(0)->text(QAccessible::Name), QStringLiteral("siempre"));
    EXPECT_EQ(group.indexOfChild(group.child(0)), 0);
    EXPECT_EQ(group.child(1), nullptr);
    isShown = true;
    view.refresh();
    ASSERT_EQ(group.childCount(), 2);
    EXPECT_EQ(group.child(0)->text(QAccessible::Name), QStringLiteral("a veces"));
}

class AccessibleList : public Accessible {
protected:
    AccessibleList()
    {
        list.resize(400, 220);
        showActive(list);
        list.reload(100'000);
        list.setAccessibleName(QStringLiteral("Videos pendientes"));
    }
    QAccessibleInterface& interface() { return spoken(list); }
    static QStringList partsOf(std::size_t row)
    {
        return {QStringLiteral("MVI_%1.MOV").arg(row), QStringLiteral("DCIM"), QStringLiteral("1 kB")};
    }
    static QString lineOf(std::size_t row) { return partsOf(row).join(QStringLiteral(", ")); }

    RowList list{{.makeRow =
                      [] {
                          auto* text = new TextWidget;
                          return RowList::Row{text, [text](std::size_t row) { text->setText(lineOf(row)); }};
                      },
                  .description = [](std::size_t row) { return partsOf(row); },
                  .copiedText = [](std::size_t row) { return lineOf(row); }}};
};

TEST_F(AccessibleList, countsItsRows)
{
    EXPECT_EQ(interface().role(), QAccessible::List);
    EXPECT_EQ(interface().text(QAccessible::Name), QStringLiteral("Videos pendientes"));
    EXPECT_EQ(interface().childCount(), 100'000);
    EXPECT_EQ(interface().child(100'000), nullptr);
    EXPECT_EQ(interface().child(-1), nullptr);
}

TEST_F(AccessibleList, readsRowsInAndOutOfView)
{
    for (const int row : {0, 3, 50'000, 99'999}) {
        QAccessibleInterface* item = interface().child(row);
        ASSERT_NE(item, nullptr);
        EXPECT_EQ(item->role(), QAccessible::ListItem);
        EXPECT_EQ(item->text(QAccessible::Name), lineOf(std::size_t(row)));
        EXPECT_EQ(bool(item->state().offscreen), row > 4);
        EXPECT_TRUE(item->state().focusable);
        EXPECT_EQ(item->parent(), &interface());
        EXPECT_EQ(interface().indexOfChild(item), row);
        ASSERT_EQ(item->childCount(), 3);
        for (int part = 0; part < 3; ++part) {
            QAccessibleInterface* words = item->child(part);
            EXPECT_EQ(words->role(), QAccessible::StaticText);
            EXPECT_EQ(words->text(QAccessible::Name), partsOf(std::size_t(row))[part]);
            EXPECT_EQ(words->parent(), item);
            EXPECT_EQ(item->indexOfChild(words), part);
        }
        EXPECT_EQ(item->child(3), nullptr);
    }
}

TEST_F(AccessibleList, buildsNoWidgetsForTheRowsItReads)
{
    const std::size_t before = list.builtRowCount();
    for (int row = 0; row < 5000; ++row)
        interface().child(row)->text(QAccessible::Name);
    EXPECT_EQ(list.builtRowCount(), before);
}

TEST_F(AccessibleList, findsTheRowAtAPoint)
{
    const QPoint place = list.viewport()->mapToGlobal(QPoint(20, 10 + 2 * 49 + 5));
    ASSERT_NE(interface().childAt(place.x(), place.y()), nullptr);
    EXPECT_EQ(interface().childAt(place.x(), place.y())->text(QAccessible::Name), lineOf(2));
    EXPECT_TRUE(interface().child(2)->rect().contains(place));
}

TEST_F(AccessibleList, followsTheCurrentRow)
{
    list.setFocus();
    QTest::keyClick(&list, Qt::Key_Down);
    EXPECT_EQ(interface().focusChild(), interface().child(1));
    EXPECT_TRUE(interface().child(1)->state().focused);
    EXPECT_FALSE(interface().child(0)->state().focused);
}

TEST_F(AccessibleList, focusesARow)
{
    auto* actions = interface().child(50'000)->actionInterface();
    ASSERT_TRUE(actions);
    ASSERT_EQ(actions->actionNames(), QStringList{QAccessibleActionInterface::setFocusAction()});
    actions->doAction(QAccessibleActionInterface::setFocusAction());
    EXPECT_TRUE(interface().child(50'000)->state().focused);
    EXPECT_FALSE(interface().child(50'000)->state().offscreen);
    EXPECT_TRUE(FocusRing::belongsAround(list));
}

TEST_F(AccessibleList, reportsRowsThatAreGoneAsInvalid)
{
    QAccessibleInterface* item = interface().child(50);
    QAccessibleInterface* part = item->child(1);
    ASSERT_TRUE(item->isValid());
    ASSERT_TRUE(part->isValid());
    list.reload(10);
    EXPECT_FALSE(item->isValid());
    EXPECT_TRUE(item->state().invalid);
    EXPECT_EQ(item->text(QAccessible::Name), QString());
    EXPECT_EQ(item->rect(), QRect());
    EXPECT_FALSE(part->isValid());
    EXPECT_TRUE(part->state().invalid);
    EXPECT_EQ(part->text(QAccessible::Name), QString());
    EXPECT_EQ(part->rect(), QRect());
}

TEST_F(AccessibleList, survivesTenThousandChangesOfTheRecordsItIsReading)
{
    std::vector<QAccessibleInterface*> held;
    for (const int row : {0, 1, 7, 40, 999})
        held.push_back(interface().child(row));
    list.setFocus();
    for (std::size_t change = 0; change < 10'000; ++change) {
        const std::size_t count = change * 7919 % 1000;
        list.reload(count);
        QTest::keyClick(&list, change % 3 ? Qt::Key_Down : Qt::Key_End);
        for (std::size_t index = 0; index < held.size(); ++index) {
            const int row = std::vector<int>{0, 1, 7, 40, 999}[index];
            ASSERT_EQ(held[index]->isValid(), row < int(count));
            held[index]->text(QAccessible::Name);
            held[index]->state();
            held[index]->rect();
            ASSERT_EQ(held[index]->parent(), &interface());
        }
        ASSERT_EQ(interface().childCount(), int(count));
        if (QAccessibleInterface* focused = interface().focusChild()) {
            ASSERT_EQ(focused->text(QAccessible::Name), lineOf(std::size_t(list.currentRow())));
        }
    }
}

TEST_F(Accessible, invalidatesRowsThatOutliveTheirList)
{
    auto list = std::make_unique<RowList>(
        RowList::Source{.makeRow =
                            [] {
                                return RowList::Row{new QWidget, [](std::size_t) {}};
                            },
                        .description = [](std::size_t) { return QStringList{QStringLiteral("x")}; },
                        .copiedText = [](std::size_t) { return QString(); }});
    list->reload(10);
    QAccessibleInterface* row = spoken(*list).child(3);
    const std::vector<QAccessible::Id> held = {QAccessible::uniqueId(row), QAccessible::uniqueId(row->child(0))};
    list.reset();
    for (const QAccessible::Id id : held) {
        QAccessibleInterface* item = QAccessible::accessibleInterface(id);
        EXPECT_TRUE(!item || !item->isValid());
    }
}

} // namespace
} // namespace reelkeep
