#include "UI/SymbolWidget.h"

#include <QFile>
#include <QPainter>
#include <QPixmapCache>
#include <QSvgRenderer>

#include <algorithm>
#include <cmath>

/// The resources of a static library must be registered by hand. The macro works only outside of any namespace.
static void registerSymbols()
{
    Q_INIT_RESOURCE(Symbols);
}

namespace reelkeep {

namespace {

QString pathOf(const char* name)
{
    static const bool registered = (registerSymbols(), true);
    Q_UNUSED(registered)
    return QStringLiteral(":/symbols/") + QLatin1String(name);
}

} // namespace

QSizeF symbolSize(const char* name, double width)
{
    const QSizeF drawn = QSvgRenderer(pathOf(name)).viewBoxF().size();
    return {width, width * drawn.height() / drawn.width()};
}

QPixmap symbolPixmap(const char* name, QSizeF size, const QColor& color, double devicePixelRatio)
{
    const QSize pixels(int(std::ceil(size.width() * devicePixelRatio)),
                       int(std::ceil(size.height() * devicePixelRatio)));
    const QString key = QStringLiteral("%1/%2x%3/%4")
                            .arg(QLatin1String(name), QString::number(pixels.width()), QString::number(pixels.height()),
                                 color.name(QColor::HexArgb));
    QPixmap pixmap;
    if (QPixmapCache::find(key, &pixmap) && pixmap.devicePixelRatio() == devicePixelRatio)
        return pixmap;

    pixmap = QPixmap(pixels);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    QSvgRenderer(pathOf(name)).render(&painter);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(pixmap.rect(), color);
    painter.end();
    pixmap.setDevicePixelRatio(devicePixelRatio);
    QPixmapCache::insert(key, pixmap);
    return pixmap;
}

SymbolWidget::SymbolWidget(const Glyph& shownGlyph) : glyph(shownGlyph)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void SymbolWidget::setColor(const TextColor& newColor)
{
    color = newColor;
    update();
}

QSizeF SymbolWidget::drawnSize() const
{
    return symbolSize(glyph.name, scaledWithFont(glyph.width));
}

QSize SymbolWidget::sizeHint() const
{
    const QSizeF size = drawnSize();
    return {std::max(scaledWithFont(glyph.frame), int(std::ceil(size.width()))), int(std::ceil(size.height()))};
}

void SymbolWidget::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QSizeF size = drawnSize();
    const QPointF corner((width() - size.width()) / 2, (height() - size.height()) / 2);
    const QColor ink = color.resolved(Appearance::of(this));
    painter.drawPixmap(corner, symbolPixmap(glyph.name, size, ink, devicePixelRatioF()));
}

IconTile::IconTile(const Glyph& shownGlyph, const Background& tileBackground)
    : glyph(shownGlyph), background(tileBackground)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void IconTile::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    paint(painter, rect(), background, Appearance::of(this));
    const QSizeF size = symbolSize(glyph.name, glyph.width);
    const QPointF corner((width() - size.width()) / 2, (height() - size.height()) / 2);
    const auto draw = [&](QPointF place, const QColor& color) {
        painter.drawPixmap(place, symbolPixmap(glyph.name, size, color, devicePixelRatioF()));
    };
    // A soft shadow keeps the white glyph readable on the tile's light end.
    draw(corner + QPointF(0, 1), QColor(0, 0, 0, 46));
    draw(corner, Qt::white);
}

} // namespace reelkeep
