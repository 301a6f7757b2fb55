#include "Fixtures/Desktops.h"

#include <QApplication>
#include <QCoreApplication>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QScreen>

#include <cmath>
#include <stdexcept>

namespace reelkeep {

namespace {

QPalette palette(const QColor& window, const QColor& text, const QColor& base, const QColor& highlight)
{
    QPalette made(text, window, window.lighter(), window.darker(), window.darker(150), text, base);
    made.setColor(QPalette::Highlight, highlight);
    made.setColor(QPalette::HighlightedText, Qt::white);
    return made;
}

} // namespace

QFont designFont(double scale)
{
    QFont font(QStringLiteral("Inter"));
    font.setPixelSize(int(std::lround(13 * scale)));
    return font;
}

bool isDesignFontInstalled()
{
    return QFontDatabase::families().contains(QStringLiteral("Inter"));
}

QPalette lightPalette()
{
    return palette({236, 236, 236}, Qt::black, Qt::white, {48, 140, 198});
}

QPalette darkPalette()
{
    return palette({36, 36, 36}, Qt::white, {28, 28, 28}, {48, 140, 198});
}

std::vector<NamedPalette> commonPalettes()
{
    return {{"light", lightPalette()},
            {"dark", darkPalette()},
            {"Fusion", palette({239, 239, 239}, Qt::black, Qt::white, {48, 140, 198})},
            {"Breeze", palette({239, 240, 241}, {35, 38, 41}, {252, 252, 252}, {61, 174, 233})},
            {"Breeze Dark", palette({42, 46, 50}, {252, 252, 252}, {27, 30, 32}, {61, 174, 233})},
            {"Adwaita", palette({246, 245, 244}, {46, 52, 54}, Qt::white, {53, 132, 228})},
            {"Adwaita Dark", palette({53, 53, 53}, {238, 238, 236}, {45, 45, 45}, {21, 83, 158})},
            {"Yaru Dark", palette({44, 44, 44}, {247, 247, 247}, {29, 29, 29}, {233, 84, 32})}};
}

std::vector<NamedPalette> highContrastPalettes()
{
    return {{"black on white", palette(Qt::white, Qt::black, Qt::white, {0, 0, 128})},
            {"white on black", palette(Qt::black, Qt::white, Qt::black, {255, 255, 0})}};
}

QScreen* screenNamed(const char* name)
{
    for (QScreen* screen : QGuiApplication::screens()) {
        if (screen->name() == QLatin1String(name))
            return screen;
    }
    throw std::invalid_argument(name);
}

PaletteChange::PaletteChange(const QPalette& palette) : before(QApplication::palette())
{
    QApplication::setPalette(palette);
    QCoreApplication::processEvents(); // Widgets are notified in a later turn.
}

PaletteChange::~PaletteChange()
{
    QApplication::setPalette(before);
}

FontChange::FontChange(const QFont& font) : before(QApplication::font())
{
    QApplication::setFont(font);
    QCoreApplication::processEvents();
}

FontChange::~FontChange()
{
    QApplication::setFont(before);
}

} // namespace reelkeep
