#pragma once

#include "UI/Appearance.h"

/// The measures of the design by name. Sections use these names and hold no such number themselves.
namespace reelkeep {

namespace type {
inline constexpr TypeStyle body{};
inline constexpr TypeStyle headline{.weight = QFont::DemiBold};
inline constexpr TypeStyle title3{.size = 15, .lineHeight = 20, .weight = QFont::DemiBold};
inline constexpr TypeStyle caption{.size = 10, .lineHeight = 13};
inline constexpr TypeStyle monospacedCaption{.size = 10, .lineHeight = 13, .monospaced = true};
inline constexpr TypeStyle windowTitle{.size = 28, .lineHeight = 34, .weight = QFont::Bold};
inline constexpr TypeStyle pillSubtitle{.size = 11, .lineHeight = 14, .weight = QFont::DemiBold};
inline constexpr TypeStyle label{.size = 12, .lineHeight = 15, .weight = QFont::Bold}; ///< Steps and badges.
inline constexpr TypeStyle tag{.size = 11, .lineHeight = 14, .weight = QFont::Bold};
inline constexpr TypeStyle folderName{.size = 18, .lineHeight = 22, .weight = QFont::DemiBold};
inline constexpr TypeStyle destinationName{.size = 20, .lineHeight = 24, .weight = QFont::DemiBold};
inline constexpr TypeStyle reviewCount{.size = 28, .lineHeight = 34, .weight = QFont::DemiBold};
inline constexpr TypeStyle pendingCount{.size = 26, .lineHeight = 31, .weight = QFont::Bold};
inline constexpr TypeStyle summaryCount{.size = 30, .lineHeight = 36, .weight = QFont::DemiBold};
} // namespace type

namespace measure {
inline constexpr int contentWidth = 1100;
inline constexpr Padding windowPadding = Padding::all(24);
inline constexpr Padding footerPadding{.top = 6};
inline constexpr int controlHeight = 28;
inline constexpr double controlRadius = 6; ///< Of buttons and of the chooser.
inline constexpr int pillNumber = 28;
inline constexpr int badgeDot = 8;
inline constexpr int summaryCardWidth = 220;
inline constexpr int listHeight = 220;
inline constexpr Padding rowPadding = Padding::symmetric(8, 8);
inline constexpr int rowRadius = 6; ///< Of the ring around the current row.
inline constexpr int emptyStateTextWidth = 520;
} // namespace measure

/// The plates that elements stand on. Those that show a state or an accent are functions of it.
namespace plate {

inline const double capsule = 99;

inline const Plate pill{{.fill = Tint::white(0.04), .stroke = Tint::secondary(0.15), .radius = 12},
                        Padding::symmetric(14, 12)};
inline const Plate pillNumber{{.fill = Tint::primary(0.08), .radius = capsule}};
inline const Plate card{
    {.fill = Tint::white(0.05), .fillEnd = Tint::white(0.025), .stroke = Tint::secondary(0.15), .radius = 18},
    Padding::all(18)};
inline const Plate reviewCount{
    {.fill = Tint::of(accent::reviewOrange, 0.08), .stroke = Tint::of(accent::reviewOrange, 0.16), .radius = 12},
    Padding::all(14)};
inline const Plate reviewRow{{.fill = Tint::white(0.04), .stroke = Tint::secondary(0.12), .radius = 12},
                             Padding::all(12)};
inline const Plate copyTag{{.fill = Tint::of(accent::copyGreen, 0.14), .radius = capsule}, Padding::symmetric(8, 5)};
inline const Plate analysisPanel{{.fill = Tint::white(0.04), .stroke = Tint::secondary(0.15), .radius = 18},
                                 Padding::all(18)};
inline const Plate copyPanel{{.fill = Tint::of(accent::copyGreen, 0.10),
                              .fillEnd = Tint::white(0.03),
                              .stroke = Tint::of(accent::copyGreen, 0.22),
                              .radius = 18},
                             Padding::all(18)};
inline const Plate destination{
    {.fill = Tint::of(accent::copyGreen, 0.10), .stroke = Tint::of(accent::copyGreen, 0.18), .radius = 12},
    Padding::all(14)};
inline const Plate summaryCard{{.fill = Tint::window(), .stroke = Tint::secondary(0.15), .radius = 14},
                               Padding::all(16)};
inline const Plate list{{.fill = Tint::listBase(), .stroke = Tint::secondary(0.15), .radius = 8}};
inline const Plate listSeparator{{.fill = Tint::primary(0.08)}};
inline const Plate emptyState{{.fill = Tint::white(0.04), .stroke = Tint::secondary(0.12), .radius = 18},
                              Padding::all(24)};
inline const Plate reviewTile{
    {.fill = Tint::of(accent::reviewOrange), .fillEnd = Tint::of(accent::darkReviewOrange), .radius = 18}};

inline Plate tile(const QColor& accent)
{
    return {{.fill = Tint::of(accent, 0.95),
             .fillEnd = Tint::of(accent, 0.45),
             .radius = 18,
             .ground = card.background.fill}};
}

inline Plate pathBox(const QColor& accent)
{
    return {{.fill = Tint::of(accent, 0.08), .stroke = Tint::of(accent, 0.18), .radius = 12}, Padding::all(14)};
}

inline Plate badge(bool isSelected, const QColor& accent)
{
    return {{.fill = isSelected ? Tint::of(accent, 0.12) : Tint::secondary(0.12), .radius = capsule},
            Padding::symmetric(10, 6)};
}

inline Plate badgeDot(bool isSelected, const QColor& accent)
{
    return {{.fill = isSelected ? Tint::of(accent) : Tint::secondary(0.35), .radius = capsule}};
}

} // namespace plate

/// The drawings, each at the size of its place.
namespace glyph {
inline constexpr Glyph cameraTile{"camera", 33};
inline constexpr Glyph destinationTile{"drive", 32};
inline constexpr Glyph reviewTile{"stack", 29};
inline constexpr Glyph reviewFolder{"drive", 18, 24};
inline constexpr Glyph copyDestination{"drive-check", 20, 24};
inline constexpr Glyph analysis{"magnify", 26};
inline constexpr Glyph copy{"down", 26};
inline constexpr Glyph copyButton{"down", 17};
inline constexpr Glyph allSaved{"check", 52};
} // namespace glyph

} // namespace reelkeep
