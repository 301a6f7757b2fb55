#include "Platform/DesktopIdentity.h"

#include <QApplication>
#include <QIcon>
#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

namespace reelkeep {

namespace {

/// The name of the desktop entry, the metainfo and the icon as well.
constexpr QLatin1String applicationId("org.reelkeep.Reelkeep");

/// The installed icon; where none is installed, the same drawing out of the program itself.
QIcon programIcon()
{
    QIcon icon = QIcon::fromTheme(applicationId);
    if (!icon.isNull())
        return icon;
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
