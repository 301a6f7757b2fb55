#include <QApplication>
#include <QLabel>

/// EmptyWindow [TEXT]: the least that a program with a window of Reelkeep's first size can do with the same toolkit;
/// with a text, the fonts of the system have to be looked through.
int main(int argc, char** argv)
{
    const QApplication application(argc, argv);
    QWidget window;
    window.resize(1148, 728);
    if (argc > 1)
        new QLabel(QString::fromLocal8Bit(argv[1]), &window);
    window.show();
    return QApplication::exec();
}
