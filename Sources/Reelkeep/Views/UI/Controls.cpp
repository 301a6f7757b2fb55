#include "UI/Controls.h"

#include "UI/FocusRing.h"
#include "UI/SymbolWidget.h"

#include <QAbstractItemView>
#include <QFontMetrics>
#include <QKeyEvent>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace reelkeep {

namespace {

constexpr int controlHeight = 28;
constexpr int controlRadius = 6;
constexpr int gap = 8;
constexpr int barSteps = 10'000;

/// Texts of controls break between words; `&` is a letter like any other.
constexpr int wrapped = Qt::TextWordWrap | Qt::AlignCenter;

int largeSymbolWidth()
{
    return besideText(17);
}

QSize switchSize()
{
    return {besideText(38), besideText(22)};
}

QSizePolicy huggingPolicy()
{
    QSizePolicy policy(QSizePolicy::Maximum, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    return policy;
}

int widestWord(const QFontMetrics& metrics, const QString& text)
{
    int widest = 0;
    for (const QString& word : text.split(u' '))
        widest = std::max(widest, metrics.horizontalAdvance(word));
    return widest + 2;
}

/// Around the control, inside its own bounds: nothing may cut it off.
void paintFocusRing(QPainter& painter, const QWidget* widget, double radius)
{
    if (!widget->hasFocus())
        return;
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(Appearance::of(widget).focusRing(), 2));
    painter.drawPath(roundedOutline(painter, widget->rect(), radius, 1));
}

} // namespace

Button::Button(const QString& label, QWidget* parent) : QPushButton(label, parent)
{
    setSizePolicy(huggingPolicy());
    setFocusPolicy(Qt::StrongFocus);
    setAutoDefault(false);
}

void Button::setTint(const QColor& color)
{
    tint = color;
    update();
}

void Button::setLarge(const QString& symbol)
{
    largeSymbol = symbol;
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

/// Asked for anew each time, not set on the widget: a font of its own would not hear of a change of the user's.
QFont Button::labelFont() const
{
    return TypeStyle{.weight = largeSymbol.isEmpty() ? QFont::Normal : QFont::Bold}.font();
}

QMargins Button::margins() const
{
    return largeSymbol.isEmpty() ? QMargins(12, 6, 12, 6) : QMargins(16, 16, 16, 16);
}

int Button::leadingWidth() const
{
    return largeSymbol.isEmpty() ? 0 : largeSymbolWidth() + gap;
}

QRect Button::textRect(int width) const
{
    const QMargins around = margins();
    const int room = std::max(1, width - around.left() - around.right() - leadingWidth());
    return QFontMetrics(labelFont()).boundingRect(QRect(0, 0, room, QWIDGETSIZE_MAX), wrapped, text());
}

QSize Button::sizeHint() const
{
    const QMargins around = margins();
    const int width =
        QFontMetrics(labelFont()).horizontalAdvance(text()) + 1 + around.left() + around.right() + leadingWidth();
    return {width, heightForWidth(width)};
}

QSize Button::minimumSizeHint() const
{
    const QMargins around = margins();
    return {widestWord(QFontMetrics(labelFont()), text()) + around.left() + around.right() + leadingWidth(),
            controlHeight};
}

int Button::heightForWidth(int width) const
{
    const QMargins around = margins();
    // One line counts as the design's, whatever the font engine rounds it to.
    const double lines = std::round(double(textRect(width).height()) / QFontMetrics(labelFont()).height());
    const int designed = int(std::max(1.0, lines) * type::body.height()) + around.top() + around.bottom();
    return std::max(designed, controlHeight);
}

void Button::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const Appearance appearance = Appearance::of(this);
    Background ground{.fill = Tint::of(appearance.buttonFace(isDown()), appearance.buttonFace(isDown()).alphaF()),
                      .stroke = Tint::of(appearance.buttonEdge(), appearance.buttonEdge().alphaF()),
                      .radius = largeSymbol.isEmpty() ? controlRadius : 8.0};
    QColor label = appearance.primary();
    if (!isEnabled()) {
        ground.fill = Tint::of(appearance.disabledFace(), appearance.disabledFace().alphaF());
        ground.stroke = Tint::of(appearance.disabledEdge(), appearance.disabledEdge().alphaF());
        label = appearance.disabledText();
    } else if (tint) {
        const QColor face = Appearance::prominentFace(*tint);
        ground.fill = Tint::of(isDown() ? face.darker(115) : face);
        ground.stroke = Tint::none();
        label = Qt::white;
    }
    ground.fillEnd = ground.fill;
    paint(painter, rect(), ground, appearance);

    const int textWidth = textRect(width()).width();
    int left = (width() - textWidth - leadingWidth()) / 2;
    if (!largeSymbol.isEmpty()) {
        const QSizeF size = symbolSize(largeSymbol, largeSymbolWidth());
        painter.drawPixmap(QPointF(left, (height() - size.height()) / 2),
                           symbolPixmap(largeSymbol, size, label, devicePixelRatioF()));
        left += leadingWidth();
    }
    painter.setPen(label);
    painter.setFont(labelFont());
    painter.drawText(QRect(left, 0, textWidth + 1, height()), wrapped, text());
    // On a coloured face the ring would drown; white stands out on all of them.
    if (tint && isEnabled() && hasFocus()) {
        painter.setPen(QPen(Qt::white, 2));
        painter.setBrush(Qt::NoBrush);
        painter.drawPath(roundedOutline(painter, rect(), ground.radius, 3));
    }
    paintFocusRing(painter, this, ground.radius);
}

void Button::keyPressEvent(QKeyEvent* event)
{
    // Outside a dialog the toolkit leaves Enter alone; a person expects it to press what has the focus.
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        click();
    else
        QPushButton::keyPressEvent(event);
}

Switch::Switch(const QString& label, QWidget* parent) : QCheckBox(label, parent)
{
    new FocusRing(this);
    setSizePolicy(huggingPolicy());
    setFocusPolicy(Qt::StrongFocus);
}

QRect Switch::textRect(int width) const
{
    const int room = std::max(1, width - gap - switchSize().width());
    return QFontMetrics(type::body.font()).boundingRect(QRect(0, 0, room, QWIDGETSIZE_MAX), Qt::TextWordWrap, text());
}

QSize Switch::sizeHint() const
{
    const int width = QFontMetrics(type::body.font()).horizontalAdvance(text()) + 1 + gap + switchSize().width();
    return {width, heightForWidth(width)};
}

QSize Switch::minimumSizeHint() const
{
    return {widestWord(QFontMetrics(type::body.font()), text()) + gap + switchSize().width(), switchSize().height()};
}

int Switch::heightForWidth(int width) const
{
    return std::max(switchSize().height(), textRect(width).height());
}

void Switch::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const Appearance appearance = Appearance::of(this);
    const QRect words = textRect(width());
    painter.setPen(appearance.primary());
    painter.setFont(type::body.font());
    painter.drawText(QRect(0, 0, words.width() + 1, height()), Qt::TextWordWrap | Qt::AlignVCenter, text());

    const QSize size = switchSize();
    const int top = (height() - size.height()) / 2; // on a whole pixel
    const QRectF track(words.width() + gap, top, size.width(), size.height());
    const bool on = isChecked();
    const Tint off = Tint::of(appearance.primary(), appearance.isDark() ? 0.18 : 0.14);
    const Tint fill = on ? Tint::of(accent::analysisBlue) : off;
    paint(painter, track,
          {.fill = fill,
           .stroke = appearance.isHighContrast() ? Tint::primary(1) : Tint::none(),
           .radius = size.height() / 2.0},
          appearance);
    painter.setPen(Qt::NoPen);
    painter.setBrush(on || !appearance.isDark() ? QColor(Qt::white) : QColor(244, 244, 244));
    const double knob = size.height() - 4;
    painter.drawEllipse(QRectF(on ? track.right() - 2 - knob : track.left() + 2, track.top() + 2, knob, knob));
}

PopUp::PopUp(QWidget* parent) : QComboBox(parent)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setFocusPolicy(Qt::StrongFocus);
    // A folder's name may be wider than any window.
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    view()->setTextElideMode(Qt::ElideMiddle);
}

QSize PopUp::sizeHint() const
{
    const QFontMetrics metrics(type::body.font());
    int widest = 0;
    for (int index = 0; index < count(); ++index)
        widest = std::max(widest, metrics.horizontalAdvance(itemText(index)));
    return {widest + besideText(40), std::max(controlHeight, int(type::body.height()) + 12)};
}

QSize PopUp::minimumSizeHint() const
{
    return {80, sizeHint().height()};
}

int PopUp::readableWidth() const
{
    // Longer names are rather cut in their middle than make the label before them wrap.
    return std::min(sizeHint().width(), besideText(160));
}

void PopUp::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const Appearance appearance = Appearance::of(this);
    const Tint face = Tint::of(appearance.buttonFace(false), appearance.buttonFace(false).alphaF());
    paint(painter, rect(),
          {.fill = face,
           .stroke = Tint::of(appearance.buttonEdge(), appearance.buttonEdge().alphaF()),
           .radius = controlRadius},
          appearance);
    painter.setPen(appearance.primary());
    painter.setFont(type::body.font());
    const double scale = textScale();
    const QRect words = rect().adjusted(10, 0, -besideText(24), 0);
    painter.drawText(words, Qt::AlignVCenter | Qt::TextSingleLine,
                     painter.fontMetrics().elidedText(currentText(), Qt::ElideMiddle, words.width()));
    painter.save();
    painter.translate(width() - 11.5 * scale, height() / 2.0);
    painter.scale(scale, scale);
    painter.setPen(QPen(appearance.primary(), 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    for (const double side : {-1.0, 1.0})
        painter.drawPolyline(QPolygonF({{-3, side * 2}, {0, side * 5}, {3, side * 2}}));
    painter.restore();
    paintFocusRing(painter, this, controlRadius);
}

void PopUp::wheelEvent(QWheelEvent* event)
{
    // Scrolling past must never change where footage is copied to.
    event->ignore();
}

Bar::Bar(QWidget* parent) : QProgressBar(parent)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setTextVisible(false);
    setRange(0, barSteps);
}

void Bar::setFraction(double fraction)
{
    setValue(int(std::lround(std::clamp(fraction, 0.0, 1.0) * barSteps)));
}

void Bar::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const Appearance appearance = Appearance::of(this);
    const Tint track = Tint::of(appearance.primary(), appearance.isDark() ? 0.14 : 0.10);
    paint(painter, rect(), {.fill = track, .radius = 3}, appearance);
    QRectF done = rect();
    done.setWidth(done.width() * value() / barSteps);
    if (done.width() < 1)
        return;
    painter.setClipPath(roundedOutline(painter, rect(), 3));
    const Tint filled = Tint::of(accent::analysisBlue);
    paint(painter, done, {.fill = filled, .radius = 3}, appearance);
}

} // namespace reelkeep
