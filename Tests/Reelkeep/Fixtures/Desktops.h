#pragma once

#include <QFont>
#include <QPalette>

#include <string>
#include <vector>

class QScreen;

namespace reelkeep {

/// The font for which the window's measures are defined, or a larger one.
QFont designFont(double scale = 1);
bool isDesignFontInstalled();

/// The palettes for which the window's colours are defined.
QPalette lightPalette();
QPalette darkPalette();

struct NamedPalette {
    std::string name;
    QPalette palette;
};
/// The two of the design, and those of common desktops.
std::vector<NamedPalette> commonPalettes();
std::vector<NamedPalette> highContrastPalettes();

/// One of the screens that the tests run on: "full" (1920 x 1080), "laptop" (1366 x 768), "small" (800 x 600), "tall",
/// "uneven" (one and a half pixels per point).
QScreen* screenNamed(const char* name);

/// Sets the application's palette or font for the duration of a test.
class PaletteChange {
public:
    explicit PaletteChange(const QPalette& palette);
    PaletteChange(const PaletteChange&) = delete;
    PaletteChange& operator=(const PaletteChange&) = delete;
    ~PaletteChange();

private:
    QPalette before;
};
class FontChange {
public:
    explicit FontChange(const QFont& font);
    FontChange(const FontChange&) = delete;
    FontChange& operator=(const FontChange&) = delete;
    ~FontChange();

private:
    QFont before;
};

} // namespace reelkeep
