#include <QApplication>
#include <QLabel>

#include <cstdlib>

/// EmptyWindow [TEXT [FONTS]]: the least that a program with a window of Reelkeep's first size can do with the same
/// toolkit; with a text, in so many fonts, these have to be looked up and loaded.
int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    QWidget window;
    window.resize(1148, 728);
    const int fonts = argc < 2 ? 0 : argc < 3 ? 1 : std::atoi(argv[2]);
    for (int number = 0; number < fonts; ++number) {
        auto* text = new QLabel(QString::fromLocal8Bit(argv[1]), &window);
        QFont font = text->font();
        font.setPixelSize(12 + number);
        text->setFont(font);
        text->move(0, 30 * number);
    }
    window.show();
    return QApplication::exec();
}
