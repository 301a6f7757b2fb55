#include "ContentView.h"

namespace reelkeep {

View ContentView::actionArea()
{
    return ViewThatFits({.spacing = 14}, {.spacing = 14}, {analysisPanel(), copyPanel()});
}

View ContentView::panelHeader(const char* symbol, const QColor& accent, const QString& title, const QString& subtitle)
{
    return HStack({.alignment = Qt::AlignCenter},
                  {
                      Symbol(symbol, 26, {TextColor::Level::accent, accent}),
                      VStack({.spacing = 4}, {Text(title).title3(), Text(subtitle).secondary()}),
                  });
}

View ContentView::analysisPanel()
{
    return VStack(
               {.spacing = 14,
                .padding = Padding::all(18),
                .background = Background{.fill = Tint::white(0.04), .stroke = Tint::secondary(0.15), .radius = 18},
                .fillsWidth = true},
               {
                   panelHeader("magnify", accent::analysisBlue, tr("Analizar primero"),
                               tr("Comprueba que videos de la camara ya existen antes de copiar nada.")),
                   // It governs the copy, and stands here so that it is decided before the first action.
                   Toggle(
                       tr("Mantener estructura de carpetas"), [this] { return session.preserveFolderStructure(); },
                       [this](bool preserve) { session.setPreserveFolderStructure(preserve); }),
                   ProminentButton(tr("Analizar ubicaciones"), accent::analysisBlue, [this] { session.scanFolders(); })
                       .enabled([this] { return session.canScan(); }),
               })
        .accessibleName(tr("Analizar primero"));
}

View ContentView::copyPanel()
{
    const auto count = [this] { return session.missingVideos().size(); };
    const auto path = [this]() -> QString {
        const auto& folder = session.copyDestinationFolder();
        return folder ? displayText(folder->path()) : tr("Selecciona un destino de copia.");
    };
    View destinationBox =
        VStack({.spacing = 6,
                .padding = Padding::all(14),
                .background = Background{.fill = Tint::of(accent::copyGreen, 0.10),
                                         .stroke = Tint::of(accent::copyGreen, 0.18),
                                         .radius = 12},
                .fillsWidth = true},
               {
                   Text([this] { return session.activeCopyDestinationName(); }).font(20, 24, QFont::DemiBold),
                   Text(path).monospacedCaption().secondary().lineLimit(3).selectable(),
               });
    View countRow =
        HStack({.alignment = Qt::AlignCenter},
               {
                   Text([count] { return QString::number(count()); }).font(26, 31, QFont::Bold),
                   Text([count] {
                       return count() == 1 ? tr("video pendiente para copiar") : tr("videos pendientes para copiar");
                   }).secondary(),
                   Spacer(),
               });
    View copyButton =
        LargeButton(
            [count] { return count() > 0 ? tr("Copiar faltantes al HD seleccionado") : tr("No hay nada pendiente"); },
            "down", accent::copyGreen, [this] { session.copyMissingVideos(); })
            .enabled([this] { return session.canCopy(); });
    return VStack({.spacing = 14,
                   .padding = Padding::all(18),
                   .background = Background{.fill = Tint::of(accent::copyGreen, 0.10),
                                            .fillEnd = Tint::white(0.03),
                                            .stroke = Tint::of(accent::copyGreen, 0.22),
                                            .radius = 18},
                   .fillsWidth = true},
                  {
                      panelHeader("down", accent::copyGreen, tr("Copiar lo que falta"),
                                  tr("Elige el HD activo de copia y lanza la transferencia de los videos "
                                     "pendientes.")),
                      destinationChooser(),
                      std::move(destinationBox),
                      std::move(countRow),
                      std::move(copyButton),
                  })
        .accessibleName(tr("Copiar lo que falta"));
}

View ContentView::destinationChooser()
{
    const auto entries = [this] {
        std::vector<PickerEntry> choices;
        for (const Location& folder : session.effectiveDestinationReviewFolders())
            choices.push_back({folder.path(), displayText(folder.name())});
        return choices;
    };
    const auto choose = [this](const std::string& path) {
        for (const Location& folder : session.effectiveDestinationReviewFolders()) {
            if (folder.path() == path)
                return session.setCopyDestinationFolder(folder);
        }
    };
    // The label stands twice, as heading and beside the pop-up: that is intended.
    return VStack({.spacing = 8},
                  {
                      Text(tr("HD de copia activo")).headline(),
                      Picker(
                          tr("HD de copia activo"), entries, [this] { return session.copyDestinationSelectionPath(); },
                          choose),
                  })
        .visible([this] { return session.effectiveDestinationReviewFolders().size() >= 2; });
}

} // namespace reelkeep
