#include "Quillmere/AppDelegate.h"

#include <QApplication>

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QApplication::setApplicationName("Quillmere");
    QApplication::setDesktopFileName("quillmere");
    QApplication::setQuitOnLastWindowClosed(false);

    quillmere::AppDelegate delegate(quillmere::makePlatform());
    delegate.applicationDidFinishLaunching();
    return QApplication::exec();
}
