#include "Fixtures/Desktops.h"
#include "Fixtures/Widgets.h"
#include "UI/Appearance.h"
#include "UI/SymbolIcon.h"
#include "UI/SymbolWidget.h"

#include <QImage>

#include <gtest/gtest.h>

namespace reelkeep {
namespace {

/// The most opaque colour of the icon.
QColor inkOf(const QIcon& icon, QIcon::Mode mode = QIcon::Normal)
{
    const QImage image = icon.pixmap(QSize(40, 40), 1, mode).toImage();
    QColor strongest(Qt::transparent);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor color = image.pixelColor(x, y);
            if (color.alpha() > strongest.alpha())
                strongest = color;
        }
    }
    return strongest;
}

TEST(SymbolIcon, isReadableInBothThemes)
{
    const QIcon icon = symbolIcon("folder");
    for (const QPalette& palette : {lightPalette(), darkPalette()}) {
        const PaletteChange change(palette);
        const QColor ground = palette.color(QPalette::Base);
        EXPECT_GE(Appearance::contrast(Appearance::over(inkOf(icon), ground), ground), 4.5);
    }
}

TEST(SymbolIcon, isDrawnInTheColoursOfASelectionAndOfADisabledControl)
{
    const QIcon icon = symbolIcon("folder");
    EXPECT_EQ(inkOf(icon, QIcon::Selected), QColor(Qt::white));
    EXPECT_LT(inkOf(icon, QIcon::Disabled).alpha(), inkOf(icon).alpha());
}

TEST(SymbolIcon, fillsASquareOfAnySizeAndScale)
{
    for (const char* name : {"home", "computer", "card", "disk", "folder"}) {
        const QIcon icon = symbolIcon(name);
        EXPECT_EQ(icon.actualSize(QSize(18, 18)), QSize(18, 18)) << name;
        EXPECT_EQ(icon.pixmap(QSize(18, 18), 2.0).size(), QSize(36, 36)) << name;
        EXPECT_EQ(inkOf(icon).alpha(), inkOf(symbolIcon("folder")).alpha()) << name << " is drawn";
    }
}

TEST(SymbolIconTile, isWhiteOnTheTile)
{
    IconTile tile({"stack", 29}, {.fill = Tint::of(accent::reviewOrange), .radius = 18});
    tile.resize(tile.sizeHint());
    const QImage image = picture(tile);
    int white = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            white += image.pixelColor(x, y) == QColor(Qt::white) ? 1 : 0;
    EXPECT_GE(white, 100);
    EXPECT_LE(white, image.width() * image.height() / 2);
}

} // namespace
} // namespace reelkeep
