#include "ContentView.h"

#include <QDateTime>
#include <QLocale>

#include <chrono>

namespace reelkeep {

namespace {

/// A size as file browsers write it: units of 1000, whole kilobytes, tenths of megabytes, hundredths from gigabytes on,
/// without zeros at the end.
QString fileSizeText(std::int64_t bytes)
{
    struct Step {
        std::int64_t from;
        std::int64_t unit;
    };
    // What would round up to a thousand of its unit is one of the next.
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

/// A numeric date with all digits of the year, and a short time, as the user's locale orders them.
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

} // namespace

View ContentView::summaryCards()
{
    return AdaptiveGrid(220, 12,
                        {
                            summaryCard({.title = tr("En camara"),
                                         .value = [this] { return session.sourceVideos().size(); },
                                         .subtitle = tr("videos detectados")}),
                            summaryCard({.title = tr("Ya en destinos"),
                                         .value = [this] { return session.cameraVideosAlreadyInDestinationCount(); },
                                         .subtitle = tr("videos de la camara ya encontrados")}),
                            summaryCard({.title = tr("Pendientes"),
                                         .value = [this] { return session.missingVideos().size(); },
                                         .subtitle = tr("videos de la camara por copiar")}),
                        });
}

View ContentView::summaryCard(const SummaryCard& card)
{
    // Counts are plain in every locale.
    const auto value = [count = card.value] { return QString::number(count()); };
    return VStack({.spacing = 6,
                   .padding = Padding::all(16),
                   .background = Background{.fill = Tint::window(), .stroke = Tint::secondary(0.15), .radius = 14},
                   .fillsWidth = true},
                  {
                      Text(card.title).headline().secondary(),
                      Text(value).font(30, 36, QFont::DemiBold),
                      Text(card.subtitle).secondary(),
                  })
        .accessibleName([title = card.title, value, subtitle = card.subtitle] {
            return QString(title + QStringLiteral(": ") + value() + QStringLiteral(", ") + subtitle);
        });
}

View ContentView::missingFilesList()
{
    const auto hasScanned = [this] { return session.lastScanDate().has_value(); };
    View heading =
        HStack({.alignment = Qt::AlignCenter, .staysReadable = true}, {
                                                                          Text(tr("Videos pendientes")).title3(),
                                                                          Spacer(),
                                                                          Text([this] {
                                                                              const auto& date = session.lastScanDate();
                                                                              return date ? dateText(*date) : QString();
                                                                          })
                                                                              .secondary()
                                                                              .visible(hasScanned),
                                                                      });
    View list = List<VideoList>(tr("Videos pendientes"),
                                {.items = [this] { return session.missingVideos(); },
                                 .id = [](const VideoFile& video) { return std::string_view(video.id); },
                                 .row = [this](const auto& video) { return missingFileRow(video); },
                                 .description =
                                     [](const VideoFile& video) {
                                         return QString(displayText(video.fileName) + QStringLiteral(", ") +
                                                        displayText(video.relativePath) + QStringLiteral(", ") +
                                                        fileSizeText(video.size));
                                     },
                                 .copiedText = [](const VideoFile& video) { return displayText(video.relativePath); }})
                    .visible([this] { return !session.missingVideos().empty(); });
    return VStack({.spacing = 10}, {
                                       std::move(heading),
                                       std::move(list),
                                       emptyPendingState().visible([this] { return session.missingVideos().empty(); }),
                                   });
}

View ContentView::missingFileRow(const std::function<const VideoFile&()>& video)
{
    return HStack(
        {.alignment = Qt::AlignCenter, .padding = Padding::symmetric(8, 8)},
        {
            VStack(
                {.spacing = 4},
                {
                    Text([video] { return video().fileName; }).headline(),
                    Text([video] { return video().relativePath; }).monospacedCaption().secondary().selectableByMouse(),
                }),
            Spacer(),
            Text([video] { return fileSizeText(video().size); }).secondary(),
        });
}

View ContentView::emptyPendingState()
{
    return VStack({.spacing = 14,
                   .alignment = Qt::AlignCenter,
                   .padding = Padding::all(24),
                   .background = Background{.fill = Tint::white(0.04), .stroke = Tint::secondary(0.12), .radius = 18},
                   .fillsWidth = true,
                   .minimumHeight = 220},
                  {
                      Symbol("check", 52, {TextColor::Level::secondary, {}}),
                      Text(tr("Todo lo de la camara ya esta en las ubicaciones revisadas")).title3().centered(),
                      Text(tr("Los videos extra que ya existan en esos HDs o carpetas no se consideran un problema."))
                          .secondary()
                          .centered()
                          .maximumWidth(520),
                  });
}

View ContentView::footer()
{
    return VStack({.spacing = 10, .padding = {.top = 6}},
                  {
                      ProgressBar(tr("Progreso"), [this] { return session.progressValue(); }).visible([this] {
                          return session.isScanning() || session.isCopying();
                      }),
                      Text([this] { return session.statusMessage(); }).secondary().announced().named("statusMessage"),
                      Text(tr("La comprobacion es solo de camara hacia los destinos revisados.")).caption().tertiary(),
                  });
}

} // namespace reelkeep
