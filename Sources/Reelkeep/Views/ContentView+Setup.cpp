#include "ContentView.h"

#include <functional>

namespace reelkeep {

View ContentView::folderSelectors()
{
    return VStack(
        {.spacing = 14},
        setupOverview(),
        selectionCard(
            {.step = tr("Paso 1"),
             .title = tr("Camara o tarjeta"),
             .subtitle = tr("Aqui eliges el material original que quieres comprobar."),
             .path = [this] { return session.sourceFolder(); },
             .buttonTitle = tr("Elegir camara"),
             .glyph = glyph::cameraTile,
             .accent = accent::analysisBlue,
             .action = [this] { session.chooseSourceFolder(); }}
        ),
        selectionCard(
            {.step = tr("Paso 2"),
             .title = tr("Destino de copia"),
             .subtitle = tr("Aqui se guardaran los videos que todavia no esten archivados."),
             .path = [this] { return session.copyDestinationFolder(); },
             .buttonTitle = tr("Elegir HD de copia"),
             .glyph = glyph::destinationTile,
             .accent = accent::copyGreen,
             .action = [this] { session.chooseCopyDestinationFolder(); }}
        ),
        destinationReviewFoldersSection()
    );
}

View ContentView::setupOverview()
{
    return ViewThatFits(
        {.spacing = 12, .alignment = Qt::AlignCenter},
        {.spacing = 10, .alignment = Qt::AlignCenter},
        setupPill({.number = tr("1"), .title = tr("Camara"), .subtitle = tr("origen")}),
        setupPill({.number = tr("2"), .title = tr("HD principal"), .subtitle = tr("copia")}),
        setupPill({.number = tr("3"), .title = tr("Otros discos"), .subtitle = tr("revision")})
    );
}

View ContentView::setupPill(const SetupPill& pill)
{
    return HStack(
        {.spacing = 10,
         .alignment = Qt::AlignCenter,
         .plate = plate::pill,
         .name = QStringLiteral("%1, %2, %3").arg(pill.number, pill.title, pill.subtitle)},
        Circle(measure::pillNumber, plate::pillNumber, {Text(pill.number).headline()}),
        VStack(
            {.spacing = 2},
            Text(pill.title).headline(),
            Text(pill.subtitle.toUpper()).style(type::pillSubtitle).secondary()
        )
    );
}

View ContentView::selectionCard(const SelectionCard& card)
{
    const auto isChosen = [path = card.path] { return path().has_value(); };
    const auto state = [isChosen] {
        return isChosen() ? tr("Ubicacion lista para analizar.") : tr("Aun no has elegido esta ubicacion.");
    };
    return HStack(
        {.spacing = 16, .plate = plate::card, .name = QStringLiteral("%1, %2").arg(card.step, card.title)},
        Tile(card.glyph, plate::tile(card.accent)),
        VStack(
            {.spacing = 12},
            HStack(
                {.alignment = Qt::AlignCenter, .staysReadable = true},
                VStack(
                    {.spacing = 6},
                    Text(card.step).style(type::label).color(card.accent),
                    Text(card.title).title3(),
                    Text(card.subtitle).secondary()
                ),
                Spacer(),
                selectionStateBadge(isChosen, card.accent)
            ),
            pathBox(card.path, card.accent),
            HStack(
                {.alignment = Qt::AlignCenter, .staysReadable = true},
                Text(state).caption().secondary(),
                Spacer(),
                ProminentButton(card.buttonTitle, card.accent, card.action)
            )
        )
    );
}

View ContentView::pathBox(const FolderSource& path, const QColor& accent)
{
    const auto isChosen = [path] { return path().has_value(); };
    const auto name = [path] {
        const auto folder = path();
        const bool hasName = folder && !folder->lastPathComponent().empty();
        return hasName ? displayText(folder->lastPathComponent()) : tr("Sin seleccionar");
    };
    const auto line = [path] {
        const auto folder = path();
        return folder ? displayText(folder->path()) : tr("Selecciona una carpeta para continuar.");
    };
    return VStack(
        {.plate = plate::pathBox(accent), .fillsWidth = true},
        Text(name).style(type::folderName),
        Text(line).monospacedCaption().secondary().lineLimit(3).selectable(isChosen)
    );
}

View ContentView::selectionStateBadge(const Condition& isSelected, const QColor& accent)
{
    return HStack(
        {.alignment = Qt::AlignCenter, .plate = [isSelected, accent] { return plate::badge(isSelected(), accent); }},
        Circle(measure::badgeDot, [isSelected, accent] { return plate::badgeDot(isSelected(), accent); }),
        Text([isSelected] { return isSelected() ? tr("Listo") : tr("Pendiente"); })
            .style(type::label)
            .colorWhen(isSelected, accent)
    );
}

View ContentView::destinationReviewFoldersSection()
{
    const auto isReviewed = [this] { return !session.effectiveDestinationReviewFolders().empty(); };
    return HStack(
        {.spacing = 16,
         .plate = plate::card,
         .name = QStringLiteral("%1, %2").arg(tr("Paso 3"), tr("Ubicaciones a revisar"))},
        Tile(glyph::reviewTile, plate::reviewTile),
        VStack(
            {.spacing = 12},
            HStack(
                {.staysReadable = true},
                VStack(
                    {},
                    Text(tr("Paso 3")).style(type::label).color(accent::reviewOrange),
                    Text(tr("Ubicaciones a revisar")).title3(),
                    Text(tr("Busca los videos de la camara en uno o varios HDs o carpetas. El HD de copia se incluye "
                            "tambien en la revision."))
                        .secondary()
                ),
                Spacer(),
                selectionStateBadge(isReviewed, accent::reviewOrange)
            ),
            HStack(
                {.spacing = 8, .alignment = Qt::AlignCenter, .staysReadable = true},
                PushButton(tr("Usar solo HD de copia"), [this] { session.useOnlyCopyDestinationForReview(); })
                    .enabled([this] { return session.copyDestinationFolder().has_value(); }),
                ProminentButton(
                    tr("Anadir ubicaciones"),
                    accent::reviewOrange,
                    [this] { session.addDestinationReviewFolders(); }
                )
            ),
            reviewSummaryPanel(),
            ForEach<Location>(
                8,
                [this] { return session.effectiveDestinationReviewFolders(); },
                [this](const Location& folder) { return reviewRow(folder); }
            ).visible(isReviewed)
        )
    );
}

View ContentView::reviewSummaryPanel()
{
    const auto count = [this] { return session.effectiveDestinationReviewFolders().size(); };
    const auto counted = [count] { return count() == 1 ? tr("ubicacion revisada") : tr("ubicaciones revisadas"); };
    return HStack(
        {.alignment = Qt::AlignCenter, .staysReadable = true, .plate = plate::reviewCount},
        VStack(
            {.spacing = 4},
            Text([count] { return QString::number(count()); }).style(type::reviewCount),
            Text(counted).secondary()
        ),
        Spacer(),
        Text([this] { return session.destinationReviewSummary(); })
            .monospacedCaption()
            .secondary()
            .trailing()
            .selectable()
    );
}

View ContentView::reviewRow(const Location& folder)
{
    const QString name = displayText(folder.name());
    const QString path = displayText(folder.path());
    const auto isCopyDestination = [this, folder] { return folder == session.copyDestinationFolder(); };
    const auto spoken = [isCopyDestination, named = QStringLiteral("%1, %2").arg(name, path)] {
        return isCopyDestination() ? named + QStringLiteral(", ") + tr("Copia") : named;
    };
    return HStack(
        {.spacing = 12, .alignment = Qt::AlignCenter, .plate = plate::reviewRow, .name = spoken},
        Symbol(glyph::copyDestination).color(accent::copyGreen).visible(isCopyDestination),
        Symbol(glyph::reviewFolder).secondary().visible(std::not_fn(isCopyDestination)),
        HStack(
            {.spacing = 12, .alignment = Qt::AlignCenter, .staysReadable = true},
            VStack({.spacing = 3}, Text(name).headline(), Text(path).monospacedCaption().secondary().selectable()),
            HStack(
                {.spacing = 12, .alignment = Qt::AlignCenter},
                HStack({.plate = plate::copyTag}, Text(tr("Copia")).style(type::tag).color(accent::copyGreen))
                    .visible(isCopyDestination),
                PushButton(tr("Quitar"), [this, folder] { session.removeDestinationReviewFolder(folder); })
                    .enabled(std::not_fn(isCopyDestination))
                    .accessibleDescription(path)
            )
        )
    );
}

} // namespace reelkeep
