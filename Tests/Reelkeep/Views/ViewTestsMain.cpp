#include "Fixtures/Desktops.h"
#include "UI/Accessible.h"

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QLocale>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fstream>

namespace {

/// Common screens side by side, in pixels; the first is the primary one.
const char* const screens = R"({"screens": [
    {"name": "full", "x": 0, "y": 0, "width": 1920, "height": 1080},
    {"name": "laptop", "x": 2000, "y": 0, "width": 1366, "height": 768},
    {"name": "small", "x": 3500, "y": 0, "width": 800, "height": 600},
    {"name": "tall", "x": 4500, "y": 0, "width": 3000, "height": 3000},
    {"name": "uneven", "x": 8000, "y": 0, "width": 4500, "height": 4500}]})";
/// Pixels per point. A "dpr" property of a screen would not affect the windows on it.
const char* const scales = "uneven=1.5";

/// Lets no test find in the clipboard what another one has copied.
class ClipboardCleaner : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo&) override { QApplication::clipboard()->clear(); }
};

} // namespace

int main(int argc, char** argv)
{
    // The tests must neither depend on the desktop that they run on nor leave anything in its home.
    const QTemporaryDir home;
    for (const char* variable : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"})
        qputenv(variable, home.path().toUtf8());
    std::ofstream(home.filePath("screens.json").toStdString()) << screens;
    qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + home.filePath("screens.json").toUtf8());
    qputenv("TZ", "NPT-5:45"); // No other zone has this offset, so a wrong one shows.
    qunsetenv("QT_STYLE_OVERRIDE");
    qunsetenv("QT_SCALE_FACTOR");
    qputenv("QT_SCREEN_SCALE_FACTORS", scales);

    QApplication application(argc, argv);
    QApplication::setStyle(QStringLiteral("Fusion"));
    QApplication::setFont(reelkeep::designFont());
    QApplication::setPalette(reelkeep::lightPalette());
    QLocale::setDefault(QLocale(QLocale::Spanish, QLocale::Spain));
    QAccessible::setActive(true);
    reelkeep::installAccessibility();

    testing::InitGoogleTest(&argc, argv);
    testing::UnitTest::GetInstance()->listeners().Append(new ClipboardCleaner);
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    return RUN_ALL_TESTS();
}
