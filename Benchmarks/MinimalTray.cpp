// The least that a tray utility on Qt Widgets can be: what the program's start
// and memory are measured against. Writes one line to the descriptor named by
// its argument as soon as its event loop runs.

#include <QApplication>
#include <QMenu>
#include <QPixmap>
#include <QSystemTrayIcon>
#include <QTimer>

#include <unistd.h>

#include <cstdlib>

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QPixmap picture(20, 20);
    picture.fill(Qt::black);
    QMenu menu;
    menu.addAction("Quit", &application, &QCoreApplication::quit);
    QSystemTrayIcon icon{QIcon(picture)};
    icon.setContextMenu(&menu);
    icon.show();
    QTimer::singleShot(0, [descriptor = argc > 1 ? std::atoi(argv[1]) : -1] {
        if (write(descriptor, ".\n", 2) != 2) std::exit(EXIT_FAILURE);
    });
    return QApplication::exec();
}
