#include "Packaging/pictures/Paper.h"
#include "Packaging/pictures/Studio.h"
#include "Tests/Support/SupportError.h"

#include <QApplication>

#include <iostream>
#include <string_view>

namespace {

using quillmere::pictures::Paper;

int showPaper(int argc, char** argv, Paper::Kind kind) {
    const QApplication application(argc, argv);
    Paper paper(kind);
    paper.showFullScreen();
    return QApplication::exec();
}

}  // namespace

int main(int argc, char** argv) {
    const std::string_view first = argc > 1 ? argv[1] : "";
    if (first == "--wallpaper") return showPaper(argc, argv, Paper::Kind::wallpaper);
    if (first == "--sheet") return showPaper(argc, argv, Paper::Kind::sheet);
    if (argc != 3) {
        std::cerr << "usage: " << argv[0] << " <program> <folder for pictures>\n";
        return 2;
    }
    // The desktops that are shown have a bus of their own; the machine's stays out of it.
    qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
    const QCoreApplication application(argc, argv);
    try {
        const quillmere::pictures::Studio studio(argv[1], argv[0], argv[2]);
        studio.takePlates();
        studio.takeSettings();
        studio.takeTyping();
    } catch (const quillmere::support::SupportError& error) {
        std::cerr << error.what() << '\n';
        return 1;
    }
    return 0;
}
