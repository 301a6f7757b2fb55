#include "DesktopIdentity.h"

#include <QApplication>
#include <QIcon>
#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

namespace reelkeep {

namespace {

/// Also the name of the desktop entry, the metainfo and the installed icon.
constexpr QLatin1String applicationId("org.reelkeep.Reelkeep");

/// Drawn from the program's own copy of the installed icon: looking it up in the desktop's themes takes a tenth of the
/// time to the first frame.
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
    // Under X11 the class of every window is the application's name, unchanged; the name is shown nowhere.
    QApplication::setApplicationName(applicationId);
    QApplication::setDesktopFileName(applicationId);
    QApplication::setWindowIcon(programIcon());
}

} // namespace reelkeep
