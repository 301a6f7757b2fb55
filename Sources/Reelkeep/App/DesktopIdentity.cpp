#include "DesktopIdentity.h"

#include <QApplication>
#include <QIcon>
#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

namespace reelkeep {

namespace {

/// The name of the desktop entry, the metainfo and the installed icon as well.
constexpr QLatin1String applicationId("org.reelkeep.Reelkeep");

/// Drawn from the program's own copy of the installed icon: to look that up in the desktop's themes takes a tenth of
/// the time to the first frame.
QIcon programIcon()
{
    QIcon icon;
    QSvgRenderer drawing(QStringLiteral(":/icon.svg"));
    for (const int side : {16, 24, 32, 48, 64, 128}) {
        QPixmap picture(side, side);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        drawing.render(&painter);
        painter.end();
        icon.addPixmap(picture);
    }
    return icon;
}

} // namespace

void identifyToDesktop()
{
    // The X11 class of every window is the application's name to the letter; it is shown nowhere.
    QApplication::setApplicationName(applicationId);
    QApplication::setDesktopFileName(applicationId);
    QApplication::setWindowIcon(programIcon());
}

} // namespace reelkeep
