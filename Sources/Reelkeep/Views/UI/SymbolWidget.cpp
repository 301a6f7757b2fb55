#include "UI/SymbolWidget.h"

#include <QFile>
#include <QPainter>
#include <QPixmapCache>
#include <QSvgRenderer>

#include <cmath>
#include <utility>

/// Resources of a static library are not registered by themselves. Outside of any namespace, as the macro demands.
static void registerSymbols()
{
    Q_INIT_RESOURCE(Symbols);
}

namespace reelkeep {

namespace {

QString pathOf(const QString& name)
{
    static const bool registered = (registerSymbols(), true);
    Q_UNUSED(registered)
    return QStringLiteral(":/symbols/") + name;
}

} // namespace

QSizeF symbolSize(const QString& name, double width)
{
    const QSizeF drawn = QSvgRenderer(pathOf(name)).viewBoxF().size();
    return {width, width * drawn.height() / drawn.width()};
}

QPixmap symbolPixmap(const QString& name, QSizeF size, const QColor& color, double devicePixelRatio)
{
    const QSize pixels(int(std::ceil(size.width() * devicePixelRatio)),
                       int(std::ceil(size.height() * devicePixelRatio)));
    const QString key =
        QStringLiteral("%1/%2x%3/%4")
            .arg(name, QString::number(pixels.width()), QString::number(pixels.height()), color.name(QColor::HexArgb));
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

SymbolWidget::SymbolWidget(QString symbolName, double width, const TextColor& tint, QWidget* parent)
    : QWidget(parent), name(std::move(symbolName)), symbolWidth(width), color(tint)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void SymbolWidget::setSymbol(const QString& symbolName)
{
    name = symbolName;
    updateGeometry();
    update();
}

void SymbolWidget::setColor(const TextColor& tint)
{
    color = tint;
    update();
}

void SymbolWidget::setFrameWidth(int width)
{
    frameWidth = width;
    updateGeometry();
}

QSizeF SymbolWidget::drawnSize() const
{
    return symbolSize(name, besideText(symbolWidth));
}

QSize SymbolWidget::sizeHint() const
{
    const QSizeF size = drawnSize();
    return {std::max(besideText(frameWidth), int(std::ceil(size.width()))), int(std::ceil(size.height()))};
}

void SymbolWidget::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QSizeF size = drawnSize();
    const QPointF corner((width() - size.width()) / 2, (height() - size.height()) / 2);
    painter.drawPixmap(corner, symbolPixmap(name, size, color.resolved(Appearance::of(this)), devicePixelRatioF()));
}

IconTile::IconTile(QString symbolName, double width, const Background& ground, QWidget* parent)
    : QWidget(parent), name(std::move(symbolName)), symbolWidth(width), background(ground)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void IconTile::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    paint(painter, rect(), background, Appearance::of(this));
    const QSizeF size = symbolSize(name, symbolWidth);
    const QPointF corner((width() - size.width()) / 2, (height() - size.height()) / 2);
    // A soft shadow keeps the white glyph readable on the tile's light end.
    painter.drawPixmap(corner + QPointF(0, 1), symbolPixmap(name, size, QColor(0, 0, 0, 46), devicePixelRatioF()));
    painter.drawPixmap(corner, symbolPixmap(name, size, Qt::white, devicePixelRatioF()));
}

} // namespace reelkeep
