#include "UI/PopUpList.h"

#include "UI/Design.h"

#include <QComboBox>
#include <QPainter>
#include <QScreen>
#include <QStyledItemDelegate>

#include <algorithm>

namespace reelkeep {

namespace {

constexpr int lineHeight = 28;
constexpr int edge = 12;
constexpr int mark = 24; ///< The room for it, scaled with the font.

class PopUpLine : public QStyledItemDelegate {
public:
    PopUpLine(const QComboBox* shownPopUp, QObject* parent) : QStyledItemDelegate(parent), popUp(shownPopUp) {}

    QSize sizeHint(const QStyleOptionViewItem&, const QModelIndex& index) const override
    {
        const int text = QFontMetrics(type::body.font()).horizontalAdvance(index.data().toString());
        return {text + 1 + scaledWithFont(mark) + 2 * edge, std::max(lineHeight, int(type::body.height()) + 12)};
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        painter->save();
        const Appearance appearance = Appearance::of(option.widget);
        painter->fillRect(option.rect, appearance.listBase());
        const bool isPointedAt = option.state.testFlag(QStyle::State_Selected);
        if (isPointedAt) {
            reelkeep::paint(*painter, option.rect.adjusted(4, 2, -4, -2),
                            {.fill = Tint::of(Appearance::prominentFace(accent::analysisBlue)), .radius = 6},
                            appearance);
        }
        const QColor ink = isPointedAt ? QColor(Qt::white) : appearance.primary();
        painter->setPen(ink);
        painter->setFont(type::body.font());
        const QRect words = option.rect.adjusted(edge + scaledWithFont(mark), 0, -edge, 0);
        const QString text = painter->fontMetrics().elidedText(index.data().toString(), Qt::ElideMiddle, words.width());
        painter->drawText(words, Qt::AlignVCenter | Qt::TextSingleLine, text);
        if (index.row() == popUp->currentIndex())
            paintMark(*painter, QPointF(option.rect.left() + edge, option.rect.center().y()), ink);
        painter->restore();
    }

private:
    static void paintMark(QPainter& painter, QPointF leading, const QColor& ink)
    {
        painter.setRenderHint(QPainter::Antialiasing);
        painter.translate(leading);
        painter.scale(textScale(), textScale());
        painter.setPen(QPen(ink, 1.8, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.drawPolyline(QPolygonF({{1, 1}, {5, 5}, {12, -4}}));
    }

    const QComboBox* popUp;
};

} // namespace

PopUpList::PopUpList(const QComboBox* shownPopUp) : popUp(shownPopUp)
{
    setFrameShape(NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setItemDelegate(new PopUpLine(popUp, this));
}

/// The toolkit makes the list as wide as its longest choice. It is not on the screen yet.
void PopUpList::showEvent(QShowEvent* event)
{
    const QRect screen = popUp->screen()->availableGeometry();
    const int width = std::min(screen.width(), std::max(popUp->width(), scaledWithFont(240)));
    const int left = std::min(popUp->mapToGlobal(QPoint()).x(), screen.right() + 1 - width);
    window()->setGeometry(std::max(left, screen.left()), window()->y(), width, window()->height());
    QListView::showEvent(event);
}

void PopUpList::paintEvent(QPaintEvent* event)
{
    QListView::paintEvent(event);
    QPainter painter(viewport());
    paint(painter, viewport()->rect(), {.stroke = Tint::secondary(0.35)}, Appearance::of(this));
}

} // namespace reelkeep
