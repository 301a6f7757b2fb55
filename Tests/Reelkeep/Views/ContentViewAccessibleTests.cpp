#include "Fixtures/WindowTest.h"
#include "TreesFolder.h"

#include <QAccessible>
#include <QFile>
#include <QFocusFrame>
#include <QRegularExpression>
#include <QTest>

#include <gtest/gtest.h>

#include <map>

namespace reelkeep {
namespace {

using enum WindowState;

QString wordFor(const QAccessibleInterface& element)
{
    static const std::map<QAccessible::Role, const char*> words = {
        {QAccessible::Window, "window"},   {QAccessible::Grouping, "group"},   {QAccessible::Heading, "heading"},
        {QAccessible::StaticText, "text"}, {QAccessible::StatusBar, "status"}, {QAccessible::Button, "button"},
        {QAccessible::CheckBox, "switch"}, {QAccessible::ComboBox, "chooser"}, {QAccessible::ProgressBar, "progress"},
        {QAccessible::List, "list"},       {QAccessible::ListItem, "row"},     {QAccessible::ScrollBar, "scroll bar"}};
    const auto word = words.find(element.role());
    return word == words.end() ? QStringLiteral("role %1").arg(element.role()) : QLatin1String(word->second);
}

double percentOf(QAccessibleValueInterface& value)
{
    return 100 * value.currentValue().toDouble() / value.maximumValue().toDouble();
}

/// The description and the states of an element that a screen reader announces.
QString detailsOf(QAccessibleInterface& element)
{
    QStringList details;
    if (const QString description = element.text(QAccessible::Description); !description.isEmpty())
        details.append(description);
    if (element.role() == QAccessible::ComboBox)
        details.append(QStringLiteral("value ") + element.text(QAccessible::Value));
    if (element.role() == QAccessible::ProgressBar)
        details.append(QStringLiteral("%1 %").arg(percentOf(*element.valueInterface())));
    const QAccessible::State state = element.state();
    if (state.disabled)
        details.append(QStringLiteral("disabled"));
    if (state.checkable)
        details.append(state.checked ? QStringLiteral("on") : QStringLiteral("off"));
    if (state.selectableText)
        details.append(QStringLiteral("selectable"));
    return details.isEmpty() ? QString() : QStringLiteral("  (") + details.join(QStringLiteral(", ")) + u')';
}

/// The tree that screen readers see, one element per line, each indented below its parent. Containers without a name
/// are left out: they only group others.
void write(QAccessibleInterface& element, int depth, QString& lines)
{
    const QString name = element.text(QAccessible::Name);
    const bool isFiller = name.isEmpty() && element.childCount() > 0;
    if (!isFiller) {
        lines += QString(2 * depth, u' ') + wordFor(element) + QStringLiteral(" \"") + name + u'"' +
                 detailsOf(element) + u'\n';
    }
    for (int index = 0; index < element.childCount(); ++index) {
        QAccessibleInterface* child = element.child(index);
        ASSERT_NE(child, nullptr) << name.toStdString();
        EXPECT_EQ(element.indexOfChild(child), index) << name.toStdString();
        EXPECT_EQ(child->parent(), &element) << child->text(QAccessible::Name).toStdString();
        write(*child, isFiller ? depth : depth + 1, lines);
    }
}

class ContentViewAccessible : public WindowTest {
protected:
    QString tree() const
    {
        QString lines;
        write(spoken(*window), 0, lines);
        // The analysis runs during the test, so its time differs in each run.
        static const QRegularExpression moment(QStringLiteral("\\d+/\\d+/\\d{4}, \\d+:\\d+"));
        return lines.replace(moment, QStringLiteral("DATE, TIME"));
    }
};

TEST_F(ContentViewAccessible, findsEveryControlWhereItIsDrawn)
{
    enterState(analysed);
    resizeToContent(1148);
    int found = 0;
    for (QWidget* control : content->findChildren<QWidget*>()) {
        if (!(control->focusPolicy() & Qt::TabFocus) || !control->isVisible())
            continue;
        const QRect place(control->mapToGlobal(QPoint()), control->size());
        EXPECT_EQ(spoken(*control).rect(), place) << spokenName(*control).toStdString();
        ++found;
    }
    EXPECT_GE(found, 12);
}

TEST_F(ContentViewAccessible, leavesTheFocusRingOut)
{
    enterState(chosen);
    const QString without = tree();
    int rings = 0;
    for (int presses = 0; presses < 12; ++presses) {
        QTest::keyClick(window->focusWidget(), Qt::Key_Tab);
        rings += int(window->findChildren<QFocusFrame*>().size());
        EXPECT_EQ(tree().toStdString(), without.toStdString());
    }
    EXPECT_GE(rings, 8);
}

struct Tree {
    WindowState state;
    const char* file;
};
void PrintTo(const Tree& tree, std::ostream* stream)
{
    *stream << tree.state;
}
class ContentViewAccessibleTree : public ContentViewAccessible, public testing::WithParamInterface<Tree> {};

TEST_P(ContentViewAccessibleTree, matchesItsFile)
{
    enterState(GetParam().state);
    QFile file(QStringLiteral("%1/%2.txt").arg(QLatin1String(treesFolder), QLatin1String(GetParam().file)));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << file.fileName().toStdString();
    EXPECT_EQ(tree().toStdString(), file.readAll().toStdString()) << "If the new tree is right, write it to the file.";
}

INSTANTIATE_TEST_SUITE_P(States, ContentViewAccessibleTree,
                         testing::Values(Tree{fresh, "fresh"}, Tree{chosen, "chosen"}, Tree{analysed, "analysed"},
                                         Tree{copying, "copying"}, Tree{allSaved, "allSaved"}));

} // namespace
} // namespace reelkeep
