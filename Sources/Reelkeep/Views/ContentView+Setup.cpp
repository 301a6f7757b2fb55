#include "ContentView.h"

namespace reelkeep {

namespace {

/// The ground of the three cards of the setup.
Background sectionPanel()
{
    return {.fill = Tint::white(0.05), .fillEnd = Tint::white(0.025), .stroke = Tint::secondary(0.15), .radius = 18};
}

Background tinted(const QColor& accent, double fill, double stroke)
{
    return {.fill = Tint::of(accent, fill), .stroke = Tint::of(accent, stroke), .radius = 12};
}

} // namespace

View ContentView::folderSelectors()
{
    return VStack({.spacing = 14},
                  {
                      setupOverview(),
                      selectionCard({.step = tr("Paso 1"),
                                     .title = tr("Camara o tarjeta"),
                                     .subtitle = tr("Aqui eliges el material original que quieres comprobar."),
                                     .path = [this] { return session.sourceFolder(); },
                                     .buttonTitle = tr("Elegir camara"),
                                     .iconName = "camera",
                                     .iconWidth = 33,
                                     .accent = accent::analysisBlue,
                                     .action = [this] { session.chooseSourceFolder(); }}),
                      selectionCard({.step = tr("Paso 2"),
                                     .title = tr("Destino de copia"),
                                     .subtitle = tr("Aqui se guardaran los videos que todavia no esten archivados."),
                                     .path = [this] { return session.copyDestinationFolder(); },
                                     .buttonTitle = tr("Elegir HD de copia"),
                                     .iconName = "drive",
                                     .iconWidth = 32,
                                     .accent = accent::copyGreen,
                                     .action = [this] { session.chooseCopyDestinationFolder(); }}),
                      destinationReviewFoldersSection(),
                  });
}

View ContentView::setupOverview()
{
    return ViewThatFits({.spacing = 12, .alignment = Qt::AlignCenter}, {.spacing = 10, .alignment = Qt::AlignCenter},
                        {
                            setupPill({.number = tr("1"), .title = tr("Camara"), .subtitle = tr("origen")}),
                            setupPill({.number = tr("2"), .title = tr("HD principal"), .subtitle = tr("copia")}),
                            setupPill({.number = tr("3"), .title = tr("Otros discos"), .subtitle = tr("revision")}),
                        });
}

View ContentView::setupPill(const SetupPill& pill)
{
    return HStack({.spacing = 10,
                   .alignment = Qt::AlignCenter,
                   .padding = Padding::symmetric(14, 12),
                   .background = Background{.fill = Tint::white(0.04), .stroke = Tint::secondary(0.15), .radius = 12}},
                  {
                      Circle(28, Background{.fill = Tint::primary(0.08)}, {Text(pill.number).headline()}),
                      VStack({.spacing = 2},
                             {
                                 Text(pill.title).headline(),
                                 Text(pill.subtitle.toUpper()).font(11, 14, QFont::DemiBold).secondary(),
                             }),
                  })
        .accessibleName(QStringLiteral("%1, %2, %3").arg(pill.number, pill.title, pill.subtitle));
}

View ContentView::selectionCard(const SelectionCard& card)
{
    const auto path = card.path;
    const auto isChosen = [path] { return path().has_value(); };
    const auto name = [path]() -> QString {
        const auto folder = path();
        return folder && !folder->lastPathComponent().empty() ? displayText(folder->lastPathComponent())
                                                              : tr("Sin seleccionar");
    };
    const auto pathLine = [path]() -> QString {
        const auto folder = path();
        return folder ? displayText(folder->path()) : tr("Selecciona una carpeta para continuar.");
    };
    const auto stateLine = [isChosen]() -> QString {
        return isChosen() ? tr("Ubicacion lista para analizar.") : tr("Aun no has elegido esta ubicacion.");
    };

    View heading = HStack({.alignment = Qt::AlignCenter, .staysReadable = true},
                          {
                              VStack({.spacing = 6},
                                     {
                                         Text(card.step).font(12, 15, QFont::Bold).color(card.accent),
                                         Text(card.title).title3(),
                                         Text(card.subtitle).secondary(),
                                     }),
                              Spacer(),
                              selectionStateBadge(isChosen, card.accent),
                          });
    View pathBox =
        VStack({.padding = Padding::all(14), .background = tinted(card.accent, 0.08, 0.18), .fillsWidth = true},
               {
                   Text(name).font(18, 22, QFont::DemiBold),
                   Text(pathLine).monospacedCaption().secondary().lineLimit(3).selectable(isChosen),
               });
    View bottom = HStack({.alignment = Qt::AlignCenter, .staysReadable = true},
                         {
                             Text(stateLine).caption().secondary(),
                             Spacer(),
                             ProminentButton(card.buttonTitle, card.accent, card.action),
                         });
    const Background tile{.fill = Tint::of(card.accent, 0.95), .fillEnd = Tint::of(card.accent, 0.45), .radius = 18};
    return HStack({.spacing = 16, .padding = Padding::all(18), .background = sectionPanel()},
                  {
                      Tile(card.iconName, card.iconWidth, tile),
                      VStack({.spacing = 12}, {std::move(heading), std::move(pathBox), std::move(bottom)}),
                  })
        .accessibleName(QStringLiteral("%1, %2").arg(card.step, card.title));
}

View ContentView::selectionStateBadge(const Condition& isSelected, const QColor& accent)
{
    return HStack(
        {.alignment = Qt::AlignCenter,
         .padding = Padding::symmetric(10, 6),
         .background =
             [isSelected, accent] {
                 return Background{.fill = isSelected() ? Tint::of(accent, 0.12) : Tint::secondary(0.12), .radius = 99};
             }},
        {
            Circle(8, [isSelected,
                       accent] { return Background{.fill = isSelected() ? Tint::of(accent) : Tint::secondary(0.35)}; }),
            Text([isSelected] { return isSelected() ? tr("Listo") : tr("Pendiente"); })
                .font(12, 15, QFont::Bold)
                .colorWhen(isSelected, accent),
        });
}

View ContentView::destinationReviewFoldersSection()
{
    const auto isReviewed = [this] { return !session.effectiveDestinationReviewFolders().empty(); };
    View heading =
        HStack({.staysReadable = true},
               {
                   VStack({},
                          {
                              Text(tr("Paso 3")).font(12, 15, QFont::Bold).color(accent::reviewOrange),
                              Text(tr("Ubicaciones a revisar")).title3(),
                              Text(tr("Busca los videos de la camara en uno o varios HDs o carpetas. El HD de "
                                      "copia se incluye tambien en la revision."))
                                  .secondary(),
                          }),
                   Spacer(),
                   selectionStateBadge(isReviewed, accent::reviewOrange),
               });
    View buttons =
        HStack({.spacing = 8, .alignment = Qt::AlignCenter, .staysReadable = true},
               {
                   PushButton(tr("Usar solo HD de copia"), [this] { session.useOnlyCopyDestinationForReview(); })
                       .enabled([this] { return session.copyDestinationFolder().has_value(); }),
                   ProminentButton(tr("Anadir ubicaciones"), accent::reviewOrange,
                                   [this] { session.addDestinationReviewFolders(); }),
               });
    View rows = ForEach<ReviewRow>(
                    8, [this] { return reviewRows(); }, [this](const ReviewRow& row) { return reviewRow(row); })
                    .visible(isReviewed);

    const Background tile{
        .fill = Tint::of(accent::reviewOrange), .fillEnd = Tint::of(accent::darkReviewOrange), .radius = 18};
    return HStack({.spacing = 16, .padding = Padding::all(18), .background = sectionPanel()},
                  {
                      Tile("stack", 29, tile),
                      VStack({.spacing = 12},
                             {std::move(heading), std::move(buttons), reviewSummaryPanel(), std::move(rows)}),
                  })
        .accessibleName(QStringLiteral("%1, %2").arg(tr("Paso 3"), tr("Ubicaciones a revisar")));
}

View ContentView::reviewSummaryPanel()
{
    const auto count = [this] { return session.effectiveDestinationReviewFolders().size(); };
    return HStack({.alignment = Qt::AlignCenter,
                   .staysReadable = true,
                   .padding = Padding::all(14),
                   .background = tinted(accent::reviewOrange, 0.08, 0.16)},
                  {
                      VStack({.spacing = 4},
                             {
                                 Text([count] { return QString::number(count()); }).font(28, 34, QFont::DemiBold),
                                 Text([count] {
                                     return count() == 1 ? tr("ubicacion revisada") : tr("ubicaciones revisadas");
                                 }).secondary(),
                             }),
                      Spacer(),
                      Text([this] { return session.destinationReviewSummary(); })
                          .monospacedCaption()
                          .secondary()
                          .trailing()
                          .selectable(),
                  });
}

std::vector<ContentView::ReviewRow> ContentView::reviewRows() const
{
    std::vector<ReviewRow> rows;
    for (Location& folder : session.effectiveDestinationReviewFolders()) {
        const bool isCopyDestination = folder == session.copyDestinationFolder();
        rows.push_back({std::move(folder), isCopyDestination});
    }
    return rows;
}

View ContentView::reviewRow(const ReviewRow& row)
{
    const QString name = displayText(row.folder.name());
    const QString path = displayText(row.folder.path());
    View texts = VStack({.spacing = 3}, {
                                            Text(name).headline(),
                                            Text(path).monospacedCaption().secondary().selectable(),
                                        });
    std::vector<View> controls;
    if (row.isCopyDestination) {
        controls.push_back(HStack({.padding = Padding::symmetric(8, 5),
                                   .background = Background{.fill = Tint::of(accent::copyGreen, 0.14), .radius = 99}},
                                  {Text(tr("Copia")).font(11, 14, QFont::Bold).color(accent::copyGreen)}));
    }
    controls.push_back(PushButton(tr("Quitar"), [this, folder = row.folder] {
                           session.removeDestinationReviewFolder(folder);
                       }).enabled([isCopyDestination = row.isCopyDestination] {
                             return !isCopyDestination;
                         }).accessibleDescription(path));
    return HStack({.spacing = 12,
                   .alignment = Qt::AlignCenter,
                   .padding = Padding::all(12),
                   .background = Background{.fill = Tint::white(0.04), .stroke = Tint::secondary(0.12), .radius = 12}},
                  {
                      row.isCopyDestination
                          ? Symbol("drive-check", 20, {TextColor::Level::accent, accent::copyGreen}, 24)
                          : Symbol("drive", 18, {TextColor::Level::secondary, {}}, 24),
                      HStack({.spacing = 12, .alignment = Qt::AlignCenter, .staysReadable = true},
                             {
                                 std::move(texts),
                                 HStack({.spacing = 12, .alignment = Qt::AlignCenter}, std::move(controls)),
                             }),
                  })
        .accessibleName(row.isCopyDestination ? QStringLiteral("%1, %2, %3").arg(name, path, tr("Copia"))
                                              : QStringLiteral("%1, %2").arg(name, path));
}

} // namespace reelkeep
