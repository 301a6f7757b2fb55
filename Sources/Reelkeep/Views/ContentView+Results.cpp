#include "ContentView.h"

#include <QDateTime>
#include <QLocale>

#include <chrono>
#include <functional>

namespace reelkeep {

namespace {

/// A size as file browsers write it: units of 1000, whole kilobytes, tenths of megabytes, hundredths from gigabytes on,
/// no trailing zeros.
QString fileSizeText(std::int64_t bytes)
{
    if (bytes == 1)
        return QStringLiteral("1 byte"); // The toolkit knows no singular.
    struct Step {
        std::int64_t from;
        std::int64_t unit;
    };
    // A value that rounds to 1000 moves to the next unit.
    for (const Step& step :
         {Step{999'500, 1'000'000}, Step{999'950'000, 1'000'000'000}, Step{999'995'000'000, 1'000'000'000'000}}) {
        if (bytes >= step.from && bytes < step.unit)
            bytes = step.unit;
    }
    const int finest = bytes < 1'000'000 ? 0 : bytes < 1'000'000'000 ? 1 : 2;
    const QLocale locale;
    QString text = locale.formattedDataSize(bytes, finest, QLocale::DataSizeSIFormat);
    for (int precision = finest; precision > 0; --precision) {
        const qsizetype digitsEnd = text.indexOf(locale.decimalPoint()) + precision;
        if (text.at(digitsEnd) != locale.zeroDigit().at(0))
            break;
        text = locale.formattedDataSize(bytes, precision - 1, QLocale::DataSizeSIFormat);
    }
    return text;
}

/// A numeric date with all digits of the year, and a short time, in the order of the user's locale.
QString dateText(const Date& date)
{
    const auto sinceEpoch = std::chrono::floor<std::chrono::milliseconds>(date.time_since_epoch());
    const QDateTime moment = QDateTime::fromMSecsSinceEpoch(sinceEpoch.count());
    const QLocale locale;
    QString numeric = locale.dateFormat(QLocale::ShortFormat);
    if (!numeric.contains(QStringLiteral("yyyy")))
        numeric.replace(QStringLiteral("yy"), QStringLiteral("yyyy"));
    return locale.toString(moment.date(), numeric) + QStringLiteral(", ") +
        locale.toString(moment.time(), QLocale::ShortFormat);
}

QStringList descriptionOf(const VideoFile& video)
{
    return {displayText(video.fileName), displayText(video.relativePath), fileSizeText(video.size)};
}

} // namespace

View ContentView::summaryCards()
{
    return AdaptiveGrid(
        measure::summaryCardWidth,
        12,
        summaryCard(
            {.title = tr("En camara"),
             .value = [this] { return session.sourceVideos().size(); },
             .subtitle = tr("videos detectados")}
        ),
        summaryCard(
            {.title = tr("Ya en destinos"),
             .value = [this] { return session.cameraVideosAlreadyInDestinationCount(); },
             .subtitle = tr("videos de la camara ya encontrados")}
        ),
        summaryCard(
            {.title = tr("Pendientes"),
             .value = [this] { return session.missingVideos().size(); },
             .subtitle = tr("videos de la camara por copiar")}
        )
    );
}

View ContentView::summaryCard(const SummaryCard& card)
{
    // Counts are plain in every locale.
    const auto value = [count = card.value] { return QString::number(count()); };
    const auto name = [card, value] { return QStringLiteral("%1: %2, %3").arg(card.title, value(), card.subtitle); };
    return VStack(
        {.spacing = 6, .plate = plate::summaryCard, .fillsWidth = true, .name = name},
        Text(card.title).headline().secondary(),
        Text(value).style(type::summaryCount),
        Text(card.subtitle).secondary()
    );
}

View ContentView::missingFilesList()
{
    const auto isEmpty = [this] { return session.missingVideos().empty(); };
    const auto hasScanned = [this] { return session.lastScanDate().has_value(); };
    const auto scanDate = [this] { return session.lastScanDate() ? dateText(*session.lastScanDate()) : QString(); };
    return VStack(
        {.spacing = 10},
        HStack(
            {.alignment = Qt::AlignCenter, .staysReadable = true},
            Text(tr("Videos pendientes")).title3(),
            Spacer(),
            Text(scanDate).secondary().visible(hasScanned)
        ),
        List<VideoList>(
            tr("Videos pendientes"),
            {.items = [this] { return session.missingVideos(); },
             .id = [](const VideoFile& video) { return std::string_view(video.id); },
             .row = [this](const auto& video) { return missingFileRow(video); },
             .description = descriptionOf,
             .copiedText = [](const VideoFile& video) { return displayText(video.relativePath); }}
        ).visible(std::not_fn(isEmpty)),
        emptyPendingState().visible(isEmpty)
    );
}

View ContentView::missingFileRow(const std::function<const VideoFile&()>& video)
{
    return HStack(
        {.alignment = Qt::AlignCenter, .padding = measure::rowPadding},
        VStack(
            {.spacing = 4},
            Text([video] { return video().fileName; }).headline(),
            Text([video] { return video().relativePath; }).monospacedCaption().secondary().selectableByMouse()
        ),
        Spacer(),
        Text([video] { return fileSizeText(video().size); }).secondary()
    );
}

View ContentView::emptyPendingState()
{
    return VStack(
        {.spacing = 14,
         .alignment = Qt::AlignCenter,
         .plate = plate::emptyState,
         .fillsWidth = true,
         .minimumHeight = measure::listHeight},
        Symbol(glyph::allSaved).secondary(),
        Text(tr("Todo lo de la camara ya esta en las ubicaciones revisadas")).title3().centered(),
        Text(tr("Los videos extra que ya existan en esos HDs o carpetas no se consideran un problema."))
            .secondary()
            .centered()
            .maximumWidth(measure::emptyStateTextWidth)
    );
}

View ContentView::footer()
{
    const auto isWorking = [this] { return session.isScanning() || session.isCopying(); };
    return VStack(
        {.spacing = 10, .padding = measure::footerPadding},
        ProgressBar(tr("Progreso"), [this] { return session.progressValue(); }).visible(isWorking),
        Text([this] { return session.statusMessage(); }).secondary().announced().named("statusMessage"),
        Text(tr("La comprobacion es solo de camara hacia los destinos revisados.")).caption().tertiary()
    );
}

} // namespace reelkeep
