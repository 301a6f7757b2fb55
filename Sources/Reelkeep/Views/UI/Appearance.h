#pragma once

#include <QColor>
#include <QFont>
#include <QPainterPath>
#include <QPalette>
#include <QRectF>

#include <initializer_list>

class QPainter;
class QWidget;

namespace reelkeep {

/// The four accents, the same in light and dark.
namespace accent {
inline const QColor analysisBlue = QColor::fromRgbF(0.10F, 0.52F, 0.94F);
inline const QColor copyGreen = QColor::fromRgbF(0.15F, 0.69F, 0.45F);
inline const QColor reviewOrange = QColor::fromRgbF(0.93F, 0.53F, 0.15F);
inline const QColor darkReviewOrange = QColor::fromRgbF(0.73F, 0.37F, 0.10F);
} // namespace accent

/// What the mouse does to a control.
enum class Touch { none, hovered, pressed };
Touch touchOf(const QWidget& control, bool isDown);

/// The colours of the window, all derived from a palette, so that a change of the desktop's theme is a change of one
/// value. Light or dark is decided from the palette itself: not every desktop reports it.
class Appearance {
public:
    explicit Appearance(const QPalette& palette);
    /// From a widget's current palette.
    static Appearance of(const QWidget* widget);

    bool isDark() const { return dark; }
    bool isHighContrast() const { return highContrast; }
    QColor window() const { return windowColor; }
    QColor listBase() const { return baseColor; }
    QColor focusRing() const;

    QColor primary() const;
    /// As faint as designed, if that is readable (4.5:1) in this palette on everything it is drawn on.
    QColor secondary() const;
    QColor tertiary() const;
    QColor disabledText() const;

    /// Strokes and grey fills: the secondary colour at a further opacity. It is weaker than secondary text, which is
    /// strengthened for contrast.
    QColor secondaryFill(double opacity) const;
    QColor primaryFill(double opacity) const;

    QColor buttonFace(Touch touch) const;
    QColor buttonEdge() const;
    QColor buttonShadow() const;
    QColor disabledFace() const;
    QColor disabledEdge() const;
    /// The face of a prominent button: the tint, darkened until a white label on it reaches 4.5:1.
    static QColor prominentFace(const QColor& tint);
    /// A coloured face, darker the more it is touched.
    static QColor touched(const QColor& face, Touch touch);

    /// Contrast ratio of two opaque colours, 1 to 21.
    static double contrast(const QColor& one, const QColor& other);
    /// A translucent colour as it looks on an opaque one.
    static QColor over(const QColor& color, const QColor& ground);

private:
    QColor ink(double opacity) const;
    /// The faintest ink, at least at `opacity`, that reaches 4.5:1 on all these grounds.
    QColor readableInk(double opacity, std::initializer_list<QColor> grounds) const;

    QColor windowColor;
    QColor inkColor;
    QColor baseColor;
    QColor highlightColor;
    bool dark;
    bool highContrast;
};

/// A colour named by its role; it becomes a real one only when painted, in the palette of that moment.
class Tint {
public:
    static Tint none() { return {Role::fixed, QColor(0, 0, 0, 0)}; }
    static Tint white(double opacity) { return {Role::fixed, QColor::fromRgbF(1.F, 1.F, 1.F, float(opacity))}; }
    static Tint of(const QColor& color) { return {Role::fixed, color}; }
    static Tint of(QColor color, double opacity);
    static Tint primary(double opacity) { return {Role::primary, QColor(), opacity}; }
    static Tint secondary(double opacity) { return {Role::secondary, QColor(), opacity}; }
    static Tint window() { return {Role::window, QColor()}; }
    static Tint listBase() { return {Role::listBase, QColor()}; }

    QColor resolved(const Appearance& appearance) const;

    bool operator==(const Tint&) const = default;

private:
    enum class Role { fixed, primary, secondary, window, listBase };
    Tint(Role namedRole, QColor fixedColor, double roleOpacity = 1.0)
        : role(namedRole), color(fixedColor), opacity(roleOpacity)
    {
    }

    Role role;
    QColor color;
    double opacity;
};

/// What is painted behind a box: a rounded shape with a flat or diagonal fill and a hairline inside its edge.
struct Background {
    Tint fill = Tint::none();
    Tint fillEnd = fill; ///< If it differs from `fill`, the fill runs from the top leading to the bottom corner.
    Tint stroke = Tint::none();
    double radius = 0; ///< Design points; a radius above half the height makes a capsule.
    /// What lies between a gradient and the window. A gradient is painted opaque: blending would round each pixel.
    Tint ground = Tint::none();

    bool operator==(const Background&) const = default;
};
void paint(QPainter& painter, const QRectF& rect, const Background& background, const Appearance& appearance);

struct Padding {
    int leading = 0;
    int top = 0;
    int trailing = 0;
    int bottom = 0;

    static constexpr Padding all(int points) { return {points, points, points, points}; }
    static constexpr Padding symmetric(int horizontal, int vertical)
    {
        return {horizontal, vertical, horizontal, vertical};
    }
    bool operator==(const Padding&) const = default;
};

/// A background and the distance that content keeps from its edges.
struct Plate {
    Background background;
    Padding padding = {};

    bool operator==(const Plate&) const = default;
};

/// A symbol of Symbols.qrc. `frame` is the width kept for it if that is more than its own. Design points.
struct Glyph {
    const char* name;
    double width;
    int frame = 0;
};

/// The outline of a rectangle whose edges are moved to whole pixels of the screen, so that hairlines stay sharp at
/// every scale. `inset` is in device-independent pixels.
QPainterPath roundedOutline(QPainter& painter, const QRectF& rect, double radius, double inset = 0);
/// The width of the thinnest line that covers whole pixels and is at least one design point wide.
double hairline(const QPainter& painter);

/// A type size of the design, at the user's font.
struct TypeStyle {
    double size = 13;
    double lineHeight = 16;
    QFont::Weight weight = QFont::Normal;
    bool monospaced = false;

    /// The user's family (or the fixed-width one), scaled from the design size to the user's size.
    QFont font() const;
    /// In device-independent pixels: the design's, or the font's own if that is taller.
    double height() const;
};

/// How much larger than designed texts are drawn: the user's font size over the design's body size, at least 1.
double textScale();

/// A measure of the design, scaled like the texts it stands beside. Device-independent pixels.
int scaledWithFont(double points);

} // namespace reelkeep
