#include <QApplication>
#include <QLabel>

#include <cstdlib>

/// EmptyWindow [TEXT [FONTS]]: the minimum for a window of Reelkeep's first size with the same toolkit. With a text, it
/// is shown in that many fonts, which must be looked up and loaded.
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
