#include "UI/Appearance.h"

#include <QApplication>
#include <QFontDatabase>
#include <QFontInfo>
#include <QFontMetricsF>
#include <QLinearGradient>
#include <QPainter>
#include <QWidget>

#include <algorithm>
#include <cmath>

namespace reelkeep {

namespace {

constexpr double bodySize = 13;

double luminance(const QColor& color)
{
    const auto linear = [](double channel) {
        return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

QColor withOpacity(QColor color, double opacity)
{
    color.setAlphaF(float(opacity));
    return color;
}

/// From corner to corner, with the other two corners half-way whatever the shape.
QLinearGradient gradient(const QRectF& rect, const Background& background, const Appearance& appearance)
{
    const QPointF direction(rect.height(), rect.width());
    const QPointF toEnd = direction * (rect.width() * rect.height() / QPointF::dotProduct(direction, direction));
    const QColor ground = Appearance::over(background.ground.resolved(appearance), appearance.window());
    QLinearGradient fill(rect.center() - toEnd, rect.center() + toEnd);
    fill.setColorAt(0, Appearance::over(background.fill.resolved(appearance), ground));
    fill.setColorAt(1, Appearance::over(background.fillEnd.resolved(appearance), ground));
    return fill;
}

} // namespace

Touch touchOf(const QWidget& control, bool isDown)
{
    return isDown ? Touch::pressed : control.underMouse() ? Touch::hovered : Touch::none;
}

Appearance::Appearance(const QPalette& palette)
    : windowColor(palette.color(QPalette::Active, QPalette::Window)),
      inkColor(palette.color(QPalette::Active, QPalette::WindowText)),
      baseColor(palette.color(QPalette::Active, QPalette::Base)),
      highlightColor(palette.color(QPalette::Active, QPalette::Highlight)),
      dark(luminance(windowColor) < luminance(inkColor)),
      // Only palettes made for high contrast put pure black and pure white on each other.
      highContrast(contrast(windowColor, inkColor) > 20.5)
{
}

Appearance Appearance::of(const QWidget* widget)
{
    return Appearance(widget->palette());
}

QColor Appearance::ink(double opacity) const
{
    return withOpacity(inkColor, opacity);
}

QColor Appearance::primary() const
{
    return ink(highContrast ? 1.0 : 0.87);
}

QColor Appearance::secondary() const
{
    // The strongest tint below a text comes from two plates on top of each other.
    const auto tinted = [this](const QColor& accent) { return over(withOpacity(accent, 0.19), windowColor); };
    return readableInk(highContrast ? 0.9 : 0.58,
                       {windowColor, baseColor, tinted(accent::copyGreen), tinted(accent::reviewOrange)});
}

QColor Appearance::tertiary() const
{
    return readableInk(highContrast ? 0.9 : dark ? 0.50 : 0.56, {windowColor});
}

QColor Appearance::readableInk(double opacity, std::initializer_list<QColor> grounds) const
{
    const auto isReadable = [&](double tried) {
        return std::all_of(grounds.begin(), grounds.end(),
                           [&](const QColor& ground) { return contrast(over(ink(tried), ground), ground) >= 4.55; });
    };
    while (opacity < 1 && !isReadable(opacity))
        opacity += 0.02;
    return ink(std::min(opacity, 1.0));
}

QColor Appearance::disabledText() const
{
    return ink(highContrast ? 0.6 : 0.32);
}

QColor Appearance::secondaryFill(double opacity) const
{
    return ink(highContrast ? std::min(1.0, 4 * opacity) : 0.52 * opacity);
}

QColor Appearance::primaryFill(double opacity) const
{
    return ink(0.87 * opacity);
}

QColor Appearance::buttonFace(Touch touch) const
{
    if (dark)
        return QColor::fromRgbF(1.F, 1.F, 1.F, touch == Touch::none ? 0.13F : touch == Touch::hovered ? 0.18F : 0.07F);
    return touched(Qt::white, touch);
}

QColor Appearance::touched(const QColor& face, Touch touch)
{
    return touch == Touch::none ? face : face.darker(touch == Touch::hovered ? 106 : 115);
}

QColor Appearance::buttonEdge() const
{
    return ink(highContrast ? 0.8 : dark ? 0.08 : 0.13);
}

QColor Appearance::buttonShadow() const
{
    return withOpacity(Qt::black, dark || highContrast ? 0 : 0.055);
}

QColor Appearance::disabledFace() const
{
    return ink(0.07);
}

QColor Appearance::disabledEdge() const
{
    return ink(highContrast ? 0.5 : 0.04);
}

QColor Appearance::focusRing() const
{
    // The desktop's own highlight, unless it hardly shows on the window.
    return contrast(highlightColor, windowColor) >= 3.0 ? highlightColor : primary();
}

QColor Appearance::prominentFace(const QColor& tint)
{
    const QColor white(Qt::white);
    for (int percent = 100; percent > 0; --percent) {
        const double kept = percent / 100.0;
        const QColor face =
            QColor::fromRgbF(float(tint.redF() * kept), float(tint.greenF() * kept), float(tint.blueF() * kept));
        if (contrast(face, white) >= 4.65)
            return face;
    }
    return Qt::black;
}

double Appearance::contrast(const QColor& one, const QColor& other)
{
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

QColor Appearance::over(const QColor& color, const QColor& ground)
{
    const float a = color.alphaF();
    const auto mixed = [a](float top, float below) { return top * a + below * (1 - a); };
    return QColor::fromRgbF(mixed(color.redF(), ground.redF()), mixed(color.greenF(), ground.greenF()),
                            mixed(color.blueF(), ground.blueF()));
}

Tint Tint::of(QColor color, double opacity)
{
    return {Role::fixed, withOpacity(color, opacity)};
}

QColor Tint::resolved(const Appearance& appearance) const
{
    switch (role) {
    case Role::fixed:
        return color;
    case Role::primary:
        return appearance.primaryFill(opacity);
    case Role::secondary:
        return appearance.secondaryFill(opacity);
    case Role::window:
        return appearance.window();
    case Role::listBase:
        return appearance.listBase();
    }
    return color;
}

double hairline(const QPainter& painter)
{
    const double ratio = painter.device()->devicePixelRatioF();
    return std::max(1.0, std::floor(ratio)) / ratio;
}

QPainterPath roundedOutline(QPainter& painter, const QRectF& rect, double radius, double inset)
{
    const QTransform toDevice = painter.deviceTransform();
    const QRectF onScreen = toDevice.mapRect(rect);
    const QRectF whole(QPointF(std::round(onScreen.left()), std::round(onScreen.top())),
                       QPointF(std::round(onScreen.right()), std::round(onScreen.bottom())));
    const QRectF snapped = toDevice.inverted().mapRect(whole).adjusted(inset, inset, -inset, -inset);
    const double fitting = std::min({radius - inset, snapped.height() / 2, snapped.width() / 2});
    QPainterPath path;
    path.addRoundedRect(snapped, fitting, fitting);
    return path;
}

void paint(QPainter& painter, const QRectF& rect, const Background& background, const Appearance& appearance)
{
    painter.setRenderHint(QPainter::Antialiasing);
    const QBrush fill = background.fillEnd == background.fill ? QBrush(background.fill.resolved(appearance))
                                                              : QBrush(gradient(rect, background, appearance));
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    painter.drawPath(roundedOutline(painter, rect, background.radius));

    const QColor stroke = background.stroke.resolved(appearance);
    if (stroke.alpha() == 0)
        return;
    const double width = hairline(painter);
    painter.setPen(QPen(stroke, width));
    painter.setBrush(Qt::NoBrush);
    painter.drawPath(roundedOutline(painter, rect, background.radius, width / 2));
}

double textScale()
{
    return std::max(1.0, QFontInfo(QApplication::font()).pixelSize() / bodySize);
}

int scaledWithFont(double points)
{
    return int(std::lround(points * textScale()));
}

QFont TypeStyle::font() const
{
    QFont font = monospaced ? QFontDatabase::systemFont(QFontDatabase::FixedFont) : QApplication::font();
    font.setPixelSize(int(std::lround(size * textScale())));
    font.setWeight(weight);
    return font;
}

double TypeStyle::height() const
{
    const double designed = std::round(lineHeight * textScale());
    const double natural = std::floor(QFontMetricsF(font()).height());
    // Font engines round every family up a little; only a family that is really taller counts.
    return natural > designed * 1.08 ? natural : designed;
}

} // namespace reelkeep
