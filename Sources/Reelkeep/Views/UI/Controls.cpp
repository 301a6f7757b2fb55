#include "UI/Controls.h"

#include "UI/FocusRing.h"
#include "UI/RecentMove.h"
#include "UI/SymbolWidget.h"

#include <QFontMetrics>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace reelkeep {

namespace {

constexpr double largeRadius = 8;
constexpr int gap = 8;
constexpr int barSteps = 10'000;

/// Texts of controls break between words; `&` is a letter like any other.
constexpr int wrapped = Qt::TextWordWrap | Qt::AlignCenter;

QSize switchSize()
{
    return {scaledWithFont(38), scaledWithFont(22)};
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

/// The toolkit moves the focus with them from one button to any other. They belong to the window, which scrolls.
bool isArrow(int key)
{
    return key == Qt::Key_Up || key == Qt::Key_Down || key == Qt::Key_Left || key == Qt::Key_Right;
}

void paintSwitch(QPainter& painter, const QRectF& track, bool on, Touch touch, const Appearance& appearance)
{
    const double strength = touch == Touch::none ? 1 : touch == Touch::hovered ? 1.3 : 1.7;
    const Tint off = Tint::of(appearance.primary(), strength * (appearance.isDark() ? 0.18 : 0.14));
    paint(painter, track,
          {.fill = on ? Tint::of(Appearance::touched(accent::analysisBlue, touch)) : off,
           .stroke = appearance.isHighContrast() ? Tint::primary(1) : Tint::none(),
           .radius = track.height() / 2},
          appearance);
    painter.setPen(Qt::NoPen);
    painter.setBrush(on || !appearance.isDark() ? QColor(Qt::white) : QColor(244, 244, 244));
    const double knob = track.height() - 4;
    painter.drawEllipse(QRectF(on ? track.right() - 2 - knob : track.left() + 2, track.top() + 2, knob, knob));
}

} // namespace

Button::Button(const QString& label) : QPushButton(label)
{
    new FocusRing(this, measure::controlRadius);
    setAttribute(Qt::WA_Hover);
    setSizePolicy(huggingPolicy());
    setFocusPolicy(Qt::StrongFocus);
    setAutoDefault(false);
}

void Button::setTint(const QColor& color)
{
    tint = color;
    update();
}

void Button::setLarge(const Glyph& symbol)
{
    glyph = symbol;
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

/// Made anew each time: a font set on the widget would not follow a change of the user's font.
QFont Button::labelFont() const
{
    return TypeStyle{.weight = glyph ? QFont::Bold : QFont::Normal}.font();
}

QMargins Button::margins() const
{
    return glyph ? QMargins(16, 16, 16, 16) : QMargins(12, 6, 12, 6);
}

int Button::leadingWidth() const
{
    return glyph ? scaledWithFont(glyph->width) + gap : 0;
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
    const double label = QFontMetricsF(labelFont()).horizontalAdvance(text());
    const int width = int(std::ceil(label)) + around.left() + around.right() + leadingWidth();
    return {width, heightForWidth(width)};
}

QSize Button::minimumSizeHint() const
{
    const QMargins around = margins();
    return {widestWord(QFontMetrics(labelFont()), text()) + around.left() + around.right() + leadingWidth(),
            measure::controlHeight};
}

int Button::heightForWidth(int width) const
{
    const QMargins around = margins();
    // A line is as high as designed, whatever the font engine rounds it to.
    const double lines = std::round(double(textRect(width).height()) / QFontMetrics(labelFont()).height());
    const double symbol = glyph ? symbolSize(glyph->name, scaledWithFont(glyph->width)).height() : 0;
    const double label = std::max(std::max(1.0, lines) * type::body.height(), symbol);
    return std::max(int(label) + around.top() + around.bottom(), measure::controlHeight);
}

Button::Face Button::face(const Appearance& appearance) const
{
    const double radius = glyph ? largeRadius : measure::controlRadius;
    if (!isEnabled()) {
        return {{.fill = Tint::of(appearance.disabledFace()),
                 .stroke = Tint::of(appearance.disabledEdge()),
                 .radius = radius},
                appearance.disabledText()};
    }
    if (tint) {
        const QColor color = Appearance::prominentFace(*tint);
        return {{.fill = Tint::of(Appearance::touched(color, touchOf(*this, isDown()))), .radius = radius}, Qt::white};
    }
    return {{.fill = Tint::of(appearance.buttonFace(touchOf(*this, isDown()))),
             .stroke = Tint::of(appearance.buttonEdge()),
             .radius = radius},
            appearance.primary()};
}

void Button::changeEvent(QEvent* event)
{
    // The shadow comes or goes outside of the bounds.
    if (event->type() == QEvent::EnabledChange)
        window()->update(QRect(mapTo(window(), rect().bottomLeft()), QSize(width(), 3)));
    QPushButton::changeEvent(event);
}

void Button::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const Appearance appearance = Appearance::of(this);
    const Face shown = face(appearance);
    paint(painter, rect(), shown.background, appearance);
    if (tint && isEnabled()) {
        // Light falls on the upper edge.
        painter.setClipPath(roundedOutline(painter, rect(), shown.background.radius));
        painter.fillRect(QRectF(0, 0, width(), hairline(painter)), QColor::fromRgbF(1.F, 1.F, 1.F, 0.12F));
        painter.setClipping(false);
    }

    const int textWidth = textRect(width()).width();
    const int left = (width() - textWidth - leadingWidth()) / 2;
    if (glyph) {
        const QSizeF size = symbolSize(glyph->name, scaledWithFont(glyph->width));
        painter.drawPixmap(QPointF(left, (height() - size.height()) / 2),
                           symbolPixmap(glyph->name, size, shown.label, devicePixelRatioF()));
    }
    painter.setPen(shown.label);
    painter.setFont(labelFont());
    painter.drawText(QRect(left + leadingWidth(), 0, textWidth + 1, height()), wrapped, text());
}

void Button::mousePressEvent(QMouseEvent* event)
{
    if (!hasJustMoved(*this))
        QPushButton::mousePressEvent(event);
}

void Button::keyPressEvent(QKeyEvent* event)
{
    const bool isEnter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isArrow(event->key()))
        event->ignore();
    else if (hasJustMoved(*this) && (isEnter || event->key() == Qt::Key_Space))
        return;
    // Outside a dialog the toolkit ignores Enter; people expect it to press the focused button.
    else if (!isEnter)
        QPushButton::keyPressEvent(event);
    else if (!event->isAutoRepeat())
        click();
}

Switch::Switch(const QString& label) : QCheckBox(label)
{
    new FocusRing(this, 4);
    setAttribute(Qt::WA_Hover);
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

void Switch::keyPressEvent(QKeyEvent* event)
{
    if (isArrow(event->key()))
        event->ignore();
    else
        QCheckBox::keyPressEvent(event);
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
    paintSwitch(painter, QRectF(words.width() + gap, top, size.width(), size.height()), isChecked(),
                touchOf(*this, isDown()), appearance);
}

Bar::Bar()
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
    constexpr double radius = 3;
    const Tint track = Tint::of(appearance.primary(), appearance.isDark() ? 0.14 : 0.10);
    paint(painter, rect(), {.fill = track, .radius = radius}, appearance);
    QRectF done = rect();
    done.setWidth(done.width() * value() / barSteps);
    if (done.width() < 1)
        return;
    painter.setClipPath(roundedOutline(painter, rect(), radius));
    paint(painter, done, {.fill = Tint::of(accent::analysisBlue), .radius = radius}, appearance);
}

} // namespace reelkeep
