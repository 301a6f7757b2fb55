#include "UI/SymbolIcon.h"

#include "UI/SymbolWidget.h"

#include <QApplication>
#include <QIconEngine>
#include <QPainter>

#include <algorithm>

namespace reelkeep {

namespace {

QColor ink(QIcon::Mode mode)
{
    const QPalette palette = QApplication::palette();
    const Appearance appearance(palette);
    switch (mode) {
    case QIcon::Disabled:
        return appearance.disabledText();
    case QIcon::Selected:
        return palette.color(QPalette::Active, QPalette::HighlightedText);
    default:
        return appearance.secondary();
    }
}

class SymbolIconEngine : public QIconEngine {
public:
    explicit SymbolIconEngine(const char* symbolName) : name(symbolName) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State) override
    {
        const int side = std::min(rect.width(), rect.height());
        const QSize size(side, side);
        const QPoint corner = rect.center() - QRect({}, size).center();
        painter->drawPixmap(corner, symbolPixmap(name, size, ink(mode), painter->device()->devicePixelRatioF()));
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override
    {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, pixmap.rect(), mode, state);
        return pixmap;
    }
    bool isNull() override { return false; }
    QIconEngine* clone() const override { return new SymbolIconEngine(*this); }

private:
    const char* name;
};

} // namespace

QIcon symbolIcon(const char* name)
{
    return QIcon(new SymbolIconEngine(name));
}

} // namespace reelkeep
