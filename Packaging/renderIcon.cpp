#include <QImage>
#include <QPainter>
#include <QString>
#include <QSvgRenderer>

#include <iostream>

/// Draws an SVG picture into a square PNG picture of the given side: renderIcon SVG SIDE PNG
int main(int argc, char** argv)
{
    if (argc != 4) {
        std::cerr << "renderIcon SVG SIDE PNG\n";
        return 2;
    }
    const int side = QString::fromLocal8Bit(argv[2]).toInt();
    QSvgRenderer drawing(QString::fromLocal8Bit(argv[1]));
    QImage picture(side, side, QImage::Format_ARGB32);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    drawing.render(&painter);
    painter.end();
    if (!drawing.isValid() || !picture.save(QString::fromLocal8Bit(argv[3]), "PNG")) {
        std::cerr << "renderIcon: cannot make " << argv[3] << '\n';
        return 1;
    }
    return 0;
}
