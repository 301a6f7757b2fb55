#include "Fixtures/EventLoop.h"
#include "Fixtures/Widgets.h"
#include "UI/Announcer.h"

#include <QElapsedTimer>
#include <QWidget>

#include <gtest/gtest.h>

namespace reelkeep {
namespace {

class AnnouncerTest : public testing::Test {
protected:
    AnnouncerTest()
    {
        QObject::connect(announcer, &Announcer::announced, &widget,
                         [this](const QString& text) { spoken.append(text); });
    }

    QWidget widget;
    Announcer* announcer = new Announcer(&widget);
    QStringList spoken;
};

TEST_F(AnnouncerTest, announcesAtOnceAfterAQuietTime)
{
    announcer->announce(QStringLiteral("Escaneando videos..."));
    EXPECT_EQ(spoken, QStringList{QStringLiteral("Escaneando videos...")});
}

TEST_F(AnnouncerTest, doesNotFlood)
{
    for (int count = 0; count < 5000; ++count) {
        announcer->announce(QStringLiteral("Copiando %1/5000").arg(count));
        if (count % 100 == 0)
            letEventsPass();
    }
    EXPECT_EQ(spoken.size(), 1);
}

TEST_F(AnnouncerTest, announcesTheNewestTextAfterSomeSeconds)
{
    announcer->announce(QStringLiteral("Copiando 0/3"));
    QElapsedTimer waited;
    waited.start();
    announcer->announce(QStringLiteral("Copiando 1/3"));
    announcer->announce(QStringLiteral("Copiando 2/3"));
    ASSERT_TRUE(waitUntil([this] { return spoken.size() > 1; }));
    EXPECT_GE(waited.elapsed(), 1000);
    EXPECT_EQ(spoken, (QStringList{QStringLiteral("Copiando 0/3"), QStringLiteral("Copiando 2/3")}));
}

TEST_F(AnnouncerTest, doesNotRepeatAText)
{
    announcer->announce(QStringLiteral("Escaneando videos..."));
    announcer->announce(QStringLiteral("Escaneando videos..."));
    QElapsedTimer quiet;
    quiet.start();
    ASSERT_TRUE(waitUntil([&] { return quiet.elapsed() > 3500; }));
    EXPECT_EQ(spoken.size(), 1);
}

} // namespace
} // namespace reelkeep
