#include "ContentView.h"

namespace reelkeep {

View ContentView::actionArea()
{
    return ViewThatFits({.spacing = 14}, {.spacing = 14}, analysisPanel(), copyPanel());
}

View ContentView::analysisPanel()
{
    return VStack(
        {.spacing = 14, .plate = plate::analysisPanel, .fillsWidth = true, .name = tr("Analizar primero")},
        panelHeader(
            glyph::analysis,
            accent::analysisBlue,
            tr("Analizar primero"),
            tr("Comprueba que videos de la camara ya existen antes de copiar nada.")
        ),
        // It governs the copy, but stands here so that people decide on it before the first action.
        Toggle(
            tr("Mantener estructura de carpetas"),
            [this] { return session.preserveFolderStructure(); },
            [this](bool preserve) { session.setPreserveFolderStructure(preserve); }
        ),
        ProminentButton(tr("Analizar ubicaciones"), accent::analysisBlue, [this] { session.scanFolders(); })
            .enabled([this] { return session.canScan(); })
    );
}

View ContentView::panelHeader(const Glyph& glyph, const QColor& accent, const QString& title, const QString& subtitle)
{
    return HStack(
        {.alignment = Qt::AlignCenter},
        Symbol(glyph).color(accent),
        VStack({.spacing = 4}, Text(title).title3(), Text(subtitle).secondary())
    );
}

View ContentView::copyPanel()
{
    const auto count = [this] { return session.missingVideos().size(); };
    const auto pending = [count] {
        return count() == 1 ? tr("video pendiente para copiar") : tr("videos pendientes para copiar");
    };
    const auto copy = [count] {
        return count() > 0 ? tr("Copiar faltantes al HD seleccionado") : tr("No hay nada pendiente");
    };
    return VStack(
        {.spacing = 14, .plate = plate::copyPanel, .fillsWidth = true, .name = tr("Copiar lo que falta")},
        panelHeader(
            glyph::copy,
            accent::copyGreen,
            tr("Copiar lo que falta"),
            tr("Elige el HD activo de copia y lanza la transferencia de los videos pendientes.")
        ),
        destinationChooser(),
        destinationBox(),
        HStack(
            {.alignment = Qt::AlignCenter},
            Text([count] { return QString::number(count()); }).style(type::pendingCount),
            Text(pending).secondary(),
            Spacer()
        ),
        LargeButton(copy, glyph::copyButton, accent::copyGreen, [this] { session.copyMissingVideos(); })
            .enabled([this] { return session.canCopy(); })
    );
}

View ContentView::destinationChooser()
{
    const auto entries = [this] {
        std::vector<PickerEntry> choices;
        for (const Location& folder : session.effectiveDestinationReviewFolders())
            choices.push_back({folder.path(), displayText(folder.name()), displayText(folder.path())});
        return choices;
    };
    const auto choose = [this](const std::string& path) {
        for (const Location& folder : session.effectiveDestinationReviewFolders()) {
            if (folder.path() == path)
                return session.setCopyDestinationFolder(folder);
        }
    };
    // The label appears twice on purpose: as the heading and beside the pop-up.
    return VStack(
               {.spacing = 8},
               Text(tr("HD de copia activo")).headline().heading(),
               Picker(
                   tr("HD de copia activo"),
                   entries,
                   [this] { return session.copyDestinationSelectionPath(); },
                   choose
               )
    )
        .visible([this] { return session.effectiveDestinationReviewFolders().size() >= 2; });
}

View ContentView::destinationBox()
{
    const auto path = [this] {
        const auto& folder = session.copyDestinationFolder();
        return folder ? displayText(folder->path()) : tr("Selecciona un destino de copia.");
    };
    return VStack(
        {.spacing = 6, .plate = plate::destination, .fillsWidth = true},
        Text([this] { return session.activeCopyDestinationName(); }).style(type::destinationName),
        Text(path).monospacedCaption().secondary().lineLimit(3).selectable()
    );
}

} // namespace reelkeep
